#include "tools/signature/byte_string.h"

#include <string_view>

#include "core/integer.h"

namespace {

constexpr std::size_t wordBytes = 8;

}  // namespace

ByteString bigEndianBytes(std::span<const std::uint64_t> words, std::size_t size) {
    ByteString bytes(size);
    for (std::size_t i = 0; i < size && i < wordBytes * words.size(); ++i) {
        bytes[size - 1 - i] =
            static_cast<std::uint8_t>(words[i / wordBytes] >> 8 * (i % wordBytes));
    }
    return bytes;
}

core::CoreInteger integerFromBytes(std::span<const std::uint8_t> bytes, std::uint32_t capacity) {
    core::CoreInteger value{.lengthAndSign = capacity, .capacity = capacity};
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const std::uint64_t byte = bytes[bytes.size() - 1 - i];
        value.limbs[i / wordBytes] |= byte << 8 * (i % wordBytes);
    }
    core::integerNormalise(value);
    return value;
}

std::string hexadecimalDigits(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : bytes) {
        text.push_back(digits[byte >> 4]);
        text.push_back(digits[byte & 15]);
    }
    return text;
}
