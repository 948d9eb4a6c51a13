#pragma once

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include "curve/field_element.h"
#include "tests/support/big_number.h"

// Field elements as numbers, bit i being the coefficient of z^i, and the arithmetic of these
// numbers as polynomials, by libcrypto.

/// Degree of the field under the curve sect163r2.
inline constexpr std::uint64_t curveDegree = 163;

/// Bytes of `words` in an element of that degree that the core makes for itself.
inline constexpr std::uint64_t curveCapacity = 48;

/// The capacities that elements of that degree have in the program.
inline constexpr std::array<std::uint64_t, 3> programCapacities = {48, 64, 112};

/// z^163 + z^7 + z^6 + z^3 + 1: SEC 2 version 2.0, section 3.2.
BigNumber curvePolynomial();

/// An element of this value with zero words above it. Throws when the capacity has no room for it.
core::FieldElement elementFrom(const BigNumber& value, std::uint64_t degree = curveDegree,
                               std::uint64_t capacity = curveCapacity);

/// The number in the low W words.
BigNumber valueOf(const core::FieldElement& e);

/// The number in all words of the capacity.
BigNumber contentOf(const core::FieldElement& e);

/// An element of which every word, those above the capacity too, holds something from before.
core::FieldElement usedElement(std::uint64_t degree = curveDegree,
                               std::uint64_t capacity = curveCapacity);

/// A polynomial below z^bits: dense, sparse, or short.
BigNumber randomPolynomial(std::uint64_t bits);

/// 0, 1, z, all ones, the highest power, borders of words and other sparse and dense polynomials
/// below z^bits.
std::vector<BigNumber> edgePolynomials(std::uint64_t bits);

/// A polynomial by the exponents of its terms.
BigNumber polynomialOf(const std::vector<std::uint64_t>& exponents);

/// Schoolbook multiplication, unreduced.
BigNumber polynomialProduct(const BigNumber& a, const BigNumber& b);

BigNumber polynomialSum(const BigNumber& a, const BigNumber& b);

/// The remainder of long division, one subtraction of the shifted divisor after the other.
BigNumber longDivisionRemainder(BigNumber dividend, const BigNumber& divisor);

/// GF(2^m) as libcrypto reckons in it.
class FieldJudge {
public:
    explicit FieldJudge(BigNumber polynomial) : polynomial_(std::move(polynomial)) {}

    BigNumber reduce(const BigNumber& a) const;
    BigNumber multiply(const BigNumber& a, const BigNumber& b) const;
    BigNumber square(const BigNumber& a) const;
    BigNumber divide(const BigNumber& a, const BigNumber& b) const;

    const BigNumber& polynomial() const { return polynomial_; }

private:
    BigNumber polynomial_;
};
