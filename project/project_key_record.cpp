#include "project/project_key_record.h"

#include <array>
#include <cstring>

#include "core/entry.h"
#include "curve/entry.h"

namespace {

using AttributeScratch = std::array<std::uint8_t, keyAttributeRoom>;

/// The bit count at the start of both value forms; bit 31 of an integer's is no part of it.
std::uint32_t storedBitCount(const AttributeScratch& attributeScratch) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, attributeScratch.data(), sizeof bits);
    return bits;
}

void loadElement(const ProjectFile& file, ProjectAttributeId id, core::FieldElement& e) {
    AttributeScratch attributeScratch{};
    if (file.getAttribute(id, attributeScratch.data(), attributeScratch.size()) &&
        storedBitCount(attributeScratch) <= elementBitRoom) {
        coreEntry::fieldLoad(attributeScratch.data(), e);
    }
}

void copyElement(const core::FieldElement& source, core::FieldElement* destination) {
    if (destination != nullptr) {
        coreEntry::fieldCopy(source, *destination);
    }
}

}  // namespace

void ProjectKeyRecord::loadFromAttributes(const ProjectFile& file) {
    *this = {};
    loadElement(file, basePointXAttribute, basePointX);
    loadElement(file, basePointYAttribute, basePointY);
    loadElement(file, publicPointXAttribute, publicPointX);
    loadElement(file, publicPointYAttribute, publicPointY);

    AttributeScratch attributeScratch{};
    if (file.getAttribute(privateScalarAttribute, attributeScratch.data(),
                          attributeScratch.size()) &&
        (storedBitCount(attributeScratch) & ~core::integerSignBit) <= scalarBitRoom) {
        coreEntry::integerImport(attributeScratch.data(), privateScalar.emplace());
    }
}

bool ProjectKeyRecord::hasPrivateScalar() const {
    if (!privateScalar.has_value() || privateScalar->lengthAndSign == 0) {
        return false;
    }
    return privateScalar->lengthAndSign != 1 || privateScalar->limbs[0] != 0;
}

bool ProjectKeyRecord::hasPublicPoint() const {
    return publicPointX.degree != 0 && publicPointX.degree == publicPointY.degree;
}

void ProjectKeyRecord::copyKeyMaterial(core::FieldElement* x, core::FieldElement* y,
                                       core::FieldElement* publicX, core::FieldElement* publicY,
                                       core::CoreInteger* scalar) const {
    if (hasPublicPoint()) {
        copyElement(basePointX, x);
        copyElement(basePointY, y);
        copyElement(publicPointX, publicX);
        copyElement(publicPointY, publicY);
    }
    if (hasPrivateScalar() && scalar != nullptr) {
        coreEntry::integerCopy(*privateScalar, *scalar);
    }
}
