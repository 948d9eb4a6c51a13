#pragma once

#include <cstdint>

namespace core {

// The core's radix-64 text: the alphabet of RFC 4648 with the bits of each 3-byte group taken least
// significant first, so that neither direction agrees with RFC base64. Both routines need a length
// above 0.

/// Writes 4 * ceil(length / 3) characters for `length` bytes, without a terminator, and returns
/// their number.
///
/// Up to 3 bytes behind the input are read and must be readable. When `length` is not a multiple of
/// 3, the high bits of the last character before the padding come from the byte behind the input;
/// decoding drops them.
std::uint64_t coreBase64Encode(const std::uint8_t* input, std::uint64_t length, char* output);

/// Decodes `length` characters and returns the number of bytes that they stand for: three a group,
/// less one for each "=" wherever it stands, modulo 2^64.
///
/// A length that is no multiple of 4 gives 0 and writes nothing. Any byte outside the alphabet
/// counts as value 0. `output` needs three bytes a group and one more, which becomes zero.
std::uint64_t coreBase64Decode(const char* input, std::uint64_t length, std::uint8_t* output);

}  // namespace core
