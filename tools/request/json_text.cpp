#include "tools/request/json_text.h"

#include <utility>

namespace {

using nlohmann::json;

/// The parser's words, less the name of its exception and the text that it read last.
std::string parserWords(const json::exception& exception) {
    std::string words = exception.what();
    const std::size_t start = words.find(" - ");
    words.erase(0, start == std::string::npos ? words.find("] ") + 2 : start + 3);
    const std::size_t token = words.find("; last read: '");
    return words.substr(0, token);
}

}  // namespace

JsonText readJsonText(std::string_view text) {
    JsonText read;
    JsonTextReader reader(read, text.size());
    json::sax_parse(text, &reader);
    return read;
}

bool JsonTextReader::key(const std::string& name) {
    if (depth_ == 1) {
        member_ = &read_.request[name];
        if (name == "signature") {
            signature_ = member_;
            read_.signature.clear();
        }
    } else if (depth_ == 2 && inSignature_) {
        member_ = &read_.signature[name];
    }
    return true;
}

bool JsonTextReader::value(const char* type) {
    if (depth_ == 0) {
        read_.type = type;
    } else if (member_ != nullptr) {
        *member_ = {.type = type, .times = member_->times + 1};
    }
    return true;
}

bool JsonTextReader::string(std::string& text) {
    value("string");
    if (member_ != nullptr) {
        member_->text = std::move(text);
    }
    return true;
}

bool JsonTextReader::start_object(std::size_t) {
    value("object");
    if (depth_ == 1) {
        inSignature_ = member_ != nullptr && member_ == signature_;
    }
    enter();
    return true;
}

bool JsonTextReader::start_array(std::size_t) {
    value("array");
    enter();
    return true;
}

void JsonTextReader::enter() {
    // Nothing inside counts before a member's name is read.
    member_ = nullptr;
    ++depth_;
}

bool JsonTextReader::leave() {
    --depth_;
    return true;
}

bool JsonTextReader::parse_error(std::size_t position, const std::string&,
                                 const json::exception& error) {
    if (dynamic_cast<const json::parse_error*>(&error) == nullptr) {
        read_.fault = {"json.number",
                       "the body is no JSON that can be held: " + parserWords(error)};
        return false;
    }
    const std::string place =
        position > size_ ? "at the end of the body" : "at byte " + std::to_string(position);
    read_.fault = {"json.syntax", "the body is no JSON: " + place + ", " + parserWords(error)};
    return false;
}
