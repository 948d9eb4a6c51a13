#pragma once

#include <array>
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

/// Why a key cannot be used.
enum class KeyFault : std::uint8_t {
    none,
    absent,       ///< there is no such attribute
    tooLarge,     ///< it has more bytes than `keyAttributeRoom`, and counts as absent
    tooManyBits,  ///< it states more bits than there is room for, and counts as absent
    zeroScalar,   ///< it has no limb, or one that is zero
    noBits,       ///< it states 0 bits
    bitsDiffer,   ///< 76 states other bits than 75
    degree        ///< it states other bits than the degree of the curve's field
};

/// A fault of a key, and what it is found in.
struct KeyReport {
    KeyFault fault = KeyFault::none;
    ProjectAttributeId attribute = 0;
    std::uint32_t found = 0;    ///< bytes of `tooLarge`, the bits that it states of all others
    std::uint32_t allowed = 0;  ///< the room for them, or what they would have to be
};

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

    /// What each attribute met when it was loaded, from 72 to 76: `none`, with the bits that it
    /// states, or why it counts as absent.
    std::array<KeyReport, 5> loading{{{KeyFault::absent, basePointXAttribute},
                                      {KeyFault::absent, basePointYAttribute},
                                      {KeyFault::absent, privateScalarAttribute},
                                      {KeyFault::absent, publicPointXAttribute},
                                      {KeyFault::absent, publicPointYAttribute}}};

    /// Replaces the record's content by that of the attributes.
    void loadFromAttributes(const ProjectFile& file);

    /// That of `loading` which belongs to this attribute, one of the five.
    const KeyReport& loadingOf(ProjectAttributeId id) const {
        return loading[id - basePointXAttribute];
    }

    /// Why there is no scalar, or only one of no limb or of one zero limb. A longer value counts
    /// even when all its limbs are zero.
    KeyReport privateScalarFault() const;
    bool hasPrivateScalar() const { return privateScalarFault().fault == KeyFault::none; }

    /// Why 75 and 76 were not loaded with one and the same bit count other than 0. That alone makes
    /// a public point here, whatever its words are.
    KeyReport publicPointFault() const;
    bool hasPublicPoint() const { return publicPointFault().fault == KeyFault::none; }

    /// Copies key values to the outputs that are not null. The four coordinates, the base point's
    /// too, are written only if `hasPublicPoint`, the scalar only if `hasPrivateScalar`.
    void copyKeyMaterial(core::FieldElement* x, core::FieldElement* y, core::FieldElement* publicX,
                         core::FieldElement* publicY, core::CoreInteger* scalar) const;
};
