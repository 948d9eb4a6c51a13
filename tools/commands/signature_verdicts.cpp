#include "tools/commands/signature_verdicts.h"

#include "engine/verify.h"
#include "tools/project/project_check.h"
#include "tools/rules.h"
#include "tools/signature/signature_reading.h"

SignatureVerdict SignatureVerdicts::of(const FileDigest& file, const std::string& signature) {
    KeyReport key;
    if (verifyDigestWithRecord(project_, file.digest.data(), signature.c_str(), key)) {
        return {.isValid = true, .ruling = refusalBy(Verdict::valid, "")};
    }
    const SignatureReading reading = readSignature(signature);
    if (reading.refusal.has_value()) {
        return {.isValid = false, .ruling = *reading.refusal};
    }
    if (keyFault().has_value()) {
        return {.isValid = false, .ruling = refusalBy(Outcome::unsoundKey, *keyFault())};
    }
    return {.isValid = false, .ruling = refusalBy(Verdict::mismatch, mismatchReason(reading))};
}

const std::optional<std::string>& SignatureVerdicts::keyFault() {
    if (!keyFault_.has_value()) {
        keyFault_ = unsoundKey(project_);
        if (keyFault_->has_value()) {
            (*keyFault_)->insert(0, path_ + ": ");
        }
    }
    return *keyFault_;
}
