#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frontend/json_input.h"
#include "tools/counted_text.h"
#include "tools/request/quoted_text.h"
#include "tools/request/request_reading.h"

namespace {

using nlohmann::json;

struct Member {
    const char* name;
    const char* type;  ///< as the library calls it
};

constexpr std::array<Member, 4> requestMembers = {
    {{"project", "string"}, {"mode", "string"}, {"encoding", "string"}, {"genPairs", "boolean"}}};
constexpr std::array<Member, 4> signatureMembers = {
    {{"data", "string"}, {"encoding", "string"}, {"file", "string"}, {"signature", "string"}}};

std::string_view announcedBody(const RawRequest& request) {
    const auto length =
        static_cast<std::uint64_t>(parseDecimal(request.contentLength.value_or("").c_str()));
    const std::string_view body = request.body;
    return body.substr(0, length);
}

/// A name of the library's types with its article.
std::string withArticle(const std::string& type) {
    if (type == "null") {
        return type;
    }
    return (type == "array" || type == "object" ? "an " : "a ") + type;
}

/// The first member of the table that has another type.
std::optional<Ruling> memberRefusal(const json& object, const std::array<Member, 4>& members,
                                    const std::string& prefix) {
    for (const Member& member : members) {
        const auto found = object.find(member.name);
        if (found != object.end() && std::string_view(found->type_name()) != member.type) {
            return Ruling{"json.member-type", "'" + prefix + member.name + "' is " +
                                                  withArticle(found->type_name()) +
                                                  " and must be " + withArticle(member.type)};
        }
    }
    return std::nullopt;
}

Ruling withoutMemory() {
    return {"json.memory", "there is not enough memory for the values of the body"};
}

/// Why a complete JSON value fills no record.
Ruling valueRefusal(const json& value) {
    if (!value.is_object()) {
        return {"json.no-object",
                "the body is " + withArticle(value.type_name()) + " and must be an object"};
    }
    if (std::optional<Ruling> ruling = memberRefusal(value, requestMembers, "")) {
        return *ruling;
    }
    // Nothing else in an object is refused; but the program refuses a body as well whose values it
    // has no memory for.
    return memberRefusal(value.value("signature", json()), signatureMembers, "signature.")
        .value_or(withoutMemory());
}

/// The parser's words, less the name of its exception and the text that it read last.
std::string parserWords(const json::exception& exception) {
    std::string words = exception.what();
    const std::size_t start = words.find(" - ");
    words.erase(0, start == std::string::npos ? words.find("] ") + 2 : start + 3);
    const std::size_t token = words.find("; last read: '");
    return words.substr(0, token);
}

/// Why the text is no JSON value, or why the value fills no record.
Ruling textRefusal(std::string_view text) {
    try {
        return valueRefusal(json::parse(text));
    } catch (const json::parse_error& error) {
        const std::string place = error.byte > text.size()
                                      ? "at the end of the body"
                                      : "at byte " + std::to_string(error.byte);
        return {"json.syntax", "the body is no JSON: " + place + ", " + parserWords(error)};
    } catch (const json::exception& error) {
        return {"json.number", "the body is no JSON that can be held: " + parserWords(error)};
    } catch (const std::bad_alloc&) {
        return withoutMemory();
    }
}

Ruling lengthRefusal(const std::string& announced) {
    std::string_view digits = announced;
    if (digits.starts_with('+') || digits.starts_with('-')) {
        digits.remove_prefix(1);
    }
    const bool isNumber =
        !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
    return {"json.length-zero", "CONTENT_LENGTH is " + quotation(announced) +
                                    (isNumber ? ", which counts as 0, so there is no body"
                                              : ", which is no decimal number and counts as 0, "
                                                "so there is no body")};
}

/// Why `fillRecordFromJson` gives false.
Ruling jsonRefusal(const RawRequest& request) {
    if (!request.contentLength.has_value()) {
        return {"json.length-unset", "CONTENT_LENGTH is not set, so there is no body"};
    }
    const auto length = static_cast<std::uint64_t>(parseDecimal(request.contentLength->c_str()));
    if (length == 0) {
        return lengthRefusal(*request.contentLength);
    }
    if (request.body.size() < length) {
        return {"json.body-short", "the body ends after " + std::to_string(request.body.size()) +
                                       " of the " + counted(length, "byte") + " announced"};
    }
    const std::string_view text = announcedBody(request);
    const std::size_t zero = text.find('\0');
    if (zero != std::string_view::npos) {
        return {"json.zero-byte",
                "byte " + std::to_string(zero + 1) + " of the body is a zero byte"};
    }
    return textRefusal(text);
}

std::string missingOperation(const json& value) {
    const auto mode = value.find("mode");
    if (mode == value.end()) {
        return "'mode' is absent";
    }
    return "'mode' is " + quotation(mode->get<std::string>()) +
           R"(; only "generateSignature" and "verifySignature" select an operation)";
}

void remarkUnknown(const json& object, const std::array<Member, 4>& members,
                   std::string_view alsoKnown, const std::string& prefix,
                   std::vector<std::string>& remarks) {
    std::vector<std::string> unknown;
    for (const auto& item : object.items()) {
        const std::string& name = item.key();
        const bool known = name == alsoKnown ||
                           std::any_of(members.begin(), members.end(),
                                       [&](const Member& member) { return member.name == name; });
        if (!known) {
            unknown.push_back(prefix + name);
        }
    }
    if (!unknown.empty()) {
        remarks.push_back(unknownNames("member", unknown));
    }
}

using Occurrences = std::map<std::string, std::uint64_t>;

/// How often the object names its members, and the last 'signature' in it its own.
struct MemberOccurrences {
    Occurrences request;
    Occurrences signature;
};

json parseCounting(std::string_view text, MemberOccurrences& occurrences) {
    bool inSignature = false;
    return json::parse(text, [&](int depth, json::parse_event_t event, const json& parsed) {
        if (event == json::parse_event_t::key && depth == 1) {
            const auto name = parsed.get<std::string>();
            ++occurrences.request[name];
            inSignature = name == "signature";
            if (inSignature) {
                occurrences.signature.clear();
            }
        } else if (event == json::parse_event_t::key && depth == 2 && inSignature) {
            ++occurrences.signature[parsed.get<std::string>()];
        }
        return true;
    });
}

void remarkRepeated(const Occurrences& occurrences, const std::string& name,
                    const std::string& prefix, std::vector<std::string>& remarks) {
    const auto found = occurrences.find(name);
    if (found != occurrences.end() && found->second > 1) {
        remarks.push_back("'" + prefix + name + "' is given " + counted(found->second, "time") +
                          ", and the last one counts");
    }
}

void remarkRepeated(const MemberOccurrences& occurrences, std::vector<std::string>& remarks) {
    for (const Member& member : requestMembers) {
        remarkRepeated(occurrences.request, member.name, "", remarks);
    }
    remarkRepeated(occurrences.request, "signature", "", remarks);
    for (const Member& member : signatureMembers) {
        remarkRepeated(occurrences.signature, member.name, "signature.", remarks);
    }
}

/// What the text of an object says beyond the record.
void readWords(std::string_view text, RequestReading& reading) {
    MemberOccurrences occurrences;
    const json value = parseCounting(text, occurrences);
    remarkRepeated(occurrences, reading.remarks);
    reading.encodingWord = value.value("encoding", "");
    reading.missingMode = missingOperation(value);
    remarkUnknown(value, requestMembers, "signature", "", reading.remarks);
    const auto signature = value.find("signature");
    if (signature == value.end()) {
        reading.missingInput = ": 'signature' is absent";
    } else if (!signature->is_object()) {
        reading.missingInput =
            ": 'signature' is " + withArticle(signature->type_name()) + " and no object";
    } else {
        reading.dataEncodingWord = signature->value("encoding", "");
        remarkUnknown(*signature, signatureMembers, "", "signature.", reading.remarks);
    }
}

}  // namespace

