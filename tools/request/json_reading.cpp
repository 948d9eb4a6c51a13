#include <algorithm>
#include <array>
#include <cstdint>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frontend/json_input.h"
#include "tools/counted_text.h"
#include "tools/request/json_text.h"
#include "tools/request/quoted_text.h"
#include "tools/request/request_reading.h"

namespace {

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
std::optional<Ruling> memberRefusal(const JsonObject& object, const std::array<Member, 4>& members,
                                    const std::string& prefix) {
    for (const Member& member : members) {
        const auto found = object.find(member.name);
        if (found != object.end() && found->second.type != member.type) {
            return Ruling{"json.member-type", "'" + prefix + member.name + "' is " +
                                                  withArticle(found->second.type) +
                                                  " and must be " + withArticle(member.type)};
        }
    }
    return std::nullopt;
}

Ruling withoutMemory() {
    return {"json.memory", "there is not enough memory for the values of the body"};
}

/// Why the text is no JSON object, or why the object fills no record.
Ruling textRefusal(const JsonText& text) {
    if (text.fault.has_value()) {
        return *text.fault;
    }
    if (text.type != "object") {
        return {"json.no-object",
                "the body is " + withArticle(text.type) + " and must be an object"};
    }
    if (std::optional<Ruling> ruling = memberRefusal(text.request, requestMembers, "")) {
        return *ruling;
    }
    // Nothing else in an object is refused; but the program refuses a body as well whose values it
    // has no memory for.
    return memberRefusal(text.signature, signatureMembers, "signature.").value_or(withoutMemory());
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
    try {
        return textRefusal(readJsonText(text));
    } catch (const std::bad_alloc&) {
        return withoutMemory();
    }
}

std::string missingOperation(const JsonObject& request) {
    const auto mode = request.find("mode");
    if (mode == request.end()) {
        return "'mode' is absent";
    }
    return "'mode' is " + quotation(mode->second.text) +
           R"(; only "generateSignature" and "verifySignature" select an operation)";
}

void remarkUnknown(const JsonObject& object, const std::array<Member, 4>& members,
                   std::string_view alsoKnown, const std::string& prefix,
                   std::vector<std::string>& remarks) {
    std::vector<std::string> unknown;
    for (const auto& entry : object) {
        const std::string& name = entry.first;
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

void remarkRepeated(const JsonObject& object, const std::string& name, const std::string& prefix,
                    std::vector<std::string>& remarks) {
    const auto found = object.find(name);
    if (found != object.end() && found->second.times > 1) {
        remarks.push_back("'" + prefix + name + "' is given " +
                          counted(found->second.times, "time") + ", and the last one counts");
    }
}

void remarkRepeated(const JsonText& text, std::vector<std::string>& remarks) {
    for (const Member& member : requestMembers) {
        remarkRepeated(text.request, member.name, "", remarks);
    }
    remarkRepeated(text.request, "signature", "", remarks);
    for (const Member& member : signatureMembers) {
        remarkRepeated(text.signature, member.name, "signature.", remarks);
    }
}

std::string wordOf(const JsonObject& object, const char* name) {
    const auto found = object.find(name);
    return found == object.end() ? "" : found->second.text;
}

/// What the text of an object says beyond the record.
void readWords(const JsonText& text, RequestReading& reading) {
    remarkRepeated(text, reading.remarks);
    reading.encodingWord = wordOf(text.request, "encoding");
    reading.missingMode = missingOperation(text.request);
    remarkUnknown(text.request, requestMembers, "signature", "", reading.remarks);
    const auto signature = text.request.find("signature");
    if (signature == text.request.end()) {
        reading.missingInput = ": 'signature' is absent";
    } else if (signature->second.type != "object") {
        reading.missingInput =
            ": 'signature' is " + withArticle(signature->second.type) + " and no object";
    }
    reading.dataEncodingWord = wordOf(text.signature, "encoding");
    remarkUnknown(text.signature, signatureMembers, "", "signature.", reading.remarks);
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
        readWords(readJsonText(announcedBody(request)), reading);
    } catch (const std::bad_alloc&) {
        // The program has what it needs; only its words are missing here.
        reading.missingMode = "'mode' selects no operation";
        reading.remarks.emplace_back(
            "there is not enough memory to look for unknown members and words");
    }
    return reading;
}
