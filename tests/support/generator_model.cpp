#include "tests/support/generator_model.h"

#include <openssl/ripemd.h>
#include <openssl/sha.h>

namespace {

std::uint32_t littleEndianWord(const std::uint8_t* bytes) {
    return bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
           std::uint32_t{bytes[3]} << 24;
}

std::uint32_t bigEndianWord(const std::uint8_t* bytes) {
    return bytes[3] | std::uint32_t{bytes[2]} << 8 | std::uint32_t{bytes[1]} << 16 |
           std::uint32_t{bytes[0]} << 24;
}

std::vector<std::uint8_t> littleEndianBytes(std::uint32_t word) {
    std::vector<std::uint8_t> bytes;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<std::uint8_t>(word >> shift));
    }
    return bytes;
}

}  // namespace

GeneratorModel::GeneratorModel(const std::vector<std::uint8_t>& seed) {
    std::array<std::uint8_t, RIPEMD160_DIGEST_LENGTH> first;
    std::array<std::uint8_t, SHA256_DIGEST_LENGTH> second;
    RIPEMD160(seed.data(), seed.size(), first.data());
    SHA256(seed.data(), seed.size(), second.data());
    for (std::size_t i = 0; i < 5; ++i) {
        words_[2 + i] = littleEndianWord(&first[4 * i]);
    }
    for (std::size_t i = 0; i < 8; ++i) {
        words_[7 + i] = bigEndianWord(&second[4 * i]);
    }
}

GeneratorModel::GeneratorModel(std::uint32_t seed) : GeneratorModel(littleEndianBytes(seed)) {}

std::uint32_t GeneratorModel::next() {
    if (++words_[0] == 0) {
        ++words_[1];
    }
    const std::array<std::uint8_t, 64> block = state();
    std::array<std::uint8_t, RIPEMD160_DIGEST_LENGTH> digest;
    RIPEMD160(block.data(), block.size(), digest.data());
    std::uint32_t output = 0;
    for (std::size_t i = 0; i < 5; ++i) {
        const std::uint32_t word = littleEndianWord(&digest[4 * i]);
        words_[2 + words_[0] % 8 + i] ^= word;
        output ^= i % 2 == 0 ? word : 0;
    }
    return output;
}

std::uint64_t GeneratorModel::next64() {
    const std::uint64_t high = next();
    return high << 32 | next();
}

std::vector<std::uint8_t> GeneratorModel::bytes(std::size_t length) {
    std::vector<std::uint8_t> filled;
    while (filled.size() < length) {
        const std::vector<std::uint8_t> word = littleEndianBytes(next());
        filled.insert(filled.end(), word.begin(), word.end());
    }
    filled.resize(length);
    return filled;
}

std::array<std::uint8_t, 64> GeneratorModel::state() const {
    std::array<std::uint8_t, 64> block;
    for (std::size_t i = 0; i < block.size(); ++i) {
        block[i] = static_cast<std::uint8_t>(words_[i / 4] >> 8 * (i % 4));
    }
    return block;
}
