#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

/// The value of a hexadecimal digit of either case; nothing for another character.
inline std::optional<std::uint8_t> hexadecimalValue(char character) {
    constexpr std::string_view digits = "0123456789abcdef";
    const bool isUpperCase = character >= 'A' && character <= 'F';
    const std::size_t value =
        digits.find(isUpperCase ? static_cast<char>(character - 'A' + 'a') : character);
    if (value == std::string_view::npos) {
        return std::nullopt;
    }
    return static_cast<std::uint8_t>(value);
}
