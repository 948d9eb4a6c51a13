#pragma once

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
