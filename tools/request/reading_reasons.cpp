#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "frontend/json_input.h"
#include "frontend/json_members.h"
#include "tools/counted_text.h"
#include "tools/request/fault_reasons.h"
#include "tools/request/json_types.h"
#include "tools/request/quoted_text.h"
#include "tools/rules.h"

namespace {

/// Why CONTENT_LENGTH counts as 0 where JSON is expected.
std::string zeroLength(std::string_view announced) {
    std::string_view digits = announced;
    if (digits.starts_with('+') || digits.starts_with('-')) {
        digits.remove_prefix(1);
    }
    const bool isNumber =
        !digits.empty() && digits.find_first_not_of("0123456789") == std::string_view::npos;
    return isNumber ? ", which counts as 0, so there is no body"
                    : ", which is not a decimal number and counts as 0, so there is no body";
}

std::string wrongType(const std::string& name, const std::string& type, const std::string& wanted) {
    return "'" + name + "' is " + withArticle(type) + " and must be " + withArticle(wanted);
}

/// What is said of the first member of the table that has another type; empty if none has.
template <std::size_t Count>
std::string wrongMember(const JsonNotes::Object& object,
                        const std::array<JsonMembers::KnownMember, Count>& members,
                        const std::string& prefix) {
    for (const JsonMembers::KnownMember& known : members) {
        const std::string name(known.name);
        const auto found = object.known.find(known.name);
        if (known.type != nullptr && found != object.known.end() &&
            std::string_view(found->second.type) != known.type) {
            return wrongType(prefix + name, found->second.type, known.type);
        }
    }
    return {};
}

std::string wrongMember(const JsonNotes& notes) {
    const std::string wrong = wrongMember(notes.request, JsonMembers::requestMembers, "");
    return !wrong.empty()
               ? wrong
               : wrongMember(notes.signature, JsonMembers::signatureMembers, "signature.");
}

/// The parser's words, less what it says before a dash and the text that it read last.
std::string parserWords(std::string words) {
    constexpr std::string_view dash = " - ";
    words.erase(0, words.find(dash) + dash.size());
    return words.substr(0, words.find("; last read: '"));
}

std::string syntaxReason(const JsonNotes& notes, std::uint64_t length) {
    const std::string place =
        notes.place > length ? "at the end of the body" : "at byte " + std::to_string(notes.place);
    return "the body is not JSON: " + place + ", " + parserWords(notes.complaint);
}

std::string jsonReason(const RawRequest& request, const RequestRun& run) {
    const std::string& length = *request.contentLength;
    const auto announced = static_cast<std::uint64_t>(parseDecimal(length.c_str()));
    switch (run.fault) {
        case RequestFault::jsonLengthZero:
            return "CONTENT_LENGTH is " + quotation(length) + zeroLength(length);
        case RequestFault::jsonBodyShort:
            return "the body ends after " + std::to_string(request.body.size()) + " of the " +
                   counted(announced, "byte") + " announced";
        case RequestFault::jsonZeroByte:
            return "byte " + std::to_string(request.body.find('\0') + 1) +
                   " of the body is a zero byte";
        case RequestFault::jsonSyntax:
            return syntaxReason(*run.notes, announced);
        case RequestFault::jsonNumber:
            return "the number that ends at byte " + std::to_string(run.notes->place) +
                   " of the body is too large for a double";
        case RequestFault::jsonNoObject:
            return "the body is " + withArticle(run.notes->type) + " and must be an object";
        case RequestFault::jsonMemberType:
            return wrongMember(*run.notes);
        default:
            return "there is not enough memory for the values of the body";
    }
}

std::string reason(const RawRequest& request, const RequestRun& run) {
    if (!request.contentLength.has_value()) {
        return "CONTENT_LENGTH is not set, so there is no body";
    }
    const std::string announced = "CONTENT_LENGTH is " + quotation(*request.contentLength);
    switch (run.fault) {
        case RequestFault::formLengthZero:
            return announced + ": the number at its start is 0 or missing, so there is no body";
        case RequestFault::formLengthRange:
            return announced + ", which counts as 2^64 - 1 and means that there is no body";
        case RequestFault::formBodyEmpty:
            return announced + ", but nothing arrives: the body is empty";
        default:
            return jsonReason(request, run);
    }
}

}  // namespace

Refusal readingRefusal(const RawRequest& request, const RequestRun& run) {
    return {ruleOf(run.fault).code, reason(request, run)};
}
