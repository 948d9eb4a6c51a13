#include "fuzz/reference_json.h"

#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <map>
#include <memory>
#include <string_view>
#include <utility>

#include "fuzz/reference_form.h"

namespace {

struct JsonValue {
    enum class Kind { object, text, truth, other };

    Kind kind = Kind::other;
    std::string text;
    bool truth = false;
    std::map<std::string, std::unique_ptr<JsonValue>> members;
};

/// Reads a text from the front. Each rule takes what it matches and tells whether it did.
class JsonReader {
public:
    explicit JsonReader(std::string_view text) : rest_(text) {}

    bool whole(JsonValue& value) {
        take("\xEF\xBB\xBF");
        if (!element(value)) {
            return false;
        }
        return rest_.empty();
    }

private:
    bool take(std::string_view expected) {
        if (!rest_.starts_with(expected)) {
            return false;
        }
        rest_.remove_prefix(expected.size());
        return true;
    }

    void skipSpace() {
        while (take(" ") || take("\t") || take("\n") || take("\r")) {
        }
    }

    /// A value with white space around it.
    bool element(JsonValue& value) {
        skipSpace();
        const bool matched = valueItself(value);
        skipSpace();
        return matched;
    }

    bool valueItself(JsonValue& value) {
        if (rest_.starts_with('"')) {
            value.kind = JsonValue::Kind::text;
            return text(value.text);
        }
        if (take("{")) {
            value.kind = JsonValue::Kind::object;
            return membersTo(value);
        }
        if (take("[")) {
            return elementsTo();
        }
        value.truth = take("true");
        if (value.truth || take("false")) {
            value.kind = JsonValue::Kind::truth;
            return true;
        }
        return take("null") || number();
    }

    bool membersTo(JsonValue& object) {
        skipSpace();
        if (take("}")) {
            return true;
        }
        do {
            std::string name;
            auto value = std::make_unique<JsonValue>();
            skipSpace();
            if (!text(name)) {
                return false;
            }
            skipSpace();
            if (!take(":") || !element(*value)) {
                return false;
            }
            object.members[name] = std::move(value);
        } while (take(","));
        return take("}");
    }

    bool elementsTo() {
        skipSpace();
        if (take("]")) {
            return true;
        }
        do {
            JsonValue ignored;
            if (!element(ignored)) {
                return false;
            }
        } while (take(","));
        return take("]");
    }

    bool digits() {
        const std::size_t count = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
        rest_.remove_prefix(count);
        return count != 0;
    }

    bool number() {
        const std::string_view start = rest_;
        take("-");
        if (!take("0") && !digits()) {
            return false;
        }
        if (take(".") && !digits()) {
            return false;
        }
        if (take("e") || take("E")) {
            if (!take("+")) {
                take("-");
            }
            if (!digits()) {
                return false;
            }
        }
        // A number that no double comes near is refused.
        const std::string written(start.substr(0, start.size() - rest_.size()));
        return std::isfinite(std::strtod(written.c_str(), nullptr));
    }

    bool text(std::string& out) {
        if (!take("\"")) {
            return false;
        }
        while (!take("\"")) {
            if (rest_.empty() || !(rest_.front() == '\\' ? escape(out) : character(out))) {
                return false;
            }
        }
        return true;
    }

    /// One character in well-formed UTF-8 (RFC 3629), no control character.
    bool character(std::string& out) {
        const auto lead = static_cast<unsigned char>(rest_.front());
        if (lead < 0x20) {
            return false;
        }
        std::size_t length = 1;
        std::uint32_t code = lead;
        if (lead >= 0x80) {
            if (lead < 0xC0 || lead >= 0xF8) {
                return false;
            }
            length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
            code = lead & (0xFFU >> (length + 1));
            for (std::size_t i = 1; i < length; ++i) {
                const unsigned next = i < rest_.size() ? static_cast<unsigned char>(rest_[i]) : 0;
                if (next >> 6 != 2) {
                    return false;
                }
                code = code << 6 | (next & 0x3F);
            }
        }
        std::string shortest;
        if (isSurrogate(code) || code > 0x10FFFF) {
            return false;
        }
        appendUtf8(shortest, code);
        out += shortest;
        return shortest.size() == length && take(shortest);
    }

