#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace core {

/// Words held by every FieldElement: 112 bytes, the largest capacity that the program lays out.
/// Products of elements fit for degrees up to 448.
inline constexpr std::size_t fieldWordRoom = 14;

/// Polynomial over GF(2) that stands for an element of GF(2^m): bit i of `words`, counted through
/// the words, belongs to z^i. A plain value.
///
/// Reduced means of a degree below m, in W = ceil(m / 64) words. Products and squares come out
/// twice as long.
struct FieldElement {
    std::uint64_t degree = 0;                          ///< m; 163 throughout the program
    std::uint64_t capacity = 0;                        ///< bytes of `words` in use, a multiple of 8
    std::array<std::uint64_t, fieldWordRoom> words{};  ///< least significant first
};

static_assert(std::is_trivially_copyable_v<FieldElement> && std::is_aggregate_v<FieldElement>);

}  // namespace core
