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

using Product163 = std::array<std::uint64_t, 2 * words163>;

/// Reduced operands of degree 163: the comb with a window of four bits (algorithm 2.36), without a
/// branch that depends on `a`.
Product163 multiply163(const Words163& a, const Words163& b) {
    // The multiples of b by all polynomials of degree below 4; they fit in three words.
    std::array<Words163, combSize> multiples{};
    multiples[1] = b;
    for (std::size_t i = 2; i < combSize; i += 2) {
        const Words163& half = multiples[i / 2];
        multiples[i] = {half[0] << 1, half[1] << 1 | half[0] >> 63, half[2] << 1 | half[1] >> 63};
        for (std::size_t word = 0; word < words163; ++word) {
            multiples[i + 1][word] = multiples[i][word] ^ b[word];
        }
    }

    Product163 product{};
    for (unsigned bit = 64; bit > 0;) {
        bit -= combWidth;
        for (std::size_t i = 2 * words163; i-- > 1;) {
            product[i] = product[i] << combWidth | product[i - 1] >> (64 - combWidth);
        }
        product[0] <<= combWidth;
        for (std::size_t j = 0; j < words163; ++j) {
            const Words163& multiple = multiples[a[j] >> bit & (combSize - 1)];
            for (std::size_t i = 0; i < words163; ++i) {
                product[i + j] ^= multiple[i];
            }
        }
    }
    return product;
}

}  // namespace

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
