#pragma once

#include <cstddef>
#include <cstdint>

#include "curve/fast/fast_field.h"
#include "curve/fast/plain_products.h"
#include "curve/sect163r2_values.h"

namespace core {

/// The square root of b, which is b^(2^162).
consteval Words163 rootOfB() {
    Words163 root = load163(sect163r2Values::coefficientB);
    for (unsigned i = 0; i < degree163 - 1; ++i) {
        root = reduce163(PlainProducts::square(root));
    }
    return root;
}

inline constexpr Words163 rootOfB163 = rootOfB();
static_assert(reduce163(PlainProducts::square(rootOfB163)) ==
              load163(sect163r2Values::coefficientB));

/// Exchanges the two where `bit` is 1, without a branch.
inline void exchangeIf(std::uint64_t bit, Words163& a, Words163& b) {
    std::uint64_t mask = 0 - bit;
    // The compiler is not to learn that there are two cases, and to make a branch of them.
    __asm__("" : "+r"(mask));
    for (std::size_t i = 0; i < words163; ++i) {
        const std::uint64_t difference = (a[i] ^ b[i]) & mask;
        a[i] ^= difference;
        b[i] ^= difference;
    }
}

/// x of k * P, for a point P of order n with this x and a k below 2^163; 0 for infinity.
///
/// The ladder on x alone of J. Lopez and R. Dahab (1999; Guide to Elliptic Curve Cryptography,
/// algorithm 3.40), begun at infinity and always 163 steps long: X1 / Z1 is x of m * P and X2 / Z2
/// that of (m + 1) * P, for the m of the bits of k so far, and Z = 0 with X not 0 is infinity.
///
/// The formulas hold for all multiples of P, and none of them but infinity has x = 0. With
/// T = X1 * Z2 and U = X2 * Z1, the sum of both has Z = (T + U)^2 and X = x * Z + T * U, because
/// their difference is P. If one of them is infinity, T or U is 0 and the other is not: then
/// X = x * Z, and the sum is P or -P. If the sum is infinity, T = U, neither is 0, and Z is 0 while
/// X is not. The double has X = X1^4 + b * Z1^4 and Z = X1^2 * Z1^2: infinity for infinity, and for
/// nothing else, since X1 is not 0.
///
/// For k from 1 to n - 1, `pointMultiply` gives the same. Behind each doubling to 2m * P, for the m
/// of the digits so far, it may add P or -P, and `pointAdd` is the group law wherever the two have
/// different x. They have one x only if 2m is n - 1 or n + 1: the digits that follow change 2^j * m
/// by less than 2^j, so that no 2m is above n + 1. Were the digit d that is added not the last, k
/// would be at least 2 * (2m + d) - 1, above n. So k = 2m + d with d = +-1, and below n only for
/// 2m = n - 1 and d = -1: -P is added to -P, in the same words, and `pointAdd` doubles it, rightly.
template <class Products>
Words163 ladderMultipleX(const Words163& k, const Words163& x) {
    using Field = FastField<Products>;
    Words163 X1 = {1};
    Words163 Z1 = {};
    Words163 X2 = x;
    Words163 Z2 = {1};
    std::uint64_t exchanged = 0;
    for (std::size_t i = degree163; i-- > 0;) {
        const std::uint64_t bit = k[i / 64] >> i % 64 & 1;
        exchangeIf(bit ^ exchanged, X1, X2);
        exchangeIf(bit ^ exchanged, Z1, Z2);
        exchanged = bit;

        const Words163 T = Field::product(X1, Z2);
        const Words163 U = Field::product(X2, Z1);
        Z2 = Field::square(add163(T, U));
        X2 = Field::sumOfProducts(x, Z2, T, U);

        const Words163 xSquared = Field::square(X1);
        const Words163 zSquared = Field::square(Z1);
        X1 = Field::square(add163(xSquared, Field::product(rootOfB163, zSquared)));
        Z1 = Field::product(xSquared, zSquared);
    }
    exchangeIf(exchanged, X1, X2);
    exchangeIf(exchanged, Z1, Z2);
    return Field::product(X1, Field::inverse(Z1));
}

}  // namespace core
