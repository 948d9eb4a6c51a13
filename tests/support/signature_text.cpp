#include "tests/support/signature_text.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

#include "tests/support/hexadecimal.h"

namespace {

const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::string digitsFromHalf(const Bytes& half) {
    const auto top = std::find_if(half.rbegin(), half.rend(), [](auto byte) { return byte != 0; });
    const Bytes bigEndian(top, half.rend());
    std::string digits = hexadecimalFromBytes(bigEndian.data(), bigEndian.size());
    std::transform(digits.begin(), digits.end(), digits.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return digits.empty() ? "0" : digits;
}

}  // namespace

std::string textFromBytes(const Bytes& bytes) {
    const std::size_t bits = 8 * bytes.size();
    std::string text;
    for (std::size_t first = 0; first < bits; first += 6) {
        std::size_t value = 0;
        for (std::size_t bit = first; bit < std::min(first + 6, bits); ++bit) {
            value |= (std::size_t{bytes[bit / 8]} >> bit % 8 & 1) << (bit - first);
        }
        text.push_back(alphabet[value]);
    }
    text.resize((text.size() + 3) / 4 * 4, '=');
    return text;
}

Bytes bytesFromText(const std::string& text) {
    const std::size_t characters = std::min(text.find('='), text.size());
    Bytes bytes(6 * characters / 8);
    for (std::size_t bit = 0; bit < 8 * bytes.size(); ++bit) {
        const std::size_t value = alphabet.find(text[bit / 6]);
        if (value == std::string::npos) {
            throw std::invalid_argument("no signature text: " + text);
        }
        bytes[bit / 8] |= static_cast<std::uint8_t>((value >> bit % 6 & 1) << bit % 8);
    }
    return bytes;
}

std::string signatureText(const SignatureNumbers& signature, std::size_t half) {
    Bytes r = littleEndianBytes(signature.r);
    Bytes s = littleEndianBytes(signature.s);
    const std::size_t length = std::max({r.size(), s.size(), half});
    r.resize(length);
    s.resize(length);
    r.insert(r.end(), s.begin(), s.end());
    return textFromBytes(r);
}

SignatureNumbers readSignatureText(const std::string& text) {
    const Bytes bytes = bytesFromText(text);
    const auto middle = bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2);
    return {.r = digitsFromHalf(Bytes(bytes.begin(), middle)),
            .s = digitsFromHalf(Bytes(middle, bytes.end()))};
}
