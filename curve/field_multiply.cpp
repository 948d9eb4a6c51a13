#include <algorithm>
#include <array>

#include "core/state.h"
#include "core/verify.h"
#include "curve/field.h"
#include "curve/field_163.h"

namespace core {

namespace {

/// Any degree, one bit at a time.
void multiplyBitwise(const FieldElement& a, const FieldElement& b, FieldElement& out) {
    const FieldTemporary shifted(fieldNew(b.degree));
    fieldCopy(b, *shifted);
    fieldClear(out);
    const std::size_t words = fieldWords(a.degree);
    for (unsigned bit = 0; bit < 64; ++bit) {
        for (std::size_t j = 0; j < words; ++j) {
            if ((a.words[j] >> bit & 1) == 0) {
                continue;
            }
            for (std::size_t i = 0; i <= words; ++i) {
                out.words[i + j] ^= shifted->words[i];
            }
        }
        if (bit != 63) {
            fieldShiftLeftOne(*shifted);
        }
    }
}

/// Bits of `a` that one pass of the comb takes.
constexpr unsigned combWidth = 4;
constexpr std::size_t combSize = 1 << combWidth;

}  // namespace

Product163 multiply163(const Words163& a, const Words163& b) {
    // The multiples of b by all polynomials of degree below 4; they fit in three words, and are
    // found faster in four.
    using Multiple = std::array<std::uint64_t, words163 + 1>;
    std::array<Multiple, combSize> multiples;
    multiples[0] = {};
    multiples[1] = {b[0], b[1], b[2]};
    for (std::size_t i = 2; i < combSize; i += 2) {
        const Multiple& half = multiples[i / 2];
        multiples[i] = {half[0] << 1, half[1] << 1 | half[0] >> 63, half[2] << 1 | half[1] >> 63};
        for (std::size_t word = 0; word < words163; ++word) {
            multiples[i + 1][word] = multiples[i][word] ^ b[word];
        }
    }

    // Words by name stay in registers, which takes a third of the time of an array.
    std::uint64_t p0 = 0;
    std::uint64_t p1 = 0;
    std::uint64_t p2 = 0;
    std::uint64_t p3 = 0;
    std::uint64_t p4 = 0;
    std::uint64_t p5 = 0;
    constexpr unsigned rest = 64 - combWidth;
    for (unsigned bit = 64; bit > 0;) {
        bit -= combWidth;
        p5 = p5 << combWidth | p4 >> rest;
        p4 = p4 << combWidth | p3 >> rest;
        p3 = p3 << combWidth | p2 >> rest;
        p2 = p2 << combWidth | p1 >> rest;
        p1 = p1 << combWidth | p0 >> rest;
        p0 <<= combWidth;
        const Multiple& low = multiples[a[0] >> bit & (combSize - 1)];
        const Multiple& middle = multiples[a[1] >> bit & (combSize - 1)];
        const Multiple& high = multiples[a[2] >> bit & (combSize - 1)];
        p0 ^= low[0];
        p1 ^= low[1] ^ middle[0];
        p2 ^= low[2] ^ middle[1] ^ high[0];
        p3 ^= middle[2] ^ high[1];
        p4 ^= high[2];
    }
    return {p0, p1, p2, p3, p4, p5};
}

int fieldMultiply(const FieldElement& a, const FieldElement& b, FieldElement& out) {
    verify(&out != &a && &out != &b && 2 * fieldWords(a.degree) <= fieldWordRoom);
    out.degree = a.degree;
    if (!isReduced163(a) || !isReduced163(b)) {
        multiplyBitwise(a, b, out);
        return 1;
    }
    const Product163 product = multiply163(load163(a), load163(b));
    fieldClear(out);
    std::copy(product.begin(), product.end(), out.words.begin());
    return 1;
}

namespace {

/// The 32 bits of `half` spread apart into 64.
std::uint64_t spread(std::uint64_t half) {
    std::uint64_t bits = 0;
    for (unsigned byte = 0; byte < 4; ++byte) {
        bits |= std::uint64_t{squareSpreadTable[half >> 8 * byte & 0xFF]} << 16 * byte;
    }
    return bits;
}

}  // namespace

void fieldSquare(const FieldElement& a, FieldElement& out) {
    verify(&out != &a && 2 * fieldWords(a.degree) <= fieldWordRoom);
    out.degree = a.degree;
    for (std::size_t i = 0; i < fieldWords(a.degree); ++i) {
        out.words[2 * i] = spread(a.words[i]);
        out.words[2 * i + 1] = spread(a.words[i] >> 32);
    }
}

}  // namespace core
