#include "project/project_key_record.h"

#include <array>
#include <cstring>

#include "core/entry.h"
#include "curve/entry.h"

namespace {

using AttributeScratch = std::array<std::uint8_t, keyAttributeRoom>;

/// Copies the attribute into the zero-filled scratch and tells what it met. A value that is shorter
/// than its bit count counts as filled up with zeros.
KeyReport readAttribute(const ProjectFile& file, ProjectAttributeId id, std::uint32_t bitRoom,
                        AttributeScratch& attributeScratch) {
    if (!file.getAttribute(id, attributeScratch.data(), keyAttributeRoom)) {
        const std::uint32_t size = file.attributeSize(id);
        return size == 0 ? KeyReport{.fault = KeyFault::absent, .attribute = id}
                         : KeyReport{.fault = KeyFault::tooLarge,
                                     .attribute = id,
                                     .found = size,
                                     .allowed = keyAttributeRoom};
    }
    std::uint32_t bits = 0;
    std::memcpy(&bits, attributeScratch.data(), sizeof bits);
    if (id == privateScalarAttribute) {
        bits &= ~core::integerSignBit;
    }
    return {.fault = bits > bitRoom ? KeyFault::tooManyBits : KeyFault::none,
            .attribute = id,
            .found = bits,
            .allowed = bitRoom};
}

KeyReport loadElement(const ProjectFile& file, ProjectAttributeId id, core::FieldElement& e) {
    e = {.capacity = keyElementCapacity};
    AttributeScratch attributeScratch{};
    const KeyReport report = readAttribute(file, id, elementBitRoom, attributeScratch);
    if (report.fault == KeyFault::none) {
        coreEntry::fieldLoad(attributeScratch.data(), e);
    }
    return report;
}

KeyReport loadScalar(const ProjectFile& file, std::optional<core::CoreInteger>& scalar) {
    scalar.reset();
    AttributeScratch attributeScratch{};
    const KeyReport report =
        readAttribute(file, privateScalarAttribute, scalarBitRoom, attributeScratch);
    if (report.fault == KeyFault::none) {
        coreEntry::integerImport(attributeScratch.data(), scalar.emplace());
    }
    return report;
}

void copyElement(const core::FieldElement& source, core::FieldElement* destination) {
    if (destination != nullptr) {
        coreEntry::fieldCopy(source, *destination);
    }
}

}  // namespace

void ProjectKeyRecord::loadFromAttributes(const ProjectFile& file) {
    loading = {loadElement(file, basePointXAttribute, basePointX),
               loadElement(file, basePointYAttribute, basePointY), loadScalar(file, privateScalar),
               loadElement(file, publicPointXAttribute, publicPointX),
               loadElement(file, publicPointYAttribute, publicPointY)};
}

KeyReport ProjectKeyRecord::privateScalarFault() const {
    KeyReport report = loadingOf(privateScalarAttribute);
    if (privateScalar.has_value() && privateScalar->lengthAndSign <= 1 &&
        privateScalar->limbs[0] == 0) {
        report.fault = KeyFault::zeroScalar;
    }
    return report;
}

KeyReport ProjectKeyRecord::publicPointFault() const {
    const KeyReport& x = loadingOf(publicPointXAttribute);
    const KeyReport& y = loadingOf(publicPointYAttribute);
    if (x.fault != KeyFault::none) {
        return x;
    }
    if (y.fault != KeyFault::none) {
        return y;
    }
    if (x.found != y.found) {
        return {.fault = KeyFault::bitsDiffer,
                .attribute = publicPointYAttribute,
                .found = y.found,
                .allowed = x.found};
    }
    if (x.found == 0) {
        return {.fault = KeyFault::noBits, .attribute = publicPointXAttribute};
    }
    return {};
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
