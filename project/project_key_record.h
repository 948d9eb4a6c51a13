#pragma once

#include <cstdint>
#include <optional>

#include "core/core_integer.h"
#include "curve/field_element.h"
#include "project/project_file.h"

// The attributes of the signature key.
inline constexpr ProjectAttributeId basePointXAttribute = 72;
inline constexpr ProjectAttributeId basePointYAttribute = 73;
inline constexpr ProjectAttributeId privateScalarAttribute = 74;
inline constexpr ProjectAttributeId publicPointXAttribute = 75;
inline constexpr ProjectAttributeId publicPointYAttribute = 76;

/// Bytes of `words` in use in the record's elements: 512 bits.
inline constexpr std::uint64_t keyElementCapacity = 64;

/// Bytes of the longest attribute that is read; a longer one counts as absent.
inline constexpr std::uint32_t keyAttributeRoom = 296;

/// Bits that there is room for; an attribute that claims more counts as absent.
inline constexpr std::uint32_t elementBitRoom = 8 * keyElementCapacity;
inline constexpr std::uint32_t scalarBitRoom = 5 * 64;

/// The signature key of one project, unpacked from its attributes; nothing in it is checked.
///
/// An element is empty, with a degree of 0, and the scalar absent, when the attribute is absent,
/// has more than `keyAttributeRoom` bytes, or claims more bits than there is room for.
struct ProjectKeyRecord {
    core::FieldElement basePointX{.capacity = keyElementCapacity};
    core::FieldElement basePointY{.capacity = keyElementCapacity};
    core::FieldElement publicPointX{.capacity = keyElementCapacity};
    core::FieldElement publicPointY{.capacity = keyElementCapacity};
    std::optional<core::CoreInteger> privateScalar;  ///< its `capacity` word stays 0

    /// Replaces the record's content by that of the attributes.
    void loadFromAttributes(const ProjectFile& file);

    /// Whether there is a scalar other than one of no limb or of one zero limb. A longer value
    /// counts even when all its limbs are zero.
    bool hasPrivateScalar() const;

    /// Whether 75 and 76 were loaded with one and the same bit count. That alone makes a public
    /// point here, zero bits or not.
    bool hasPublicPoint() const;

    /// Copies key values to the outputs that are not null. The four coordinates, the base point's
    /// too, are written only if `hasPublicPoint`, the scalar only if `hasPrivateScalar`.
    void copyKeyMaterial(core::FieldElement* x, core::FieldElement* y, core::FieldElement* publicX,
                         core::FieldElement* publicY, core::CoreInteger* scalar) const;
};
