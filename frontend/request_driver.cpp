#include "frontend/request_driver.h"

#include <cstdlib>
#include <string_view>

#include "frontend/form_input.h"
#include "frontend/json_input.h"
#include "frontend/response_writer.h"
#include "frontend/signature_requests.h"

namespace {

bool isJsonRequest() {
    const char* contentType = std::getenv("CONTENT_TYPE");
    return contentType != nullptr && std::string_view(contentType) == "application/json";
}

/// Fills the record from the form; on failure returns the message for it, otherwise null.
const char* readFormRequest(RequestRecord& record) {
    FormParameters parameters;
    if (!readFormParameters(parameters, true)) {
        return "Failed to parse input data";
    }
    return fillRecordFromForm(parameters, record) ? nullptr : "Failed to parse parameters";
}

const char* readJsonRequest(RequestRecord& record) {
    return fillRecordFromJson(record) ? nullptr : "Invalid JSON data";
}

}  // namespace

std::int32_t runRequest() {
    RequestRecord record;
    const bool json = isJsonRequest();
    if (const char* failure = json ? readJsonRequest(record) : readFormRequest(record)) {
        return respondBadRequest(failure);
    }
    if (record.mode == RequestMode::none) {
        return respondBadRequest("'mode' parameter missing or invalid");
    }
    if (record.project.empty()) {
        return respondBadRequest("'project' parameter is required");
    }
    if (record.encoding == TextEncoding::none) {
        record.encoding = json ? TextEncoding::json : TextEncoding::urlencode;
    }
    if (record.signatureDataEncoding == TextEncoding::none) {
        record.signatureDataEncoding = TextEncoding::plain;
    }
    return dispatchRequest(record);
}

std::int32_t dispatchRequest(const RequestRecord& record) {
    switch (record.mode) {
        case RequestMode::generateSignature:
            return handleGenerateSignature(record);
        case RequestMode::verifySignature:
            return handleVerifySignature(record);
        default:
            return respondServerError("Invalid mode");
    }
}
