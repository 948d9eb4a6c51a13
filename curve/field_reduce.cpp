#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

#include "core/memory.h"
#include "core/verify.h"
#include "curve/field.h"
#include "curve/field_163.h"

namespace core {

namespace {

void reduceDegree163(FieldElement& e) {
    // A product has 325 bits: eleven 32-bit words, and one more to fill the last 64-bit word.
    std::array<std::uint32_t, 12> c;
    std::memcpy(c.data(), e.words.data(), sizeof c);

    static_assert(lowTerms163 == (1 << 7 | 1 << 6 | 1 << 3 | 1));
    // z^163 = z^7 + z^6 + z^3 + 1, and 163 = 5*32 + 3: bit 0 of word i stands for z^(32(i-6)+29)
    // times the right-hand side.
    for (std::size_t i = 10; i >= 6; --i) {
        const std::uint32_t t = c[i];
        c[i - 6] ^= t << 29;
        c[i - 5] ^= t << 4 ^ t << 3 ^ t ^ t >> 3;
        c[i - 4] ^= t >> 28 ^ t >> 29;
    }
    const std::uint32_t t = c[5] >> 3;
    c[0] ^= t << 7 ^ t << 6 ^ t << 3 ^ t;
    c[1] ^= t >> 25 ^ t >> 26;
    c[5] &= 7;
    std::fill(c.begin() + 6, c.begin() + 11, 0);

    std::memcpy(e.words.data(), c.data(), sizeof c);
}

/// One bit at a time from the top, with f shifted by 0 to 63 places at hand.
void reduceBitwise(FieldElement& e, const FieldElement& f) {
    constexpr std::size_t shifts = 64;
    const std::uint64_t degree = e.degree;
    const std::unique_ptr<void, decltype(&coreFree)> block(
        coreAlloc(shifts * sizeof(FieldElement), coreAllocZero), &coreFree);
    auto* const shifted = static_cast<FieldElement*>(block.get());
    std::uninitialized_fill_n(shifted, shifts, f);
    for (std::size_t j = 1; j < shifts; ++j) {
        shifted[j] = shifted[j - 1];
        fieldShiftLeftOne(shifted[j]);
    }

    for (std::uint64_t bit = 2 * degree - 2; degree != 0 && bit >= degree; --bit) {
        if ((e.words[bit / 64] >> bit % 64 & 1) == 0) {
            continue;
        }
        const std::uint64_t quotientBit = bit - degree;
        const std::size_t shift = quotientBit % 64;
        const std::size_t word = quotientBit / 64;
        for (std::size_t i = 0; i < fieldWords(degree + shift); ++i) {
            e.words[word + i] ^= shifted[shift].words[i];
        }
    }
    for (std::size_t i = fieldWords(degree); i < e.capacity / sizeof(std::uint64_t); ++i) {
        e.words[i] = 0;
    }
}

}  // namespace

void fieldReduce(FieldElement& e, const FieldElement& f) {
    verify(e.degree == f.degree && 2 * fieldWords(e.degree) <= fieldWordRoom);
    if (e.degree == degree163) {
        reduceDegree163(e);
    } else {
        reduceBitwise(e, f);
    }
}

}  // namespace core
