#pragma once

#include <cstddef>
#include <cstdint>

#include "curve/field_163.h"

namespace core {

constexpr Words163 add163(const Words163& a, const Words163& b) {
    return {a[0] ^ b[0], a[1] ^ b[1], a[2] ^ b[2]};
}

constexpr bool isZero163(const Words163& a) {
    return (a[0] | a[1] | a[2]) == 0;
}

/// A product modulo f, without a branch.
constexpr Words163 reduce163(Product163 c) {
    // 192 = 163 + 29, so z^192 = z^29 * (z^7 + z^6 + z^3 + 1): what is shifted out of one word
    // belongs to the next.
    for (std::size_t i = productWords163 - 1; i >= words163; --i) {
        const std::uint64_t t = c[i];
        c[i - 3] ^= t << 36 ^ t << 35 ^ t << 32 ^ t << 29;
        c[i - 2] ^= t >> 28 ^ t >> 29 ^ t >> 32 ^ t >> 35;
    }
    const std::uint64_t t = c[2] >> topBits163;
    static_assert(lowTerms163 == (1 << 7 | 1 << 6 | 1 << 3 | 1));
    return {c[0] ^ t << 7 ^ t << 6 ^ t << 3 ^ t, c[1],
            c[2] & ((std::uint64_t{1} << topBits163) - 1)};
}

/// GF(2^163) in three words by value, all reduced. `Products` gives the unreduced products:
/// `multiply(a, b)` and `square(a)`. Beside what these do, nothing has a branch or an address
/// that depends on an operand.
template <class Products>
struct FastField {
    static Words163 product(const Words163& a, const Words163& b) {
        return reduce163(Products::multiply(a, b));
    }

    static Words163 square(const Words163& a) { return reduce163(Products::square(a)); }

    /// a * b + c * d, reduced once.
    static Words163 sumOfProducts(const Words163& a, const Words163& b, const Words163& c,
                                  const Words163& d) {
        Product163 sum = Products::multiply(a, b);
        const Product163 second = Products::multiply(c, d);
        for (std::size_t i = 0; i < sum.size(); ++i) {
            sum[i] ^= second[i];
        }
        return reduce163(sum);
    }

    /// a^(2^count).
    static Words163 squareTimes(Words163 a, unsigned count) {
        for (unsigned i = 0; i < count; ++i) {
            a = square(a);
        }
        return a;
    }

    /// 1 / a, and 0 for 0: a^(2^163 - 2), by T. Itoh and S. Tsujii (1988).
    static Words163 inverse(const Words163& a) {
        // With p(k) = a^(2^k - 1): p(j + k) = p(j)^(2^k) * p(k).
        const Words163 p2 = product(square(a), a);
        const Words163 p4 = product(squareTimes(p2, 2), p2);
        const Words163 p5 = product(square(p4), a);
        const Words163 p10 = product(squareTimes(p5, 5), p5);
        const Words163 p20 = product(squareTimes(p10, 10), p10);
        const Words163 p40 = product(squareTimes(p20, 20), p20);
        const Words163 p80 = product(squareTimes(p40, 40), p40);
        const Words163 p81 = product(square(p80), a);
        const Words163 p162 = product(squareTimes(p81, 81), p81);
        return square(p162);
    }
};

}  // namespace core
