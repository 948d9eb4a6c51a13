#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "core/core_integer.h"

// The text of a signature: r and s in two halves of one length, each with its least significant
// byte first, in the core's radix-64 text.

/// Characters of the longest text that is read.
inline constexpr std::size_t longestSignatureText = 128;

/// Bytes of two numbers below the order, which has 163 bits.
inline constexpr std::size_t longestSignature = 42;

/// Limbs of each half.
inline constexpr std::uint32_t signatureLimbs = 3;

/// The rule that a text breaks: the first one, in this order.
enum class SignatureFault : std::uint8_t {
    none,
    empty,
    tooLong,       ///< more than `longestSignatureText` characters
    groups,        ///< not whole groups of four characters
    padding,       ///< more "=" than its groups have bytes
    tooManyBytes,  ///< stands for more than `longestSignature` bytes
    noBytes,       ///< stands for no bytes at all
    odd            ///< stands for an odd number of bytes
};

struct ParsedSignature {
    SignatureFault fault = SignatureFault::none;

    /// Bytes that the text stands for: those of its groups less one for each "=", wherever it
    /// stands; negative for the fault `padding`, and 0 for the faults before that.
    std::int64_t bytes = 0;

    core::CoreInteger r{.capacity = signatureLimbs};  ///< 0, as s is, if there is a fault
    core::CoreInteger s{.capacity = signatureLimbs};
};

/// Reads a text.
///
/// The halves may be padded with zeros at their high ends. Of the zero limbs at the top of a number
/// one at most is dropped. Texts are not compared with what `writeSignatureText` gives: characters
/// outside the alphabet count as "A".
ParsedSignature parseSignatureText(std::string_view text);

/// Bytes of the shortest halves that hold both numbers.
std::size_t shortestHalf(const core::CoreInteger& r, const core::CoreInteger& s);

/// Writes r and s, each normal and of up to `signatureLimbs` limbs, in their shortest halves, and
/// returns the number of characters: at most 64, and 56 for numbers below the order. Writes no
/// terminator, and nothing for a pair of zeros, which is no signature.
std::size_t writeSignatureText(const core::CoreInteger& r, const core::CoreInteger& s, char* text);
