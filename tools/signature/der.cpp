#include "tools/signature/der.h"

#include <algorithm>
#include <iterator>

namespace {

/// Content up to this size has its length in one byte.
constexpr std::size_t longestShortForm = 127;

constexpr std::uint8_t constructedContext = 0xA0;

void append(ByteString& bytes, std::span<const std::uint8_t> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

/// The digits of the value in base 2^digitBits, highest first: one at least.
ByteString digitsOf(std::uint64_t value, unsigned digitBits) {
    ByteString digits;
    do {
        digits.push_back(static_cast<std::uint8_t>(value & ((1U << digitBits) - 1)));
        value >>= digitBits;
    } while (value != 0);
    std::reverse(digits.begin(), digits.end());
    return digits;
}

ByteString encoded(std::uint8_t tag, std::span<const std::uint8_t> content) {
    ByteString bytes{tag};
    const ByteString size = digitsOf(content.size(), 8);
    if (content.size() > longestShortForm) {
        bytes.push_back(static_cast<std::uint8_t>(derLongForm | size.size()));
    }
    append(bytes, size);
    append(bytes, content);
    return bytes;
}

}  // namespace

ByteString derSequence(std::initializer_list<ByteString> values) {
    ByteString content;
    for (const ByteString& value : values) {
        append(content, value);
    }
    return encoded(derSequenceTag, content);
}

ByteString derInteger(std::span<const std::uint8_t> bytes) {
    const auto top = std::find_if(bytes.begin(), bytes.end(), [](auto byte) { return byte != 0; });
    ByteString content;
    if (top == bytes.end() || *top >= 0x80) {
        content.push_back(0);
    }
    std::copy(top, bytes.end(), std::back_inserter(content));
    return encoded(derIntegerTag, content);
}

ByteString derInteger(std::uint32_t value) {
    return derInteger(digitsOf(value, 8));
}

ByteString derObjectIdentifier(std::initializer_list<std::uint32_t> numbers) {
    const std::uint32_t* second = numbers.begin() + 1;
    ByteString content{static_cast<std::uint8_t>(40 * *numbers.begin() + *second)};
    for (const std::uint32_t* number = second + 1; number != numbers.end(); ++number) {
        // Seven bits a byte, and the top bit in all bytes but the last.
        ByteString digits = digitsOf(*number, 7);
        std::for_each(digits.begin(), digits.end() - 1, [](std::uint8_t& digit) { digit |= 0x80; });
        append(content, digits);
    }
    return encoded(derObjectIdentifierTag, content);
}

ByteString derOctetString(std::span<const std::uint8_t> bytes) {
    return encoded(derOctetStringTag, bytes);
}

ByteString derBitString(std::span<const std::uint8_t> bytes) {
    // The first byte tells how many bits of the last one are unused.
    ByteString content{0};
    append(content, bytes);
    return encoded(derBitStringTag, content);
}

ByteString derContext(std::uint8_t number, const ByteString& value) {
    return encoded(static_cast<std::uint8_t>(constructedContext | number), value);
}
