#include "tools/request/engine_explanation.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>

#include "engine/signature_engine.h"
#include "frontend/base64_decoder.h"
#include "tools/files/cut_file.h"
#include "tools/files/input_file.h"
#include "tools/project/key_reading.h"
#include "tools/project/project_check.h"
#include "tools/project/project_reading.h"
#include "tools/refusal.h"
#include "tools/request/base64_reading.h"
#include "tools/request/engine_remarks.h"
#include "tools/request/quoted_text.h"
#include "tools/signature/signature_reading.h"

namespace {

using Data = std::vector<std::uint8_t>;
using KeyRefusal = std::optional<Refusal> (*)(const ProjectFile&);

/// The rules on data, file and encoding.
std::optional<Explanation> inputRefusal(const RequestReading& reading) {
    const RequestRecord& record = reading.record;
    const RequestNames& names = reading.names;
    const bool hasData = !record.signatureData.empty();
    const bool hasFile = !record.signatureFile.empty();
    const char* oneOfBoth = "Either 'data' or 'file' parameter is required";
    if (!hasData && !hasFile) {
        return refusalBy({"request.no-input", "neither " + names.data + " nor " + names.file +
                                                  " is given" + reading.missingInput},
                         oneOfBoth);
    }
    if (hasData && hasFile) {
        return refusalBy({"request.two-inputs", names.data + " and " + names.file +
                                                    " are both given, and only one may be"},
                         oneOfBoth);
    }
    if (record.signatureDataEncoding != TextEncoding::plain &&
        record.signatureDataEncoding != TextEncoding::base64) {
        return refusalBy({"request.data-encoding",
                          names.dataEncoding + " is " + quotation(reading.dataEncodingWord) +
                              R"(; data are written as "plain" or "base64")" +
                              (hasFile ? ", and this holds for a request with a file too" : "")},
                         "Signature encoding must be 'plain' or 'base64'");
    }
    return std::nullopt;
}

/// The bytes that the data stand for; false when their base64 is malformed.
bool decodeData(const RequestRecord& record, Data& bytes) {
    if (record.signatureDataEncoding == TextEncoding::base64) {
        return base64Decode(record.signatureData, bytes);
    }
    bytes.assign(record.signatureData.begin(), record.signatureData.end());
    return true;
}

Explanation base64Explanation(const RequestRecord& record) {
    return refusalBy(base64Refusal(record.signatureData).value(), "Invalid base64 data");
}

std::uint32_t engineLength(const Data& bytes) {
    return static_cast<std::uint32_t>(bytes.size());
}

/// Why the engine gives false before it computes anything: for its input, the project or the key.
/// Reads the project if it comes to that.
std::optional<Ruling> engineRefusal(const RequestRecord& record, const Data& bytes,
                                    KeyRefusal keyRefusal, ProjectReading& project) {
    if (record.signatureFile.empty()) {
        if (engineLength(bytes) == 0) {
            return Ruling{"data.empty", "the data stand for no bytes at all"};
        }
    } else {
        const std::string path = beforeZero(record.signatureFile);
        if (const std::optional<Refusal> refusal = inputFileRefusal(path)) {
            return Ruling{refusal->code, "the file " + quotation(path) + ": " + refusal->text};
        }
    }
    const std::string path = beforeZero(record.project);
    project = readProject(path);
    if (project.refusal.has_value()) {
        return Ruling{project.refusal->code,
                      "the project " + quotation(path) + ": " + project.refusal->text};
    }
    if (const std::optional<Refusal> refusal = keyRefusal(project.project)) {
        return Ruling{refusal->code,
                      "the key of the project " + quotation(path) + ": " + refusal->text};
    }
    return std::nullopt;
}

/// An answer with 200 OK.
Explanation result(const RequestReading& reading, const Ruling& ruling, const char* name,
                   const nlohmann::json& value, const std::string& text) {
    const RequestRecord& record = reading.record;
    std::string body;
    if (record.encoding == TextEncoding::json) {
        nlohmann::json answer;
        answer[name] = value;
        body = answer.dump();
    } else {
        body = record.genPairs ? name + (":" + text) : text;
    }
    return {.rule = ruling.rule,
            .reason = ruling.reason,
            .status = "200 OK",
            .body = body,
            .remarks = engineRemarks(reading)};
}

void nameInput(const RequestRecord& record) {
    if (!record.signatureFile.empty()) {
        nameReadFile(beforeZero(record.signatureFile));
    }
}

bool makesSignature(const RequestRecord& record, const Data& bytes) {
    nameInput(record);
    std::array<char, signatureBufferSize> signature{};
    return record.signatureFile.empty()
               ? signData(record.project.c_str(), bytes.data(), engineLength(bytes),
                          signature.data())
               : signFile(record.project.c_str(), record.signatureFile.c_str(), signature.data());
}

bool verifies(const RequestRecord& record, const Data& bytes) {
    nameInput(record);
    return record.signatureFile.empty()
               ? verifyData(record.project.c_str(), bytes.data(), engineLength(bytes),
                            record.signature.c_str())
               : verifyFile(record.project.c_str(), record.signatureFile.c_str(),
                            record.signature.c_str());
}

/// Why verifying gives false.
Ruling invalidity(const RequestRecord& record, const Data& bytes) {
    ProjectReading project;
    if (std::optional<Ruling> refusal = engineRefusal(record, bytes, &verifyingRefusal, project)) {
        return *refusal;
    }
    const SignatureReading signature = readSignature(record.signature);
    if (signature.refusal.has_value()) {
        return {signature.refusal->code, signature.refusal->text};
    }
    if (const std::optional<std::string> unsound = unsoundKey(project.project)) {
        return {"key.unsound",
                "the signature is well formed, but signatures under the key of the project " +
                    quotation(beforeZero(record.project)) + " cannot be relied on: " + *unsound};
    }
    return {"signature.mismatch", mismatchReason(signature)};
}

}  // namespace

Explanation explainGenerateSignature(const RequestReading& reading) {
    if (std::optional<Explanation> refusal = inputRefusal(reading)) {
        return *refusal;
    }
    const RequestRecord& record = reading.record;
    Data bytes;
    if (!record.signatureData.empty() && !decodeData(record, bytes)) {
        return base64Explanation(record);
    }
    if (makesSignature(record, bytes)) {
        return result(reading, {"signature.made", "the key is complete, and a signature is made"},
                      "signature", signaturePlaceholder, signaturePlaceholder);
    }
    const Ruling unsound = {"signature.none",
                            "the key is complete, but no attempt gives a signature: its base point "
                            "or scalar is unsound"};
    ProjectReading project;
    Explanation explanation =
        refusalBy(engineRefusal(record, bytes, &signingRefusal, project).value_or(unsound),
                  "Signature generation failed");
    explanation.remarks = engineRemarks(reading);
    return explanation;
}

Explanation explainVerifySignature(const RequestReading& reading) {
    const RequestRecord& record = reading.record;
    if (record.signature.empty()) {
        return refusalBy({"request.no-signature",
                          reading.names.signature + " is absent or empty, and verifying needs it"},
                         "'signature' parameter is required");
    }
    if (std::optional<Explanation> refusal = inputRefusal(reading)) {
        return *refusal;
    }
    Data bytes;
    if (!record.signatureData.empty() && !decodeData(record, bytes)) {
        return base64Explanation(record);
    }
    const bool valid = verifies(record, bytes);
    const Ruling ruling = valid ? Ruling{"signature.valid",
                                         "the signature is valid for these bytes under the "
                                         "project's public point"}
                                : invalidity(record, bytes);
    return result(reading, ruling, "valid", valid, valid ? "true" : "false");
}
