#include <optional>
#include <string>

#include "tools/counted_text.h"
#include "tools/files/input_file.h"
#include "tools/project/key_reading.h"
#include "tools/project/project_check.h"
#include "tools/project/project_reading.h"
#include "tools/request/fault_reasons.h"
#include "tools/request/quoted_text.h"
#include "tools/rules.h"
#include "tools/signature/signature_reading.h"

namespace {

std::string dataEncodingReason(const RequestRun& run, const RequestWords& words) {
    return words.names.dataEncoding + " is " + quotation(words.dataEncoding) +
           R"(; data are written as "plain" or "base64")" +
           (run.record.signatureFile.empty() ? ""
                                             : ", and this holds for a request with a file too");
}

/// Why the data are no base64. Characters count from 1.
Refusal base64Refusal(const RequestRun& run) {
    const std::string& text = run.record.signatureData;
    const std::size_t place = run.base64.place;
    std::string reason;
    if (run.base64.fault == Base64Fault::length) {
        reason = "the base64 data are not whole groups of four, but " +
                 counted(text.size(), "character");
    } else {
        reason = quotation(text.substr(place, 1)) + ", character " + std::to_string(place + 1) +
                 " of the base64 data, ";
        if (run.base64.fault == Base64Fault::character) {
            reason += "is outside the alphabet of RFC 4648";
        } else {
            reason += text[place] == '=' ? "stands before the last group" : "follows a \"=\"";
        }
    }
    return {ruleOf(run.base64.fault).code, reason};
}

/// Why the engine gave false before it computed anything: for its input, the project or the key.
std::optional<Refusal> engineRefusal(const RequestRun& run) {
    const EngineReport& engine = run.engine;
    if (!run.record.signatureFile.empty()) {
        if (const auto refusal = inputFileRefusal(engine.input)) {
            return Refusal{refusal->code, "the file " +
                                              quotation(beforeZero(run.record.signatureFile)) +
                                              ": " + refusal->text};
        }
    } else if (!engine.hasData) {
        return refusalBy(Verdict::noData, "the data stand for no bytes at all");
    }
    const std::string path = beforeZero(run.record.project);
    if (const auto refusal = loadingRefusal(engine.loading, path)) {
        return Refusal{refusal->code, "the project " + quotation(path) + ": " + refusal->text};
    }
    if (const auto refusal = keyRefusal(engine.key)) {
        return Refusal{refusal->code,
                       "the key of the project " + quotation(path) + ": " + refusal->text};
    }
    return std::nullopt;
}

/// Why verifying gives false.
Refusal invalidity(const RequestRun& run) {
    if (std::optional<Refusal> refusal = engineRefusal(run)) {
        return *refusal;
    }
    const SignatureReading signature = readSignature(run.record.signature);
    if (signature.refusal.has_value()) {
        return *signature.refusal;
    }
    if (const std::optional<std::string> unsound = unsoundKey(run.engine.project)) {
        return {ruleOf(Outcome::unsoundKey).code,
                "the signature is well formed, but signatures under the key of the project " +
                    quotation(beforeZero(run.record.project)) +
                    " cannot be relied on: " + *unsound};
    }
    return {ruleOf(Verdict::mismatch).code, mismatchReason(signature)};
}

/// What made the result.
Refusal resultRuling(const RequestRun& run) {
    if (run.record.mode == RequestMode::generateSignature) {
        return {ruleOf(Outcome::made).code, "the key is complete, and a signature is made"};
    }
    if (run.isValid) {
        return {ruleOf(Verdict::valid).code,
                "the signature is valid for these bytes under the project's public point"};
    }
    return invalidity(run);
}

std::string reason(const RequestRun& run, const RequestWords& words) {
    const RequestNames& names = words.names;
    switch (run.fault) {
        case RequestFault::noMode:
            return words.missingMode;
        case RequestFault::noProject:
            return names.project + " is absent or empty";
        case RequestFault::noSignature:
            return names.signature + " is absent or empty, and verifying needs it";
        case RequestFault::noInput:
            return names.data + " and " + names.file + " are both absent or empty" +
                   words.missingInput;
        case RequestFault::twoInputs:
            return names.data + " and " + names.file + " are both given, and only one may be";
        case RequestFault::dataEncoding:
            return dataEncodingReason(run, words);
        default:
            return "the record asks for an operation that the program does not have";
    }
}

}  // namespace

Refusal recordRuling(const RequestRun& run, const RequestWords& words) {
    switch (run.fault) {
        case RequestFault::none:
            return resultRuling(run);
        case RequestFault::dataBase64:
            return base64Refusal(run);
        case RequestFault::generation:
            return engineRefusal(run).value_or(
                Refusal{ruleOf(Outcome::noSignature).code,
                        "the key is complete, but no attempt gives a signature: its base point or "
                        "scalar is unsound"});
        default:
            return {ruleOf(run.fault).code, reason(run, words)};
    }
}
