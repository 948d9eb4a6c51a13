#pragma once

#include <cstdint>

namespace core {

// The core's radix-64 text. It shares the alphabet with RFC 4648 and nothing else: a group of three
// bytes is a little-endian number, whose lowest six bits are the first character. Neither routine
// may be given a length of 0.

/// Writes 4 * ceil(length / 3) characters for `length` bytes, without a terminator, and returns
/// their number.
///
/// Up to 3 bytes behind the input are read and must be readable. In an incomplete group, the byte
/// that follows the input fills up the character before the padding; decoding drops those bits.
std::uint64_t coreBase64Encode(const std::uint8_t* input, std::uint64_t length, char* output);

/// Decodes `length` characters and returns the number of bytes that they stand for: three a group,
/// less one for each "=" wherever it stands, modulo 2^64.
///
/// A length that is no multiple of 4 gives 0 and writes nothing. Any byte outside the alphabet
/// counts as value 0. `output` needs three bytes a group and one more, which becomes zero.
std::uint64_t coreBase64Decode(const char* input, std::uint64_t length, std::uint8_t* output);

}  // namespace core
