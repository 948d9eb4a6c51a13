#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "curve/field_element.h"

namespace core {

// Elements of the field of degree 163 in three words of their own, for the routines that know their
// number at compile time.

inline constexpr std::uint64_t degree163 = 163;
inline constexpr std::size_t words163 = 3;
using Words163 = std::array<std::uint64_t, words163>;

/// A product of two, unreduced: 325 bits.
inline constexpr std::size_t productWords163 = 2 * words163;
using Product163 = std::array<std::uint64_t, productWords163>;

/// Bits of the top word of a reduced element.
inline constexpr unsigned topBits163 = 35;

/// f = z^163 + z^7 + z^6 + z^3 + 1, without its highest term.
inline constexpr std::uint64_t lowTerms163 = 0xC9;

/// Whether `e` is of degree 163 and reduced, with nothing above its three words up to the end of a
/// product.
constexpr bool isReduced163(const FieldElement& e) {
    return e.degree == degree163 && e.words[2] >> topBits163 == 0 &&
           (e.words[3] | e.words[4] | e.words[5]) == 0;
}

constexpr Words163 load163(const FieldElement& e) {
    return {e.words[0], e.words[1], e.words[2]};
}

/// Whether the polynomial, whose degree is that of its field, is f.
constexpr bool isPolynomial163(const FieldElement& polynomial) {
    return polynomial.degree == degree163 &&
           load163(polynomial) == Words163{lowTerms163, 0, std::uint64_t{1} << topBits163};
}

/// a * b for reduced operands: the comb with a window of four bits (Guide to Elliptic Curve
/// Cryptography, algorithm 2.36), without a branch that depends on them. The bits of `a` choose
/// among 16 entries of a table.
Product163 multiply163(const Words163& a, const Words163& b);

}  // namespace core
