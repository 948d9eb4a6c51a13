#include "engine/verify.h"

#include <span>

#include "curve/entry.h"
#include "engine/key_rules.h"
#include "engine/mapped_file.h"
#include "engine/signature_engine.h"
#include "engine/signature_text.h"
#include "engine/working_domain.h"

namespace {

/// What verifying takes of a key.
struct VerifyingKey {
    core::FieldElement baseX{.capacity = workingElementCapacity};
    core::FieldElement baseY{.capacity = workingElementCapacity};
    core::FieldElement publicX{.capacity = workingElementCapacity};
    core::FieldElement publicY{.capacity = workingElementCapacity};

    core::CurvePoint basePoint() { return {.x = &baseX, .y = &baseY}; }
    core::CurvePoint publicPoint() { return {.x = &publicX, .y = &publicY}; }
};

/// Copies it out of a loaded project, unless there is a fault, which `report` tells.
bool copyVerifyingKey(const ProjectFile& project, VerifyingKey& key, KeyReport& report) {
    ProjectKeyRecord record;
    record.loadFromAttributes(project);
    report = verifyingFault(record);
    if (report.fault != KeyFault::none) {
        return false;
    }
    record.copyKeyMaterial(&key.baseX, &key.baseY, &key.publicX, &key.publicY, nullptr);
    return true;
}

}  // namespace

bool verifyData(const char* projectPath, const std::uint8_t* data, std::uint32_t length,
                const char* signature) {
    EngineReport report;
    return verifyData(projectPath, data, length, signature, report);
}

bool verifyData(const char* projectPath, const std::uint8_t* data, std::uint32_t length,
                const char* signature, EngineReport& report) {
    if (data == nullptr || length == 0) {
        return false;
    }
    if (projectPath == nullptr || signature == nullptr) {
        return false;
    }
    report.hasData = true;
    report.loading = report.project.loadReporting(projectPath);
    return report.loading.fault == ProjectFault::none &&
           verifyWithRecord(report.project, data, length, signature, report.key);
}

bool verifyFile(const char* projectPath, const char* filePath, const char* signature) {
    EngineReport report;
    return verifyFile(projectPath, filePath, signature, report);
}

bool verifyFile(const char* projectPath, const char* filePath, const char* signature,
                EngineReport& report) {
    if (projectPath == nullptr || filePath == nullptr || signature == nullptr) {
        return false;
    }
    const std::span<const std::uint8_t> bytes = mapInputFile(report.input, filePath);
    const bool isValid = verifyData(projectPath, bytes.data(),
                                    static_cast<std::uint32_t>(bytes.size()), signature, report);
    return report.input.endWhole() && isValid;
}

bool verifyWithRecord(const ProjectFile& project, const std::uint8_t* data, std::uint32_t length,
                      const char* signature, KeyReport& key) {
    VerifyingKey values;
    return copyVerifyingKey(project, values, key) &&
           checkSignatureText(data, length, values.publicPoint(), values.basePoint(), signature);
}

bool verifyDigestWithRecord(const ProjectFile& project, const std::uint8_t* digest,
                            const char* signature, KeyReport& key) {
    VerifyingKey values;
    if (!copyVerifyingKey(project, values, key)) {
        return false;
    }
    ParsedSignature parsed = parseSignatureText(signature);
    return parsed.fault == SignatureFault::none &&
           coreEntry::curveVerifyDigest(workingDomain(values.basePoint()), values.publicPoint(),
                                        digest, {.r = parsed.r, .s = parsed.s}) != 0;
}

bool checkSignatureText(const std::uint8_t* data, std::uint32_t length,
                        const core::CurvePoint& publicPoint, const core::CurvePoint& base,
                        const char* signature) {
    ParsedSignature parsed = parseSignatureText(signature);
    return parsed.fault == SignatureFault::none &&
           coreEntry::curveVerify(workingDomain(base), publicPoint, data, length,
                                  {.r = parsed.r, .s = parsed.s}) != 0;
}
