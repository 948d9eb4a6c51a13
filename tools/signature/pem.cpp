#include "tools/signature/pem.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace {

constexpr std::size_t lineLength = 64;

/// Most significant bits first, unlike the text of a signature.
std::string base64Text(std::span<const std::uint8_t> bytes) {
    constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t wholeGroup = 3;
    std::string text;
    while (!bytes.empty()) {
        const std::span<const std::uint8_t> group = bytes.first(std::min(wholeGroup, bytes.size()));
        std::uint32_t bits = 0;
        for (std::size_t i = 0; i < group.size(); ++i) {
            bits |= std::uint32_t{group[i]} << (16 - 8 * i);
        }
        for (std::size_t i = 0; i < 4; ++i) {
            text.push_back(i <= group.size() ? alphabet[bits >> (18 - 6 * i) & 63] : '=');
        }
        bytes = bytes.subspan(group.size());
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
