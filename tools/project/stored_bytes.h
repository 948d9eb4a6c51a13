#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

// The bytes of a project file.

using Bytes = std::vector<std::uint8_t>;

/// Bytes of a coordinate: a header of eight, and 163 bits in 32-bit words.
inline constexpr std::size_t storedCoordinateSize = 32;

inline void appendBytes(Bytes& bytes, const void* data, std::size_t size) {
    bytes.resize(bytes.size() + size);
    std::memcpy(bytes.data() + bytes.size() - size, data, size);
}

/// The low 32 bits of the value, little-endian.
inline void appendWord(Bytes& bytes, std::uint64_t value) {
    const auto word = static_cast<std::uint32_t>(value);
    appendBytes(bytes, &word, sizeof word);
}
