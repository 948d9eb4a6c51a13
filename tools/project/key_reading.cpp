#include "tools/project/key_reading.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "curve/sect163r2.h"
#include "project/project_key_record.h"
#include "tools/counted_text.h"
#include "tools/project/attribute_meaning.h"

namespace {

/// Why the value counts as absent, if it does.
std::optional<Refusal> absence(const ProjectFile& project, ProjectAttributeId id,
                               std::uint32_t bitRoom) {
    const std::uint32_t size = project.attributeSize(id);
    if (size == 0) {
        return Refusal{"key.absent", namedAttribute(id) + " is absent"};
    }
    if (size > keyAttributeRoom) {
        return Refusal{"key.too-large", namedAttribute(id) + " has " + counted(size, "byte") +
                                            ", of which at most " +
                                            std::to_string(keyAttributeRoom) +
                                            " are taken, and counts as absent"};
    }
    const std::uint32_t bits = statedBits(project, id);
    if (bits > bitRoom) {
        return Refusal{"key.too-many-bits", namedAttribute(id) + " states " + counted(bits, "bit") +
                                                ", has room for " + std::to_string(bitRoom) +
                                                ", and counts as absent"};
    }
    return std::nullopt;
}

/// Why there is no public point for the program, which looks at the bit counts alone.
Refusal publicPointRefusal(const ProjectFile& project) {
    for (const ProjectAttributeId id : {publicPointXAttribute, publicPointYAttribute}) {
        if (const auto refusal = absence(project, id, elementBitRoom)) {
            return *refusal;
        }
    }
    const std::uint32_t x = statedBits(project, publicPointXAttribute);
    const std::uint32_t y = statedBits(project, publicPointYAttribute);
    if (x == y) {
        return {"key.no-bits", namedAttribute(publicPointXAttribute) + " states 0 bits"};
    }
    return {"key.bits-differ",
            "attributes 75 and 76 (the public point) state different numbers of bits, " +
                std::to_string(x) + " and " + std::to_string(y)};
}

}  // namespace

std::optional<Refusal> coordinateRefusal(const ProjectFile& project, ProjectAttributeId id) {
    if (auto refusal = absence(project, id, elementBitRoom)) {
        return refusal;
    }
    const std::uint32_t bits = statedBits(project, id);
    const std::uint64_t curveDegree = core::sect163r2.domain.degree;
    if (bits != curveDegree) {
        return Refusal{"key.degree", namedAttribute(id) + " states " + counted(bits, "bit") +
                                         " instead of " + std::to_string(curveDegree)};
    }
    return std::nullopt;
}

std::optional<Refusal> scalarRefusal(const ProjectFile& project) {
    ProjectKeyRecord record;
    record.loadFromAttributes(project);
    if (record.hasPrivateScalar()) {
        return std::nullopt;
    }
    return absence(project, privateScalarAttribute, scalarBitRoom)
        .value_or(Refusal{"key.zero-scalar", namedAttribute(privateScalarAttribute) + " is zero"});
}

std::optional<Refusal> signingRefusal(const ProjectFile& project) {
    if (auto refusal = scalarRefusal(project)) {
        return refusal;
    }
    ProjectKeyRecord record;
    record.loadFromAttributes(project);
    if (!record.hasPublicPoint()) {
        return publicPointRefusal(project);
    }
    for (const ProjectAttributeId id : {basePointXAttribute, basePointYAttribute}) {
        if (auto refusal = coordinateRefusal(project, id)) {
            return refusal;
        }
    }
    return std::nullopt;
}

std::optional<Refusal> verifyingRefusal(const ProjectFile& project) {
    ProjectKeyRecord record;
    record.loadFromAttributes(project);
    if (!record.hasPublicPoint()) {
        return publicPointRefusal(project);
    }
    for (const ProjectAttributeId id :
         {basePointXAttribute, basePointYAttribute, publicPointXAttribute, publicPointYAttribute}) {
        if (auto refusal = coordinateRefusal(project, id)) {
            return refusal;
        }
    }
    return std::nullopt;
}
