#pragma once

#include <array>
#include <cstdint>
#include <type_traits>

namespace core {

inline constexpr std::uint64_t limbBits = 64;

/// Limbs held by every CoreInteger: 16384 bits, the size of the core's largest temporaries.
inline constexpr std::uint32_t integerLimbRoom = 256;

/// Bit of `lengthAndSign` that marks a negative value.
inline constexpr std::uint32_t integerSignBit = 0x80000000;

/// Integer of any sign in limbs of 64 bits: a plain value, copied by assignment.
///
/// Whoever writes one keeps the limbs above the length zero. A value whose top limb in use is not
/// zero is called normal; results are, where the operation does not say otherwise.
struct CoreInteger {
    std::uint32_t lengthAndSign = 0;  ///< bits 0-30: limbs in use; bit 31: negative; zero is 0
    std::uint32_t capacity = 0;       ///< limbs that integerClear zeroes, at most integerLimbRoom
    std::array<std::uint64_t, integerLimbRoom> limbs{};  ///< least significant first
};

static_assert(std::is_trivially_copyable_v<CoreInteger> && std::is_aggregate_v<CoreInteger>);

/// The constant 1.
inline constexpr CoreInteger integerOne{.lengthAndSign = 1, .capacity = 1, .limbs = {1}};

}  // namespace core
