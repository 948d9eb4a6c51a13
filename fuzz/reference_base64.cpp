#include "fuzz/reference_base64.h"

#include <cstddef>

namespace {

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Appends the six bits of a character, the highest first; false when it stands for none.
bool appendBits(std::vector<bool>& bits, char character) {
    const std::size_t value = character == '\0' ? 0 : alphabet.find(character);
    if (value == std::string_view::npos) {
        return false;
    }
    for (const unsigned bit : {5U, 4U, 3U, 2U, 1U, 0U}) {
        bits.push_back((value >> bit & 1) != 0);
    }
    return true;
}

void appendWholeBytes(const std::vector<bool>& bits, std::vector<std::uint8_t>& bytes) {
    for (std::size_t first = 0; first + 8 <= bits.size(); first += 8) {
        unsigned value = 0;
        for (std::size_t bit = first; bit < first + 8; ++bit) {
            value = 2 * value + (bits[bit] ? 1 : 0);
        }
        bytes.push_back(static_cast<std::uint8_t>(value));
    }
}

}  // namespace

std::optional<std::vector<std::uint8_t>> referenceBase64(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes;
    const std::string_view leading = text.substr(0, text.size() - 4);
    if (!leading.empty()) {
        std::vector<bool> bits;
        for (const char character : leading) {
            if (!appendBits(bits, character)) {
                return std::nullopt;
            }
        }
        appendWholeBytes(bits, bytes);
        bytes.push_back(0);
    }
    std::string_view last = text.substr(text.size() - 4);
    while (last.ends_with('=')) {
        last.remove_suffix(1);
    }
    std::vector<bool> bits;
    for (const char character : last) {
        if (!appendBits(bits, character)) {
            return std::nullopt;
        }
    }
    appendWholeBytes(bits, bytes);
    return bytes;
}
