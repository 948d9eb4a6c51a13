#include "tests/support/project_builder.h"

#include <openssl/md5.h>

#include <algorithm>
#include <bit>

#include "tests/support/hexadecimal.h"

namespace {

void append32(Bytes& bytes, std::uint32_t value) {
    for (unsigned shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

std::uint32_t read32(const Bytes& bytes, std::size_t position) {
    std::uint32_t value = 0;
    for (std::size_t i = 4; i-- > 0;) {
        value = value << 8 | bytes.at(position + i);
    }
    return value;
}

}  // namespace

Bytes ProjectImage::bytes() const {
    Bytes body;
    for (const ImageEntry& entry : directory) {
        append32(body, entry.id);
        append32(body, entry.offset);
        append32(body, entry.size);
    }
    append(body, values);
    Bytes digest(MD5_DIGEST_LENGTH);
    MD5(body.data(), body.size(), digest.data());

    Bytes image(magic.begin(), magic.end());
    append32(image, entryCount.value_or(static_cast<std::uint32_t>(directory.size())));
    append(image, bodyDigest.value_or(digest));
    append(image, body);
    return image;
}

ProjectImage projectImage(const AttributeValues& attributes) {
    ProjectImage image;
    const std::size_t valuesStart = headerSize + entrySize * attributes.size();
    for (const auto& [id, value] : attributes) {
        image.directory.push_back(
            {.id = id,
             .offset = static_cast<std::uint32_t>(valuesStart + image.values.size()),
             .size = static_cast<std::uint32_t>(value.size())});
        append(image.values, value);
    }
    return image;
}

Bytes projectBytes(const AttributeValues& attributes) {
    return projectImage(attributes).bytes();
}

AttributeValues readProjectBytes(const Bytes& bytes) {
    AttributeValues attributes;
    for (std::uint32_t i = 0; i < read32(bytes, 4); ++i) {
        const std::size_t entry = headerSize + entrySize * i;
        Bytes& value = attributes[read32(bytes, entry)];
        for (std::uint32_t byte = 0; byte < read32(bytes, entry + 8); ++byte) {
            value.push_back(bytes.at(read32(bytes, entry + 4) + byte));
        }
    }
    return attributes;
}

Bytes elementValue(std::uint32_t bits, std::string_view hexadecimalDigits, std::uint8_t filler) {
    Bytes words = littleEndianBytes(hexadecimalDigits);
    words.resize((std::size_t{bits} + 31) / 32 * 4);
    Bytes value;
    append32(value, bits);
    append(value, Bytes(4, filler));
    append(value, words);
    return value;
}

Bytes integerValue(std::uint32_t bits, const Bytes& magnitude) {
    Bytes value;
    append32(value, bits);
    append(value, magnitude);
    return value;
}

Bytes integerValue(std::string_view hexadecimalDigits) {
    const Bytes magnitude = littleEndianBytes(hexadecimalDigits);
    const std::size_t bits = magnitude.empty()
                                 ? 0
                                 : 8 * (magnitude.size() - 1) +
                                       static_cast<std::size_t>(std::bit_width(magnitude.back()));
    return integerValue(static_cast<std::uint32_t>(bits), magnitude);
}

Bytes littleEndianBytes(std::string_view hexadecimalDigits) {
    Bytes bytes = bytesFromHexadecimal(hexadecimalDigits);
    std::reverse(bytes.begin(), bytes.end());
    while (!bytes.empty() && bytes.back() == 0) {
        bytes.pop_back();
    }
    return bytes;
}
