#include "engine/verify.h"

#include <array>
#include <cstddef>
#include <cstring>

#include "core/entry.h"
#include "curve/entry.h"
#include "engine/mapped_file.h"
#include "engine/signature_engine.h"
#include "engine/working_domain.h"
#include "project/project_key_record.h"

namespace {

/// Reads `bytes` bytes as a number. Of its zero limbs at the top one at most is dropped.
void readHalf(const std::uint8_t* half, std::uint64_t bytes, core::CoreInteger& value) {
    std::memcpy(coreEntry::integerLimbs(value), half, bytes);
    value.lengthAndSign = static_cast<std::uint32_t>((bytes + 7) / 8);
    const std::uint64_t bits = coreEntry::integerBitLength(value);
    value.lengthAndSign = static_cast<std::uint32_t>((bits + 63) / 64);
}

}  // namespace

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
    if (!record.hasPublicPoint()) {
        return false;
    }
    core::FieldElement baseX{.capacity = workingElementCapacity};
    core::FieldElement baseY{.capacity = workingElementCapacity};
    core::FieldElement publicX{.capacity = workingElementCapacity};
    core::FieldElement publicY{.capacity = workingElementCapacity};
    record.copyKeyMaterial(&baseX, &baseY, &publicX, &publicY, nullptr);
    for (const core::FieldElement* coordinate : {&baseX, &baseY, &publicX, &publicY}) {
        if (!isOnCurveField(*coordinate)) {
            return false;
        }
    }
    return checkSignatureText(data, length, {.x = &publicX, .y = &publicY},
                              {.x = &baseX, .y = &baseY}, signature);
}

bool checkSignatureText(const std::uint8_t* data, std::uint32_t length,
                        const core::CurvePoint& publicPoint, const core::CurvePoint& base,
                        const char* signature) {
    const std::size_t textLength = std::strlen(signature);
    if (textLength == 0 || textLength > longestSignatureText) {
        return false;
    }
    std::array<std::uint8_t, 136> raw;
    const std::uint64_t count = coreEntry::coreBase64Decode(signature, textLength, raw.data());
    if (count > longestSignature || count % 2 != 0) {
        return false;
    }
    const std::uint64_t half = count / 2;
    core::CoreInteger r{.capacity = signatureLimbs};
    core::CoreInteger s{.capacity = signatureLimbs};
    readHalf(raw.data(), half, r);
    readHalf(raw.data() + half, half, s);
    return coreEntry::curveVerify(workingDomain(base), publicPoint, data, length,
                                  {.r = r, .s = s}) != 0;
}
