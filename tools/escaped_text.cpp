#include "tools/escaped_text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace {

/// The sequences of UTF-8 whose first byte is in one range: the range of the second byte, which
/// leaves out longer forms than needed, surrogates and numbers above U+10FFFF, and control
/// characters here too. Further bytes are from 80 to BF.
struct Sequences {
    std::uint8_t firstLow;
    std::uint8_t firstHigh;
    std::uint8_t secondLow;
    std::uint8_t secondHigh;
    std::size_t size;
};

constexpr std::array<Sequences, 9> printableSequences = {{
    {0xC2, 0xC2, 0xA0, 0xBF, 2},  // behind U+0080 to U+009F, which are control characters
    {0xC3, 0xDF, 0x80, 0xBF, 2},
    {0xE0, 0xE0, 0xA0, 0xBF, 3},
    {0xE1, 0xEC, 0x80, 0xBF, 3},
    {0xED, 0xED, 0x80, 0x9F, 3},
    {0xEE, 0xEF, 0x80, 0xBF, 3},
    {0xF0, 0xF0, 0x90, 0xBF, 4},
    {0xF1, 0xF3, 0x80, 0xBF, 4},
    {0xF4, 0xF4, 0x80, 0x8F, 4},
}};

bool isBetween(char byte, std::uint8_t low, std::uint8_t high) {
    const auto value = static_cast<std::uint8_t>(byte);
    return value >= low && value <= high;
}

/// The bytes of the character at the start of the text, which is not empty; 0 if it has to be
/// escaped.
std::size_t printableSize(std::string_view text) {
    if (isBetween(text[0], ' ', '~')) {
        return 1;
    }
    for (const Sequences& row : printableSequences) {
        if (isBetween(text[0], row.firstLow, row.firstHigh)) {
            const std::string_view rest = text.substr(1, row.size - 1);
            const bool isWhole = rest.size() == row.size - 1 &&
                                 isBetween(rest[0], row.secondLow, row.secondHigh) &&
                                 std::all_of(rest.begin(), rest.end(),
                                             [](char byte) { return isBetween(byte, 0x80, 0xBF); });
            return isWhole ? row.size : 0;
        }
    }
    return 0;
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
