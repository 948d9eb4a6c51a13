#include <algorithm>

#include "core/host.h"
#include "core/integer.h"
#include "core/integer_magnitude.h"
#include "core/little_endian.h"
#include "curve/field.h"

namespace core {

namespace {

/// Replaces the 32-bit word `index` of the element.
void storeHalfWord(FieldElement& e, std::size_t index, std::uint32_t half) {
    const unsigned position = index % 2 * 32;
    std::uint64_t& word = e.words[index / 2];
    word &= ~(std::uint64_t{0xFFFFFFFF} << position);
    word |= std::uint64_t{half} << position;
}

std::uint32_t halfWord(const FieldElement& e, std::size_t index) {
    return static_cast<std::uint32_t>(e.words[index / 2] >> index % 2 * 32);
}

std::size_t halfWords(std::uint64_t bits) {
    return static_cast<std::size_t>((bits + 31) / 32);
}

}  // namespace

void fieldRandom(FieldElement& e) {
    const std::size_t count = halfWords(e.degree);
    hostRandomBytes(e.words.data(), static_cast<std::uint32_t>(count * sizeof(std::uint32_t)));
    const unsigned topBits = e.degree % 32;
    if (topBits != 0) {
        storeHalfWord(e, count - 1, halfWord(e, count - 1) >> (32 - topBits));
    }
}

void fieldToInteger(const FieldElement& e, CoreInteger& integer) {
    integerClear(integer);
    const std::size_t words = fieldWords(e.degree);
    integer.lengthAndSign = static_cast<std::uint32_t>(words);
    std::copy_n(e.words.begin(), words, integer.limbs.begin());
}

void fieldFromInteger(const CoreInteger& integer, FieldElement& e) {
    fieldClear(e);
    std::copy_n(integer.limbs.begin(), integerLimbCount(integer), e.words.begin());
}

void fieldLoad(const std::uint8_t* stored, FieldElement& e) {
    constexpr std::size_t headerSize = 8;
    e.degree = loadLittle32(stored);
    for (std::size_t i = 0; i < halfWords(e.degree); ++i) {
        storeHalfWord(e, i, loadLittle32(stored + headerSize + sizeof(std::uint32_t) * i));
    }
}

}  // namespace core
