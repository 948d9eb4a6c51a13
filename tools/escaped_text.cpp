#include "tools/escaped_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace {

constexpr std::uint8_t lowestFurther = 0x80;
constexpr std::uint8_t highestFurther = 0xBF;

/// Characters by their first byte in UTF-8, up to the highest of a range. The range of the second
/// byte leaves out longer forms than needed, surrogates and numbers above U+10FFFF, and control
/// characters here too.
struct Characters {
    std::uint8_t highest;
    std::size_t size;  ///< bytes of each; 0 if they have to be escaped
    std::uint8_t secondLow = lowestFurther;
    std::uint8_t secondHigh = highestFurther;
};

constexpr auto characterRanges = std::to_array<Characters>({
    {0x1F, 0},
    {0x7E, 1},
    {0xC1, 0},
    {0xC2, 2, 0xA0},  // after U+0080 to U+009F, which are control characters
    {0xDF, 2},
    {0xE0, 3, 0xA0},
    {0xEC, 3},
    {0xED, 3, 0x80, 0x9F},
    {0xEF, 3},
    {0xF0, 4, 0x90},
    {0xF3, 4},
    {0xF4, 4, 0x80, 0x8F},
    {0xFF, 0},
});

bool isBetween(char byte, std::uint8_t low, std::uint8_t high) {
    const auto value = static_cast<std::uint8_t>(byte);
    return value >= low && value <= high;
}

/// The bytes of the character at the start of the text, which is not empty; 0 if it has to be
/// escaped.
std::size_t printableSize(std::string_view text) {
    const Characters& row =
        *std::find_if(characterRanges.begin(), characterRanges.end(), [&](const Characters& range) {
            return static_cast<std::uint8_t>(text[0]) <= range.highest;
        });
    if (row.size < 2) {
        return row.size;
    }
    const std::string_view rest = text.substr(1, row.size - 1);
    const bool isWhole =
        rest.size() == row.size - 1 && isBetween(rest[0], row.secondLow, row.secondHigh) &&
        std::all_of(rest.begin(), rest.end(),
                    [](char byte) { return isBetween(byte, lowestFurther, highestFurther); });
    return isWhole ? row.size : 0;
}

}  // namespace

std::string escaped(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t size = printableSize(text);
        if (size == 0) {
            appendEscape(result, text[0]);
        }
        result.append(text.substr(0, size));
        text.remove_prefix(std::max<std::size_t>(size, 1));
    }
    return result;
}

void appendEscape(std::string& result, char byte) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto value = static_cast<std::uint8_t>(byte);
    result.append("\\x").append(1, digits[value >> 4]).append(1, digits[value & 0xF]);
}
