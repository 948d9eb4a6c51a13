#pragma once

#include <cstddef>
#include <cstdint>

namespace core {

inline constexpr std::size_t sha256DigestSize = 32;
inline constexpr std::size_t ripemd160DigestSize = 20;
inline constexpr std::size_t md5DigestSize = 16;

// Each hash is one call over one buffer, keeps no state, cannot fail and may run concurrently with
// itself. Nothing is read when `length` is 0, so `data` may then be null. `out` may be part of the
// message: it is written when all of that has been read.
//
// Digests of messages below 4 GiB are the published ones. Of a longer message, 4 GiB are left out
// for each time that they fit: blocks are counted in the low 32 bits of `length`, the remainder is
// taken from behind the blocks that were counted, and the padding tells the whole length in bits.

/// SHA-256 of `length` bytes (FIPS 180-4), written to the 32 bytes at `out`.
///
/// The eight words of the result stand as the machine stores them: against the published digest,
/// each group of four bytes is reversed. The random generator keeps its seed in this form.
void sha256Digest(const std::uint8_t* data, std::uint64_t length, std::uint8_t* out);

/// RIPEMD-160 of `length` bytes (Dobbertin, Bosselaers, Preneel, 1996), written to the 20 bytes at
/// `out` as published.
void ripemd160Digest(const std::uint8_t* data, std::uint64_t length, std::uint8_t* out);

/// MD5 of `length` bytes (RFC 1321), written to the 16 bytes at `out` as published.
void md5Digest(const std::uint8_t* data, std::uint64_t length, std::uint8_t* out);

}  // namespace core
