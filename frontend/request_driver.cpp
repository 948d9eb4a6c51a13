#include "frontend/request_driver.h"

#include <string_view>

#include "frontend/form_input.h"
#include "frontend/json_input.h"
#include "frontend/signature_requests.h"

namespace {

bool isJsonRequest(const RequestSource& source) {
    return source.contentType != nullptr &&
           std::string_view(source.contentType) == "application/json";
}

RequestFault readFormRequest(const RequestSource& source, RequestRecord& record) {
    FormParameters parameters;
    const RequestFault fault = readFormParameters(parameters, source, true);
    if (fault != RequestFault::none) {
        return fault;
    }
    return fillRecordFromForm(parameters, record) ? RequestFault::none
                                                  : RequestFault::formParameters;
}

/// Puts the defaults in the place of the encodings that the record leaves open.
void settleEncodings(RequestRecord& record, TextEncoding byDefault) {
    if (record.encoding == TextEncoding::none) {
        record.encoding = byDefault;
    }
    if (record.signatureDataEncoding == TextEncoding::none) {
        record.signatureDataEncoding = TextEncoding::plain;
    }
}

Response responseTo(RequestRun& run) {
    switch (run.fault) {
        case RequestFault::none:
            return respondResult(run);
        case RequestFault::unknownMode:
            return respondServerError(messageOf(run.fault));
        default:
            return respondBadRequest(messageOf(run.fault));
    }
}

}  // namespace

std::int32_t runRequest() {
    RequestRun run;
    const Response response = answerRequest(requestOfProcess(), run);
    writeResponse(response.status, response.contentType, response.body);
    return response.exitStatus;
}

Response answerRequest(const RequestSource& source, RequestRun& run) {
    run.isJson = isJsonRequest(source);
    run.fault = run.isJson ? fillRecordFromJson(run.record, source, run.notes)
                           : readFormRequest(source, run.record);
    run.isRead = true;
    return run.fault == RequestFault::none
               ? answerRecord(run, run.isJson ? TextEncoding::json : TextEncoding::urlencode)
               : responseTo(run);
}

Response answerRecord(RequestRun& run, TextEncoding byDefault) {
    run.fault = selectionFault(run.record);
    if (run.fault != RequestFault::none) {
        return responseTo(run);
    }
    settleEncodings(run.record, byDefault);
    return dispatchRequest(run);
}

Response dispatchRequest(RequestRun& run) {
    switch (run.record.mode) {
        case RequestMode::generateSignature:
            run.fault = handleGenerateSignature(run);
            break;
        case RequestMode::verifySignature:
            run.fault = handleVerifySignature(run);
            break;
        default:
            run.fault = RequestFault::unknownMode;
    }
    return responseTo(run);
}
