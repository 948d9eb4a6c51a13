#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/bytes.h"

/// Attribute values by id.
using AttributeValues = std::map<std::uint32_t, Bytes>;

/// Of two attributes.
inline const AttributeValues someValues = {{1, {10}}, {2, {20, 21}}};

// Bytes of a project file: of its header, and of each entry of its directory.
inline constexpr std::size_t headerSize = 24;
inline constexpr std::size_t entrySize = 12;

/// An entry of a project file's directory.
struct ImageEntry {
    std::uint32_t id = 0;
    std::uint32_t offset = 0;  ///< from the start of the file
    std::uint32_t size = 0;
};

/// The bytes of a project file, put together by hand; the digest is libcrypto's MD5. What is set
/// deliberately wrong stays wrong.
struct ProjectImage {
    std::string magic = "VLT2";
    std::optional<std::uint32_t> entryCount;  ///< in the place of the directory's true count
    std::vector<ImageEntry> directory;
    Bytes values;                     ///< everything behind the directory
    std::optional<Bytes> bodyDigest;  ///< in the place of the true digest

    Bytes bytes() const;
};

/// An image with these attributes in ascending order, their values one after the other.
ProjectImage projectImage(const AttributeValues& attributes);

/// The bytes of `projectImage`.
Bytes projectBytes(const AttributeValues& attributes);

/// What a sound project file holds, read without the program's own reader. Throws std::out_of_range
/// when the directory points outside the file.
AttributeValues readProjectBytes(const Bytes& bytes);

/// The stored form of a field element: bit count, four bytes of `filler`, words made of the digits.
/// There are as many words as the bit count asks for.
Bytes elementValue(std::uint32_t bits, std::string_view hexadecimalDigits, std::uint8_t filler = 0);

/// The stored form of an integer: bit count and magnitude, least significant byte first.
Bytes integerValue(std::uint32_t bits, const Bytes& magnitude);

/// The stored form of the number with these digits, under its own bit length.
Bytes integerValue(std::string_view hexadecimalDigits);

/// The number's bytes, least significant first, without zero bytes at the top.
Bytes littleEndianBytes(std::string_view hexadecimalDigits);
