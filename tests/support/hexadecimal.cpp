#include "tests/support/hexadecimal.h"

#include <charconv>
#include <stdexcept>

std::vector<std::uint8_t> bytesFromHexadecimal(std::string_view digits) {
    const std::string padded = (digits.size() % 2 != 0 ? "0" : "") + std::string(digits);
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < padded.size(); i += 2) {
        std::uint8_t byte = 0;
        const char* end = padded.data() + i + 2;
        const std::from_chars_result read = std::from_chars(end - 2, end, byte, 16);
        if (read.ec != std::errc() || read.ptr != end) {
            throw std::invalid_argument("no hexadecimal digits: " + padded);
        }
        bytes.push_back(byte);
    }
    return bytes;
}

std::string hexadecimalFromBytes(const void* data, std::size_t length) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    std::string text;
    for (std::size_t i = 0; i < length; ++i) {
        text.push_back(digits[bytes[i] >> 4]);
        text.push_back(digits[bytes[i] & 15]);
    }
    return text;
}
