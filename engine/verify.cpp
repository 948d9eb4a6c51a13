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
    if (data == nullptr || length == 0) {
        return false;
    }
    if (projectPath == nullptr || signature == nullptr) {
        return false;
    }
    ProjectFile project;
    return project.load(projectPath) && verifyWithRecord(project, data, length, signature);
}

bool verifyFile(const char* projectPath, const char* filePath, const char* signature) {
    if (projectPath == nullptr || filePath == nullptr || signature == nullptr) {
        return false;
    }
    MappedInput input;
    const std::span<const std::uint8_t> bytes = mapInputFile(input, filePath);
    return verifyData(projectPath, bytes.data(), static_cast<std::uint32_t>(bytes.size()),
                      signature) &&
           input.isWhole();
}

bool verifyWithRecord(const ProjectFile& project, const std::uint8_t* data, std::uint32_t length,
                      const char* signature) {
    ProjectKeyRecord record;
    record.loadFromAttributes(project);
    if (verifyingFault(record).fault != KeyFault::none) {
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
