#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "core/core_integer.h"

// Numbers as other software writes them: bytes with the most significant one first.

using ByteString = std::vector<std::uint8_t>;

/// The low `size` bytes of the words, which stand least significant first; zeros above the words.
ByteString bigEndianBytes(std::span<const std::uint64_t> words, std::size_t size);

/// The number of these bytes, as a normal integer; at most as many bytes as `capacity` limbs hold.
core::CoreInteger integerFromBytes(std::span<const std::uint8_t> bytes, std::uint32_t capacity);

/// Two lower-case digits for each byte.
std::string hexadecimalDigits(std::span<const std::uint8_t> bytes);
