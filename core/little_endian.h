#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace core {

// Words in memory are little-endian on the one platform of this program, so plain copies load and
// store them at any alignment.
static_assert(std::endian::native == std::endian::little);

inline std::uint32_t loadLittle32(const std::uint8_t* bytes) {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

inline void storeLittle32(std::uint8_t* bytes, std::uint32_t word) {
    std::memcpy(bytes, &word, sizeof word);
}

}  // namespace core
