#include "frontend/request_rules.h"

const char* messageOf(RequestFault fault) {
    switch (fault) {
        case RequestFault::formLengthUnset:
        case RequestFault::formLengthZero:
        case RequestFault::formLengthRange:
        case RequestFault::formBodyEmpty:
            return "Failed to parse input data";
        case RequestFault::formParameters:
            return "Failed to parse parameters";
        case RequestFault::jsonLengthUnset:
        case RequestFault::jsonLengthZero:
        case RequestFault::jsonBodyShort:
        case RequestFault::jsonZeroByte:
        case RequestFault::jsonSyntax:
        case RequestFault::jsonNumber:
        case RequestFault::jsonNoObject:
        case RequestFault::jsonMemberType:
        case RequestFault::jsonMemory:
            return "Invalid JSON data";
        case RequestFault::noMode:
            return "'mode' parameter missing or invalid";
        case RequestFault::noProject:
            return "'project' parameter is required";
        case RequestFault::unknownMode:
            return "Invalid mode";
        case RequestFault::noSignature:
            return "'signature' parameter is required";
        case RequestFault::noInput:
        case RequestFault::twoInputs:
            return "Either 'data' or 'file' parameter is required";
        case RequestFault::dataEncoding:
            return "Signature encoding must be 'plain' or 'base64'";
        case RequestFault::dataBase64:
            return "Invalid base64 data";
        case RequestFault::generation:
            return "Signature generation failed";
        case RequestFault::none:
            break;
    }
    return "";
}

RequestFault selectionFault(const RequestRecord& record) {
    if (record.mode == RequestMode::none) {
        return RequestFault::noMode;
    }
    return record.project.empty() ? RequestFault::noProject : RequestFault::none;
}

RequestFault inputFault(const RequestRecord& record) {
    if (record.mode == RequestMode::verifySignature && record.signature.empty()) {
        return RequestFault::noSignature;
    }
    if (record.signatureData.empty() && record.signatureFile.empty()) {
        return RequestFault::noInput;
    }
    if (!record.signatureData.empty() && !record.signatureFile.empty()) {
        return RequestFault::twoInputs;
    }
    if (record.signatureDataEncoding != TextEncoding::plain &&
        record.signatureDataEncoding != TextEncoding::base64) {
        return RequestFault::dataEncoding;
    }
    return RequestFault::none;
}
