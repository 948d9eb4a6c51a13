#include "frontend/signature_requests.h"

#include <array>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "engine/signature_engine.h"
#include "frontend/base64_decoder.h"
#include "frontend/response_writer.h"

namespace {

/// The message of the first rule on data, file and encoding that the record breaks, or null.
const char* inputRefusal(const RequestRecord& record) {
    if (record.signatureData.empty() == record.signatureFile.empty()) {
        return "Either 'data' or 'file' parameter is required";
    }
    if (record.signatureDataEncoding != TextEncoding::plain &&
        record.signatureDataEncoding != TextEncoding::base64) {
        return "Signature encoding must be 'plain' or 'base64'";
    }
    return nullptr;
}

/// The bytes that `signatureData` stands for; false when its base64 is malformed.
bool decodeData(const RequestRecord& record, std::vector<std::uint8_t>& bytes) {
    if (record.signatureDataEncoding == TextEncoding::base64) {
        return base64Decode(record.signatureData, bytes);
    }
    bytes.assign(record.signatureData.begin(), record.signatureData.end());
    return true;
}

std::int32_t respondResult(const RequestRecord& record, const char* name,
                           const nlohmann::json& value, const std::string& text) {
    if (record.encoding == TextEncoding::json) {
        nlohmann::json answer;
        answer[name] = value;
        respondJson(answer);
    } else {
        respondOk(record.genPairs ? name + (":" + text) : text);
    }
    return 0;
}

}  // namespace

std::int32_t handleGenerateSignature(const RequestRecord& record) {
    if (const char* refusal = inputRefusal(record)) {
        return respondBadRequest(refusal);
    }
    std::array<char, signatureBufferSize> signature{};
    bool made = false;
    if (!record.signatureData.empty()) {
        std::vector<std::uint8_t> bytes;
        if (!decodeData(record, bytes)) {
            return respondBadRequest("Invalid base64 data");
        }
        made = signData(record.project.c_str(), bytes.data(),
                        static_cast<std::uint32_t>(bytes.size()), signature.data());
    } else {
        made = signFile(record.project.c_str(), record.signatureFile.c_str(), signature.data());
    }
    if (!made) {
        return respondBadRequest("Signature generation failed");
    }
    const std::string text = signature.data();
    return respondResult(record, "signature", text, text);
}

std::int32_t handleVerifySignature(const RequestRecord& record) {
    if (record.signature.empty()) {
        return respondBadRequest("'signature' parameter is required");
    }
    if (const char* refusal = inputRefusal(record)) {
        return respondBadRequest(refusal);
    }
    bool valid = false;
    if (!record.signatureData.empty()) {
        std::vector<std::uint8_t> bytes;
        if (!decodeData(record, bytes)) {
            return respondBadRequest("Invalid base64 data");
        }
        valid = verifyData(record.project.c_str(), bytes.data(),
                           static_cast<std::uint32_t>(bytes.size()), record.signature.c_str());
    } else {
        valid = verifyFile(record.project.c_str(), record.signatureFile.c_str(),
                           record.signature.c_str());
    }
    return respondResult(record, "valid", valid, valid ? "true" : "false");
}
