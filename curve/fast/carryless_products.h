#pragma once

#if defined(__x86_64__)
#include <emmintrin.h>
#include <wmmintrin.h>
#endif

#include <cstdint>

#include "curve/fast/plain_products.h"
#include "curve/field_163.h"

namespace core {

#if defined(__x86_64__)

/// Products by the processor's carry-less multiplication, whose time does not depend on its
/// operands. A source that includes this is compiled with -mpclmul, and what it holds may run only
/// where `hasCarrylessMultiplication`.
struct CarrylessProducts {
    static Product163 multiply(const Words163& a, const Words163& b) {
        // Three terms by Karatsuba: six products of words for nine.
        const __m128i low = wordProduct(a[0], b[0]);
        const __m128i middle = wordProduct(a[1], b[1]);
        const __m128i high = wordProduct(a[2], b[2]);
        const __m128i ends = _mm_xor_si128(low, high);
        const __m128i at64 = sum(wordProduct(a[0] ^ a[1], b[0] ^ b[1]), _mm_xor_si128(low, middle));
        const __m128i at128 = sum(wordProduct(a[0] ^ a[2], b[0] ^ b[2]), sum(ends, middle));
        const __m128i at192 =
            sum(wordProduct(a[1] ^ a[2], b[1] ^ b[2]), _mm_xor_si128(middle, high));
        return joined(sum(low, _mm_slli_si128(at64, 8)),
                      sum(at128, sum(_mm_srli_si128(at64, 8), _mm_slli_si128(at192, 8))),
                      sum(high, _mm_srli_si128(at192, 8)));
    }

    static Product163 square(const Words163& a) {
        return joined(wordProduct(a[0], a[0]), wordProduct(a[1], a[1]), wordProduct(a[2], a[2]));
    }

private:
    static __m128i sum(__m128i a, __m128i b) { return _mm_xor_si128(a, b); }

    static __m128i wordProduct(std::uint64_t a, std::uint64_t b) {
        return _mm_clmulepi64_si128(_mm_cvtsi64_si128(static_cast<long long>(a)),
                                    _mm_cvtsi64_si128(static_cast<long long>(b)), 0);
    }

    static std::uint64_t lowWord(__m128i pair) {
        return static_cast<std::uint64_t>(_mm_cvtsi128_si64(pair));
    }

    static Product163 joined(__m128i low, __m128i middle, __m128i high) {
        return {lowWord(low),    lowWord(_mm_srli_si128(low, 8)),
                lowWord(middle), lowWord(_mm_srli_si128(middle, 8)),
                lowWord(high),   lowWord(_mm_srli_si128(high, 8))};
    }
};

#else
using CarrylessProducts = PlainProducts;
#endif

}  // namespace core
