#pragma once

#include <algorithm>
#include <cstdint>

#include "core/core_integer.h"

namespace core {

// What the integer family shares below its signed operations.

__extension__ typedef unsigned __int128 DoubleLimb;  // NOLINT(modernize-use-using)

inline std::uint32_t integerLimbCount(const CoreInteger& value) {
    return value.lengthAndSign & ~integerSignBit;
}

inline bool integerIsNegative(const CoreInteger& value) {
    return (value.lengthAndSign & integerSignBit) != 0;
}

/// What every operand keeps: a length within the room, and zero limbs above it.
inline bool integerIsSound(const CoreInteger& value) {
    const std::uint32_t limbs = integerLimbCount(value);
    return limbs <= integerLimbRoom && std::all_of(value.limbs.begin() + limbs, value.limbs.end(),
                                                   [](std::uint64_t limb) { return limb == 0; });
}

/// Marks a non-zero value as negative; zero has no sign.
void integerMarkNegative(CoreInteger& value);

/// Shortens the length, at most `limbs`, to the highest non-zero limb. The sign of a value that is
/// not zero stays.
void integerTrim(CoreInteger& value, std::uint32_t limbs);

/// Compares |a| and |b|: first the lengths as they stand, then the limbs.
int compareMagnitudes(const CoreInteger& a, const CoreInteger& b);

/// result := |a| + |b|.
void addMagnitudes(const CoreInteger& a, const CoreInteger& b, CoreInteger& result);

/// result := |a| - |b|, negative when |b| is the greater.
void subtractMagnitudes(const CoreInteger& a, const CoreInteger& b, CoreInteger& result);

}  // namespace core
