#include "tools/signature/signature_reading.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include "core/core_base64.h"
#include "core/integer.h"
#include "curve/field.h"
#include "curve/sect163r2.h"
#include "engine/verify.h"
#include "tools/counted_text.h"

namespace {

constexpr std::size_t limbBytes = 8;

core::CoreInteger order() {
    core::CoreInteger n{.capacity = 3};
    core::fieldToInteger(core::sect163r2.domain.order, n);
    return n;
}

core::CoreInteger numberFromHalf(const std::uint8_t* half, std::size_t size) {
    core::CoreInteger value{.capacity = 3};
    std::memcpy(value.limbs.data(), half, size);
    value.lengthAndSign = static_cast<std::uint32_t>((size + limbBytes - 1) / limbBytes);
    core::integerNormalise(value);
    return value;
}

/// Why no signature has these numbers, both of them normal.
std::optional<Refusal> numbersRefusal(const core::CoreInteger& r, const core::CoreInteger& s) {
    if (core::integerIsZero(r)) {
        return Refusal{"signature.r-zero", "r is zero"};
    }
    if (core::integerIsZero(s)) {
        return Refusal{"signature.s-zero", "s is zero"};
    }
    const core::CoreInteger n = order();
    if (core::integerCompare(r, n) != -1) {
        return Refusal{"signature.r-range", "r is not below the order"};
    }
    if (core::integerCompare(s, n) != -1) {
        return Refusal{"signature.s-range", "s is not below the order"};
    }
    return std::nullopt;
}

/// What is wrong with a text before any byte of it is decoded.
std::optional<Refusal> lengthRefusal(std::size_t length) {
    if (length == 0) {
        return Refusal{"signature.empty", "the signature is empty"};
    }
    if (length > longestSignatureText) {
        return Refusal{"signature.too-long", "the signature has " + std::to_string(length) +
                                                 " characters, more than " +
                                                 std::to_string(longestSignatureText)};
    }
    if (length % 4 != 0) {
        return Refusal{"signature.groups", "the signature's " +
                                               counted(length, "character is", "characters are") +
                                               " not whole groups of four"};
    }
    return std::nullopt;
}

/// What is wrong with the number of bytes that a text stands for: the bytes of its groups less one
/// for each "=".
std::optional<Refusal> sizeRefusal(std::size_t groupBytes, std::size_t padding) {
    if (padding > groupBytes) {
        return Refusal{"signature.padding",
                       "the signature has " + std::to_string(padding) +
                           " times \"=\", more than the bytes of its groups (" +
                           std::to_string(groupBytes) + ")"};
    }
    const std::size_t count = groupBytes - padding;
    if (count > longestSignature) {
        return Refusal{"signature.too-many-bytes", "the signature stands for " +
                                                       counted(count, "byte") + ", more than " +
                                                       std::to_string(longestSignature)};
    }
    if (count == 0) {
        return Refusal{"signature.no-bytes", "the signature stands for no bytes"};
    }
    if (count % 2 != 0) {
        return Refusal{"signature.odd",
                       "the signature's halves are of odd length (" + counted(count, "byte") + ")"};
    }
    return std::nullopt;
}

/// Verifying drops one zero limb of r at the most, and compares it, lengths included, with a number
/// that has either all three limbs or no zero limb at its top.
std::optional<Refusal> paddingRefusal(const core::CoreInteger& r, std::size_t halfSize) {
    const std::size_t limbs = (halfSize + limbBytes - 1) / limbBytes;
    if (limbs > std::size_t{r.lengthAndSign} + 1) {
        return Refusal{"signature.r-padded", "r is below 2^64 but padded to " +
                                                 counted(halfSize, "byte") +
                                                 ", a form that no signature is accepted in"};
    }
    return std::nullopt;
}

/// The signature with these numbers in halves of this size.
SignatureReading signatureInHalves(const core::CoreInteger& r, const core::CoreInteger& s,
                                   std::size_t halfSize) {
    SignatureReading reading{.refusal = numbersRefusal(r, s), .halfSize = halfSize, .r = r, .s = s};
    if (!reading.refusal.has_value()) {
        reading.refusal = paddingRefusal(r, halfSize);
    }
    return reading;
}

std::size_t shortestHalf(const core::CoreInteger& r, const core::CoreInteger& s) {
    return static_cast<std::size_t>(
        std::max(core::integerByteLength(r), core::integerByteLength(s)));
}

bool isOfAlphabet(char character) {
    return (character >= '0' && character <= '9') || (character >= 'A' && character <= 'Z') ||
           (character >= 'a' && character <= 'z') || character == '+' || character == '/';
}

}  // namespace

SignatureReading readSignature(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    if (auto refusal = lengthRefusal(text.size())) {
        return {.refusal = std::move(refusal)};
    }
    const std::size_t groupBytes = text.size() / 4 * 3;
    const auto padding = static_cast<std::size_t>(std::count(text.begin(), text.end(), '='));
    if (auto refusal = sizeRefusal(groupBytes, padding)) {
        return {.refusal = std::move(refusal)};
    }
    // Decoding writes a zero byte behind the last group.
    std::array<std::uint8_t, longestSignatureText / 4 * 3 + 1> raw{};
    const auto count =
        static_cast<std::size_t>(core::coreBase64Decode(text.data(), text.size(), raw.data()));
    const std::size_t half = count / 2;
    return signatureInHalves(numberFromHalf(raw.data(), half),
                             numberFromHalf(raw.data() + half, half), half);
}

std::string mismatchReason(const SignatureReading& signature) {
    std::string reason =
        "the signature is well formed but made over other data or under another key";
    constexpr std::uint32_t limbsOfAcceptedR = 3;
    if (signature.r.lengthAndSign == limbsOfAcceptedR) {
        return reason;
    }
    return reason +
           ", or it is one of the few (one in 2^35) that are made and not accepted: its r is below "
           "2^128";
}

std::vector<std::string> signatureRemarks(const std::string& text) {
    std::vector<std::string> remarks;
    if (text.starts_with("signature:")) {
        remarks.emplace_back(
            "the signature begins with \"signature:\", which is the name in front of it and no "
            "part of it");
    }
    // Of other lengths a text is not decoded.
    const bool isDecoded = !lengthRefusal(text.size()).has_value();
    const auto strange = std::count_if(text.begin(), text.end(), [](char character) {
        return character != '=' && !isOfAlphabet(character);
    });
    if (strange != 0 && isDecoded) {
        remarks.push_back(counted(static_cast<std::uint64_t>(strange), "character") +
                          " of the signature outside its alphabet: each counts as \"A\"");
    }
    return remarks;
}

SignatureReading signatureOfNumbers(const core::CoreInteger& r, const core::CoreInteger& s) {
    return signatureInHalves(r, s, shortestHalf(r, s));
}

std::string writeSignature(const core::CoreInteger& r, const core::CoreInteger& s) {
    const std::size_t half = shortestHalf(r, s);
    // Encoding reads up to three bytes behind the halves.
    std::array<std::uint8_t, longestSignature + 3> raw{};
    std::memcpy(raw.data(), r.limbs.data(), half);
    std::memcpy(raw.data() + half, s.limbs.data(), half);
    std::array<char, longestSignatureText> text{};
    return {text.data(),
            static_cast<std::size_t>(core::coreBase64Encode(raw.data(), 2 * half, text.data()))};
}
