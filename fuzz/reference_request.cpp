#include "fuzz/reference_request.h"

#include <cstdint>
#include <limits>

#include "fuzz/reference_base64.h"
#include "fuzz/reference_form.h"
#include "fuzz/reference_json.h"
#include "fuzz/request_input.h"
#include "tests/support/expected_response.h"

namespace {

bool isJson(const RawRequest& request) {
    return request.contentType == "application/json";
}

std::uint64_t announcedLength(const RawRequest& request) {
    const std::string text = request.contentLength.value_or("0");
    return isJson(request) ? referenceDecimal(text) : referenceLength(text);
}

/// The record out of the body; empty, with the message, when there is none.
std::optional<RequestRecord> readRecord(const RawRequest& request, std::string& refusal) {
    if (isJson(request)) {
        refusal = "Invalid JSON data";
        std::string body = request.body;
        body.resize(body.empty() ? 0 : announcedLength(request));
        return referenceJsonRecord(body);
    }
    refusal = "Failed to parse input data";
    const auto text = referenceFormText(request.contentLength, request.body);
    if (!text.has_value()) {
        return std::nullopt;
    }
    return referenceFormRecord(referenceFormPairs(*text));
}

std::string refusalOfRecord(const RequestRecord& record) {
    if (record.mode == RequestMode::none) {
        return "'mode' parameter missing or invalid";
    }
    if (record.project.empty()) {
        return "'project' parameter is required";
    }
    if (record.mode == RequestMode::verifySignature && record.signature.empty()) {
        return "'signature' parameter is required";
    }
    if (record.signatureData.empty() == record.signatureFile.empty()) {
        return "Either 'data' or 'file' parameter is required";
    }
    if (record.signatureDataEncoding == TextEncoding::urlencode ||
        record.signatureDataEncoding == TextEncoding::json) {
        return "Signature encoding must be 'plain' or 'base64'";
    }
    return "";
}

}  // namespace

bool announcesMuch(const RawRequest& request) {
    const std::uint64_t length = announcedLength(request);
    return length > longestAnnounced && length < impossibleLength;
}

bool announcesTheImpossible(const RawRequest& request) {
    const std::uint64_t length = announcedLength(request);
    const bool countsAsNone =
        !isJson(request) && length == std::numeric_limits<std::uint64_t>::max();
    return length >= impossibleLength && !countsAsNone;
}

RequestCourse referenceCourse(const RawRequest& request) {
    RequestCourse course;
    std::optional<RequestRecord> record = readRecord(request, course.refusal);
    if (!record.has_value()) {
        return course;
    }
    if (record->encoding == TextEncoding::none) {
        record->encoding = isJson(request) ? TextEncoding::json : TextEncoding::urlencode;
    }
    course.record = *record;
    course.refusal = refusalOfRecord(*record);
    if (!course.refusal.empty() || record->signatureData.empty()) {
        return course;
    }
    if (record->signatureDataEncoding == TextEncoding::base64) {
        const auto decoded = referenceBase64(record->signatureData);
        course.data = decoded.value_or(Bytes());
        course.refusal = decoded.has_value() ? "" : "Invalid base64 data";
    } else {
        course.data.assign(record->signatureData.begin(), record->signatureData.end());
    }
    return course;
}

std::string referenceSuccess(const RequestRecord& record, const std::string& name,
                             const std::string& word) {
    if (record.encoding != TextEncoding::json) {
        return expectedText((record.genPairs ? name + ":" : "") + word);
    }
    const std::string quote = name == "signature" ? "\"" : "";
    std::string body = "{\"";
    body.append(name).append("\":").append(quote).append(word).append(quote).append("}");
    return expectedJson(body);
}
