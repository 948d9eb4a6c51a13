#include "frontend/base64_decoder.h"

#include <array>
#include <cstddef>

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint8_t invalid = 255;
constexpr std::size_t groupSize = 4;
constexpr unsigned bitsOfCharacter = 6;

consteval std::array<std::uint8_t, 256> makeValueTable() {
    std::array<std::uint8_t, 256> table{};
    table.fill(invalid);
    for (std::size_t i = 0; i < alphabet.size(); ++i) {
        table[static_cast<std::uint8_t>(alphabet[i])] = static_cast<std::uint8_t>(i);
    }
    // Six zero bits, since only the low six count.
    table[0] = 64;
    return table;
}

constexpr std::array<std::uint8_t, 256> valueTable = makeValueTable();

std::uint8_t valueOf(char character) {
    return valueTable[static_cast<std::uint8_t>(character)];
}

/// Sets the six bits of `value` at bit position `position`, where bit 0 is the top bit of byte 0.
void storeBits(std::uint8_t* bytes, std::size_t position, std::uint8_t value) {
    for (unsigned bit = 0; bit < bitsOfCharacter; ++bit) {
        const std::size_t place = position + bit;
        const unsigned set = value >> (bitsOfCharacter - 1 - bit) & 1U;
        bytes[place / 8] |= static_cast<std::uint8_t>(set << (7 - place % 8));
    }
}

/// Why a character that has no value is refused.
Base64Fault faultOf(char character) {
    return character == '=' ? Base64Fault::padding : Base64Fault::character;
}

Base64Decoding decodeLeadingGroups(std::string_view text, std::vector<std::uint8_t>& out) {
    std::size_t position = 0;
    for (const char character : text) {
        const std::uint8_t value = valueOf(character);
        if (value == invalid) {
            return {.fault = faultOf(character), .place = position / bitsOfCharacter};
        }
        // Up to the byte behind the six bits: after whole groups, one byte more than they hold.
        while (out.size() <= (position + bitsOfCharacter + 1) / 8) {
            out.push_back(0);
        }
        storeBits(out.data(), position, value);
        position += bitsOfCharacter;
    }
    return {};
}

Base64Decoding decodeFinalGroup(std::string_view group, std::vector<std::uint8_t>& out) {
    std::array<std::uint8_t, 3> bytes{};
    std::size_t count = 0;
    for (const char character : group.substr(0, group.find('='))) {
        const std::uint8_t value = valueOf(character);
        if (value == invalid) {
            return {.fault = Base64Fault::character, .place = count};
        }
        storeBits(bytes.data(), count * bitsOfCharacter, value);
        ++count;
    }
    const std::size_t behind = group.find_first_not_of('=', count);
    if (behind != std::string_view::npos) {
        return {.fault = Base64Fault::padding, .place = behind};
    }
    out.insert(out.end(), bytes.begin(),
               bytes.begin() + static_cast<std::ptrdiff_t>(count * bitsOfCharacter / 8));
    return {};
}

}  // namespace

Base64Decoding base64DecodeReporting(std::string_view text, std::vector<std::uint8_t>& out) {
    if (text.empty() || text.size() % groupSize != 0) {
        return {.fault = Base64Fault::length};
    }
    const std::size_t leading = text.size() - groupSize;
    Base64Decoding decoding = decodeLeadingGroups(text.substr(0, leading), out);
    if (decoding.fault == Base64Fault::none) {
        decoding = decodeFinalGroup(text.substr(leading), out);
        decoding.place += leading;
    }
    return decoding;
}

bool base64Decode(std::string_view text, std::vector<std::uint8_t>& out) {
    return base64DecodeReporting(text, out).fault == Base64Fault::none;
}
