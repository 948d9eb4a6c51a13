#include "core/state.h"
#include "curve/field.h"

namespace core {

int fieldMultiply(const FieldElement& a, const FieldElement& b, FieldElement& out) {
    out.degree = a.degree;
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
    out.degree = a.degree;
    for (std::size_t i = 0; i < fieldWords(a.degree); ++i) {
        out.words[2 * i] = spread(a.words[i]);
        out.words[2 * i + 1] = spread(a.words[i] >> 32);
    }
}

}  // namespace core
