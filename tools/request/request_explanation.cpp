#include "tools/request/request_explanation.h"

#include <new>
#include <utility>

#include "tools/request/engine_explanation.h"
#include "tools/request/quoted_text.h"

namespace {

/// Puts the default in the place of an absent or unknown word, with a remark on the latter.
void settle(TextEncoding& encoding, TextEncoding byDefault, const std::string& name,
            const std::string& word, std::vector<std::string>& remarks) {
    if (encoding != TextEncoding::none) {
        return;
    }
    encoding = byDefault;
    if (!word.empty()) {
        std::string standard = "plain";
        if (byDefault != TextEncoding::plain) {
            standard = byDefault == TextEncoding::json ? "json" : "urlencode";
        }
        remarks.push_back(name + " is " + quotation(word) +
                          ", which is no known word: the default holds, " + quotation(standard));
    }
}

/// The answer of the operation that a complete record selects.
Explanation explainDispatch(const RequestReading& reading) {
    switch (reading.record.mode) {
        case RequestMode::generateSignature:
            return explainGenerateSignature(reading);
        case RequestMode::verifySignature:
            return explainVerifySignature(reading);
        default:
            return {.rule = "request.mode-unknown",
                    .reason = "the record asks for an operation that the program does not have",
                    .status = "500 Server Error",
                    .body = "Invalid mode"};
    }
}

/// The answer, with the remarks of the engine alone.
Explanation explainRecord(RequestReading& reading) {
    RequestRecord& record = reading.record;
    if (record.mode == RequestMode::none) {
        return refusalBy({"request.mode", reading.missingMode},
                         "'mode' parameter missing or invalid");
    }
    if (record.project.empty()) {
        return refusalBy({"request.project", reading.names.project + " is absent or empty"},
                         "'project' parameter is required");
    }
    settle(record.encoding, reading.defaultEncoding, reading.names.encoding, reading.encodingWord,
           reading.remarks);
    settle(record.signatureDataEncoding, TextEncoding::plain, reading.names.dataEncoding,
           reading.dataEncodingWord, reading.remarks);
    try {
        return explainDispatch(reading);
    } catch (const std::bad_alloc&) {
        return silenceBy({"project.memory", "there is not enough memory for the project " +
                                                quotation(beforeZero(record.project)) +
                                                " with the data"});
    }
}

}  // namespace

Explanation explainRequest(const RawRequest& request) {
    const bool json = request.contentType == "application/json";
    return explainReading(json ? readJsonRequest(request) : readFormRequest(request));
}

Explanation explainReading(RequestReading reading) {
    Explanation explanation =
        reading.refusal.has_value() ? *reading.refusal : explainRecord(reading);
    explanation.remarks.insert(explanation.remarks.begin(), reading.remarks.begin(),
                               reading.remarks.end());
    return explanation;
}