    bool escape(std::string& out) {
        static constexpr std::string_view letters = "\"\\/bfnrt";
        static constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        take("\\");
        if (rest_.empty()) {
            return false;
        }
        const std::size_t letter = letters.find(rest_.front());
        if (letter != std::string_view::npos) {
            rest_.remove_prefix(1);
            out += meanings[letter];
            return true;
        }
        std::uint32_t code = 0;
        if (!take("u") || !fourDigits(code)) {
            return false;
        }
        if (isSurrogate(code)) {
            std::uint32_t low = 0;
            if (code >= 0xDC00 || !take("\\u") || !fourDigits(low) || !isSurrogate(low) ||
                low < 0xDC00) {
                return false;
            }
            code = 0x10000 + (code - 0xD800) * 0x400 + (low - 0xDC00);
        }
        appendUtf8(out, code);
        return true;
    }

    bool fourDigits(std::uint32_t& code) {
        const std::string written(rest_.substr(0, 4));
        if (written.size() < 4 ||
            written.find_first_not_of("0123456789abcdefABCDEF") != std::string::npos) {
            return false;
        }
        code = static_cast<std::uint32_t>(std::strtoul(written.c_str(), nullptr, 16));
        rest_.remove_prefix(4);
        return true;
    }

    static bool isSurrogate(std::uint32_t code) { return code >= 0xD800 && code <= 0xDFFF; }

    static void appendUtf8(std::string& out, std::uint32_t code) {
        if (code < 0x80) {
            out += static_cast<char>(code);
            return;
        }
        const unsigned following = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
        out += static_cast<char>((0xF00U >> (following + 1) & 0xFF) | code >> 6 * following);
        for (unsigned i = following; i-- > 0;) {
            out += static_cast<char>(0x80 | (code >> 6 * i & 0x3F));
        }
    }

    std::string_view rest_;
};

/// Takes a member that must be of this kind; a null pointer when it is absent, false when it is of
/// another.
bool member(const JsonValue& object, const char* name, JsonValue::Kind kind,
            const JsonValue*& found) {
    const auto position = object.members.find(name);
    found = position == object.members.end() ? nullptr : position->second.get();
    return found == nullptr || found->kind == kind;
}

bool textMember(const JsonValue& object, const char* name, std::string& text) {
    const JsonValue* found = nullptr;
    if (!member(object, name, JsonValue::Kind::text, found)) {
        return false;
    }
    text = found == nullptr ? "" : found->text;
    return true;
}

bool encodingMember(const JsonValue& object, TextEncoding& encoding) {
    std::string word;
    const bool matched = textMember(object, "encoding", word);
    encoding = referenceEncoding(word);
    return matched;
}

}  // namespace

std::uint64_t referenceDecimal(const std::string& text) {
    const std::string digits = text.substr(text.starts_with('+') || text.starts_with('-') ? 1 : 0);
    if (digits.find_first_not_of("0123456789") != std::string::npos) {
        return 0;
    }
    std::uint64_t value = 0;
    std::uint64_t place = 1;
    for (std::size_t i = digits.size(); i-- > 0; place *= 10) {
        value += place * static_cast<std::uint64_t>(digits[i] - '0');
    }
    return text.starts_with('-') ? ~value + 1 : value;
}

std::optional<RequestRecord> referenceJsonRecord(const std::string& body) {
    JsonValue value;
    JsonReader reader(body);
    if (!reader.whole(value) || value.kind != JsonValue::Kind::object) {
        return std::nullopt;
    }
    RequestRecord record;
    std::string mode;
    const JsonValue* genPairs = nullptr;
    if (!textMember(value, "project", record.project) || !textMember(value, "mode", mode) ||
        !encodingMember(value, record.encoding) ||
        !member(value, "genPairs", JsonValue::Kind::truth, genPairs)) {
        return std::nullopt;
    }
    record.genPairs = genPairs != nullptr && genPairs->truth;
    record.mode = mode == "generateSignature" ? RequestMode::generateSignature
                  : mode == "verifySignature" ? RequestMode::verifySignature
                                              : RequestMode::none;
    const JsonValue* signature = nullptr;
    if (member(value, "signature", JsonValue::Kind::object, signature) && signature != nullptr &&
        (!textMember(*signature, "data", record.signatureData) ||
         !encodingMember(*signature, record.signatureDataEncoding) ||
         !textMember(*signature, "file", record.signatureFile) ||
         !textMember(*signature, "signature", record.signature))) {
        return std::nullopt;
    }
    return record;
}