RequestReading readJsonRequest(const RawRequest& request) {
    RequestReading reading{.names = {.project = "'project'",
                                     .encoding = "'encoding'",
                                     .data = "'signature.data'",
                                     .dataEncoding = "'signature.encoding'",
                                     .file = "'signature.file'",
                                     .signature = "'signature.signature'"},
                           .defaultEncoding = TextEncoding::json};
    const InputOutcome outcome =
        readAsProgram(request, [&] { return fillRecordFromJson(reading.record); });
    if (outcome == InputOutcome::tooLong || outcome == InputOutcome::noMemory) {
        reading.refusal = explainSilence(request, outcome, "json");
        return reading;
    }
    if (request.contentLength.has_value()) {
        reading.remarks = lengthRemarks(
            request, static_cast<std::uint64_t>(parseDecimal(request.contentLength->c_str())));
    }
    if (outcome == InputOutcome::refused) {
        reading.refusal = refusalBy(jsonRefusal(request), "Invalid JSON data");
        return reading;
    }
    try {
        readWords(announcedBody(request), reading);
    } catch (const std::bad_alloc&) {
        // The program has what it needs; only its words are missing here.
        reading.missingMode = "'mode' selects no operation";
        reading.remarks.emplace_back(
            "there is not enough memory to look for unknown members and words");
    }
    return reading;
}
