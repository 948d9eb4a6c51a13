#include "frontend/signature_requests.h"

#include <array>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "engine/signature_engine.h"
#include "frontend/base64_decoder.h"

namespace {

/// The bytes that the data stand for; false when their base64 is malformed.
bool decodeData(RequestRun& run, std::vector<std::uint8_t>& bytes) {
    const RequestRecord& record = run.record;
    if (record.signatureDataEncoding == TextEncoding::base64) {
        run.base64 = base64DecodeReporting(record.signatureData, bytes);
        return run.base64.fault == Base64Fault::none;
    }
    bytes.assign(record.signatureData.begin(), record.signatureData.end());
    return true;
}

/// The first rule on what the operation works on that the request breaks. `bytes` are the data
/// then; none are taken where the request names a file.
RequestFault takeInput(RequestRun& run, std::vector<std::uint8_t>& bytes) {
    const RequestFault fault = inputFault(run.record);
    if (fault != RequestFault::none || run.record.signatureData.empty()) {
        return fault;
    }
    return decodeData(run, bytes) ? RequestFault::none : RequestFault::dataBase64;
}

}  // namespace

RequestFault handleGenerateSignature(RequestRun& run) {
    std::vector<std::uint8_t> bytes;
    const RequestFault fault = takeInput(run, bytes);
    if (fault != RequestFault::none) {
        return fault;
    }
    const RequestRecord& record = run.record;
    std::array<char, signatureBufferSize> signature{};
    const bool made =
        record.signatureFile.empty()
            ? signData(record.project.c_str(), bytes.data(),
                       static_cast<std::uint32_t>(bytes.size()), signature.data(), run.engine)
            : signFile(record.project.c_str(), record.signatureFile.c_str(), signature.data(),
                       run.engine);
    run.signature = signature.data();
    return made ? RequestFault::none : RequestFault::generation;
}

RequestFault handleVerifySignature(RequestRun& run) {
    std::vector<std::uint8_t> bytes;
    const RequestFault fault = takeInput(run, bytes);
    if (fault != RequestFault::none) {
        return fault;
    }
    const RequestRecord& record = run.record;
    run.isValid = record.signatureFile.empty()
                      ? verifyData(record.project.c_str(), bytes.data(),
                                   static_cast<std::uint32_t>(bytes.size()),
                                   record.signature.c_str(), run.engine)
                      : verifyFile(record.project.c_str(), record.signatureFile.c_str(),
                                   record.signature.c_str(), run.engine);
    return RequestFault::none;
}

Response respondResult(RequestRun& run) {
    const bool verdict = run.record.mode == RequestMode::verifySignature;
    const std::string name = verdict ? "valid" : "signature";
    if (run.record.encoding == TextEncoding::json) {
        nlohmann::json answer;
        answer[name] = verdict ? nlohmann::json(run.isValid) : nlohmann::json(run.signature);
        return respondJson(answer, run.result);
    }
    run.result = run.record.genPairs ? name + ":" : "";
    run.result += verdict ? (run.isValid ? "true" : "false") : run.signature;
    return respondOk(run.result);
}
