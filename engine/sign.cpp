#include "engine/sign.h"

#include <algorithm>
#include <span>

#include "curve/entry.h"
#include "engine/key_rules.h"
#include "engine/mapped_file.h"
#include "engine/signature_engine.h"
#include "engine/signature_text.h"
#include "engine/working_domain.h"

namespace {

/// Limbs of the scalar's copy.
constexpr std::uint32_t scalarLimbs = 15;

/// What signing takes of a key.
struct SigningKey {
    core::FieldElement x{.capacity = workingElementCapacity};
    core::FieldElement y{.capacity = workingElementCapacity};
    core::CoreInteger scalar{.capacity = scalarLimbs};

    core::CurvePoint basePoint() { return {.x = &x, .y = &y}; }
};

/// Copies it out of a loaded project, unless there is a fault, which `report` tells.
bool copySigningKey(const ProjectFile& project, SigningKey& key, KeyReport& report) {
    ProjectKeyRecord record;
    record.loadFromAttributes(project);
    report = signingFault(record);
    if (report.fault != KeyFault::none) {
        return false;
    }
    record.copyKeyMaterial(&key.x, &key.y, nullptr, nullptr, &key.scalar);
    return true;
}

}  // namespace

bool signData(const char* projectPath, const std::uint8_t* data, std::uint32_t length,
              char* signature) {
    EngineReport report;
    return signData(projectPath, data, length, signature, report);
}

bool signData(const char* projectPath, const std::uint8_t* data, std::uint32_t length,
              char* signature, EngineReport& report) {
    if (data == nullptr || length == 0) {
        return false;
    }
    if (projectPath == nullptr || signature == nullptr) {
        return false;
    }
    report.hasData = true;
    report.loading = report.project.loadReporting(projectPath);
    return report.loading.fault == ProjectFault::none &&
           signWithRecord(report.project, data, length, signature, report.key);
}

bool signFile(const char* projectPath, const char* filePath, char* signature) {
    EngineReport report;
    return signFile(projectPath, filePath, signature, report);
}

bool signFile(const char* projectPath, const char* filePath, char* signature,
              EngineReport& report) {
    if (projectPath == nullptr || filePath == nullptr || signature == nullptr) {
        return false;
    }
    const std::span<const std::uint8_t> bytes = mapInputFile(report.input, filePath);
    if (!signData(projectPath, bytes.data(), static_cast<std::uint32_t>(bytes.size()), signature,
                  report)) {
        return false;
    }
    if (!report.input.endWhole()) {
        std::fill_n(signature, signatureBufferSize, '\0');
        return false;
    }
    return true;
}

bool signWithRecord(const ProjectFile& project, const std::uint8_t* data, std::uint32_t length,
                    char* signature, KeyReport& key) {
    SigningKey values;
    if (!copySigningKey(project, values, key)) {
        return false;
    }
    renderSignature(data, length, values.scalar, values.basePoint(), signature);
    return signature[0] != '\0';
}

bool signDigestWithRecord(const ProjectFile& project, const std::uint8_t* digest, char* signature,
                          KeyReport& key) {
    SigningKey values;
    if (!copySigningKey(project, values, key)) {
        return false;
    }
    core::CoreInteger r{.capacity = signatureLimbs};
    core::CoreInteger s{.capacity = signatureLimbs};
    coreEntry::curveSignDigest(workingDomain(values.basePoint()), values.scalar, digest,
                               {.r = r, .s = s});
    return writeSignatureText(r, s, signature) != 0;
}

void renderSignature(const std::uint8_t* data, std::uint32_t length,
                     const core::CoreInteger& scalar, const core::CurvePoint& point,
                     char* signature) {
    core::CoreInteger r{.capacity = signatureLimbs};
    core::CoreInteger s{.capacity = signatureLimbs};
    coreEntry::curveSign(workingDomain(point), scalar, data, length, {.r = r, .s = s});
    writeSignatureText(r, s, signature);
}
