#include "engine/verify.h"

#include <span>

#include "curve/entry.h"
#include "engine/key_rules.h"
#include "engine/mapped_file.h"
#include "engine/signature_engine.h"
#include "engine/signature_text.h"
#include "engine/working_domain.h"

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
    ProjectKeyRecord record;
    record.loadFromAttributes(project);
    key = verifyingFault(record);
    if (key.fault != KeyFault::none) {
        return false;
    }
    core::FieldElement baseX{.capacity = workingElementCapacity};
    core::FieldElement baseY{.capacity = workingElementCapacity};
    core::FieldElement publicX{.capacity = workingElementCapacity};
    core::FieldElement publicY{.capacity = workingElementCapacity};
    record.copyKeyMaterial(&baseX, &baseY, &publicX, &publicY, nullptr);
    return checkSignatureText(data, length, {.x = &publicX, .y = &publicY},
                              {.x = &baseX, .y = &baseY}, signature);
}

bool checkSignatureText(const std::uint8_t* data, std::uint32_t length,
                        const core::CurvePoint& publicPoint, const core::CurvePoint& base,
                        const char* signature) {
    ParsedSignature parsed = parseSignatureText(signature);
    return parsed.fault == SignatureFault::none &&
           coreEntry::curveVerify(workingDomain(base), publicPoint, data, length,
                                  {.r = parsed.r, .s = parsed.s}) != 0;
}
