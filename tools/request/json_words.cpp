#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frontend/json_input.h"
#include "frontend/json_members.h"
#include "tools/counted_text.h"
#include "tools/request/json_types.h"
#include "tools/request/quoted_text.h"
#include "tools/request/request_words.h"

namespace {

using Object = JsonNotes::Object;

template <std::size_t Count>
using KnownMembers = std::array<JsonMembers::KnownMember, Count>;

std::string missingOperation(const Object& request) {
    const auto mode = request.known.find("mode");
    if (mode == request.known.end()) {
        return "'mode' is absent";
    }
    return "'mode' is " + quotation(mode->second.text) +
           R"(; only "generateSignature" and "verifySignature" select an operation)";
}

template <std::size_t Count>
void remarkRepeated(const Object& object, const KnownMembers<Count>& members,
                    const std::string& prefix, std::vector<std::string>& remarks) {
    for (const JsonMembers::KnownMember& known : members) {
        const auto found = object.known.find(known.name);
        if (found != object.known.end() && found->second.times > 1) {
            remarks.push_back("'" + prefix + std::string(known.name) + "' is given " +
                              counted(found->second.times, "time") + ", and the last one counts");
        }
    }
}

void remarkUnknown(const Object& object, const std::string& prefix,
                   std::vector<std::string>& remarks) {
    if (object.unknownCount != 0) {
        std::vector<std::string> names;
        for (const std::string& name : object.unknown) {
            names.push_back(prefix + name);
        }
        remarks.push_back(unknownNames("member", names, object.unknownCount));
    }
}

std::string wordOf(const Object& object, const char* name) {
    const auto found = object.known.find(name);
    return found == object.known.end() ? "" : found->second.text;
}

/// What an object that makes a record says beyond it.
void readWords(const JsonNotes& notes, RequestWords& words) {
    constexpr const char* prefix = "signature.";
    remarkRepeated(notes.request, JsonMembers::requestMembers, "", words.remarks);
    remarkRepeated(notes.signature, JsonMembers::signatureMembers, prefix, words.remarks);
    remarkUnknown(notes.request, "", words.remarks);
    remarkUnknown(notes.signature, prefix, words.remarks);
    words.encoding = wordOf(notes.request, "encoding");
    words.dataEncoding = wordOf(notes.signature, "encoding");
    words.missingMode = missingOperation(notes.request);
    const auto signature = notes.request.known.find("signature");
    if (signature == notes.request.known.end()) {
        words.missingInput = ": 'signature' is absent";
    } else if (std::string_view(signature->second.type) != "object") {
        words.missingInput =
            ": 'signature' is " + withArticle(signature->second.type) + ", not an object";
    }
}

}  // namespace

RequestWords jsonWords(const RawRequest& request, const RequestRun& run) {
    RequestWords words{.names = {.project = "'project'",
                                 .encoding = "'encoding'",
                                 .data = "'signature.data'",
                                 .dataEncoding = "'signature.encoding'",
                                 .file = "'signature.file'",
                                 .signature = "'signature.signature'"}};
    if (request.contentLength.has_value()) {
        words.remarks = lengthRemarks(
            request, static_cast<std::uint64_t>(parseDecimal(request.contentLength->c_str())));
    }
    if (!isRefusedReading(run.fault)) {
        readWords(*run.notes, words);
    }
    return words;
}
