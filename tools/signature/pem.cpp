#include "tools/signature/pem.h"

#include <cstddef>
#include <string_view>

namespace {

constexpr std::size_t lineLength = 64;

/// Most significant bits first, unlike the text of a signature.
std::string base64Text(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (std::size_t first = 0; first < bytes.size(); first += 3) {
        const std::size_t count = bytes.size() - first < 3 ? bytes.size() - first : 3;
        std::uint32_t group = 0;
        for (std::size_t i = 0; i < count; ++i) {
            group |= std::uint32_t{bytes[first + i]} << (16 - 8 * i);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            text.push_back(i <= count ? alphabet[group >> (18 - 6 * i) & 63] : '=');
        }
    }
    return text;
}

}  // namespace

std::string pemText(const std::string& label, std::span<const std::uint8_t> bytes) {
    const std::string content = base64Text(bytes);
    std::string text = "-----BEGIN " + label + "-----\n";
    for (std::size_t start = 0; start < content.size(); start += lineLength) {
        text += content.substr(start, lineLength) + "\n";
    }
    return text + "-----END " + label + "-----\n";
}
