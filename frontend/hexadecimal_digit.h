#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <system_error>

/// The value of a hexadecimal digit of either case; nothing for another character.
inline std::optional<std::uint8_t> hexadecimalValue(char character) {
    std::uint8_t value = 0;
    const bool isDigit = std::from_chars(&character, &character + 1, value, 16).ec == std::errc();
    return isDigit ? std::optional(value) : std::nullopt;
}
