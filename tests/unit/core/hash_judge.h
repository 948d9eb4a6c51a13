#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

/// One of the core's hashes beside libcrypto's.
struct HashCase {
    const char* name;
    std::size_t digestSize;
    const char* vectorFile;
    bool bigEndianLength;  ///< order of the bit count in the padding
    bool reversedWords;    ///< digests of the core have each group of four bytes reversed
    void (*digest)(const std::uint8_t* data, std::uint64_t length, std::uint8_t* out);
    unsigned char* (*judge)(const unsigned char* data, std::size_t length, unsigned char* out);
    /// libcrypto's block function over a padded message, with the published order of bytes.
    std::string (*runBlocks)(const std::vector<std::uint8_t>& padded);
};

inline std::ostream& operator<<(std::ostream& stream, const HashCase& hash) {
    return stream << hash.name;
}

extern const HashCase sha256Case;
extern const HashCase ripemd160Case;
extern const HashCase md5Case;

/// The core's digest as published, in lower-case digits. Fails the test when bytes behind the
/// digest are written.
std::string coreDigest(const HashCase& hash, const std::uint8_t* data, std::uint64_t length);

/// libcrypto's digest in lower-case digits.
std::string judgeDigest(const HashCase& hash, const std::uint8_t* data, std::size_t length);

/// libcrypto's blocks over the first `length` mod 2^32 bytes of `data` and a padding that states
/// all of `length`, in lower-case digits.
std::string judgeLongDigest(const HashCase& hash, const std::uint8_t* data, std::uint64_t length);

/// Each group of four bytes turned around.
std::vector<std::uint8_t> withWordsReversed(std::vector<std::uint8_t> bytes);
