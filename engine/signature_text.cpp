#include "engine/signature_text.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "core/entry.h"

namespace {

SignatureFault lengthFault(std::size_t length) {
    if (length == 0) {
        return SignatureFault::empty;
    }
    if (length > longestSignatureText) {
        return SignatureFault::tooLong;
    }
    return length % 4 != 0 ? SignatureFault::groups : SignatureFault::none;
}

/// Of a number of bytes that has wrapped around where it is below zero.
SignatureFault sizeFault(std::uint64_t bytes) {
    if (bytes > longestSignature) {
        return static_cast<std::int64_t>(bytes) < 0 ? SignatureFault::padding
                                                    : SignatureFault::tooManyBytes;
    }
    if (bytes == 0) {
        return SignatureFault::noBytes;
    }
    return bytes % 2 != 0 ? SignatureFault::odd : SignatureFault::none;
}

/// Reads `bytes` bytes as a number. Of its zero limbs at the top one at most is dropped.
void readHalf(const std::uint8_t* half, std::size_t bytes, core::CoreInteger& value) {
    std::memcpy(value.limbs.data(), half, bytes);
    value.lengthAndSign = static_cast<std::uint32_t>((bytes + 7) / 8);
    const std::uint64_t bits = coreEntry::integerBitLength(value);
    value.lengthAndSign = static_cast<std::uint32_t>((bits + 63) / 64);
}

}  // namespace

ParsedSignature parseSignatureText(std::string_view text) {
    ParsedSignature signature{.fault = lengthFault(text.size())};
    if (signature.fault != SignatureFault::none) {
        return signature;
    }
    // Decoding writes a zero byte behind the last group.
    std::array<std::uint8_t, longestSignatureText / 4 * 3 + 1> raw;
    const std::uint64_t bytes = coreEntry::coreBase64Decode(text.data(), text.size(), raw.data());
    signature.bytes = static_cast<std::int64_t>(bytes);
    signature.fault = sizeFault(bytes);
    if (signature.fault != SignatureFault::none) {
        return signature;
    }
    const std::size_t half = bytes / 2;
    readHalf(raw.data(), half, signature.r);
    readHalf(raw.data() + half, half, signature.s);
    return signature;
}

std::size_t shortestHalf(const core::CoreInteger& r, const core::CoreInteger& s) {
    return std::max(coreEntry::integerByteLength(r), coreEntry::integerByteLength(s));
}

std::size_t writeSignatureText(const core::CoreInteger& r, const core::CoreInteger& s, char* text) {
    const std::size_t half = shortestHalf(r, s);
    if (half == 0) {
        return 0;
    }
    // The zero bytes behind the halves settle the high bits of the last character.
    std::array<std::uint8_t, 64> raw{};
    std::memcpy(raw.data(), r.limbs.data(), half);
    std::memcpy(raw.data() + half, s.limbs.data(), half);
    return coreEntry::coreBase64Encode(raw.data(), 2 * half, text);
}
