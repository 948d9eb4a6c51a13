#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/core_integer.h"
#include "tools/refusal.h"

/// A signature's text, read as the program reads it, or a signature in another form.
struct SignatureReading {
    /// Why the program answers false whatever the data and the key, as in "the signature's halves
    /// are of odd length (41 bytes)" or "s is not below the order". Nothing when there are data and
    /// a key for which it answers true; r and s are then from 1 to n - 1.
    std::optional<Refusal> refusal{};

    std::size_t halfSize = 0;  ///< bytes of each half; 0 when the text has no two halves
    core::CoreInteger r{};     ///< normal, as s is; zero when there are no halves
    core::CoreInteger s{};
};

/// Reads the text up to its first zero byte.
SignatureReading readSignature(std::string_view text);

/// Why a signature without a refusal is answered with false: it belongs to other data or another
/// key. Beside that stands the rare r that the program makes and does not accept.
std::string mismatchReason(const SignatureReading& signature);

/// What is strange about a text without a zero byte: the name of a result in front of it, or else
/// the first character that is not of its alphabet; and how many decoding takes for "A".
std::vector<std::string> signatureRemarks(const std::string& text);

/// The signature of two normal numbers, in the shortest halves that hold both.
SignatureReading signatureOfNumbers(const core::CoreInteger& r, const core::CoreInteger& s);

/// The text of a signature of two normal numbers, one of which is not zero, as the program writes
/// it: in the shortest halves that hold both. They have at most 21 bytes each.
std::string writeSignature(const core::CoreInteger& r, const core::CoreInteger& s);
