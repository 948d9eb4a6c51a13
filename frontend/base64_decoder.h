#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

/// The rules of request data in base64.
enum class Base64Fault : std::uint8_t {
    none,
    length,     ///< not whole groups of four, or no text
    character,  ///< one that is outside the alphabet
    padding,    ///< "=" anywhere but at the end of the last group
};

/// How decoding ended.
struct Base64Decoding {
    Base64Fault fault = Base64Fault::none;
    std::size_t place = 0;  ///< of the character that is refused
};

/// Decodes request data written in base64 into `out`, which must be empty. Refused, with `out` left
/// in any state: an empty text, incomplete groups of four, characters outside the alphabet, and "="
/// anywhere but at the end of the last group, which may consist of nothing else.
///
/// In front of the bytes of the last group stands one zero byte, if there are other groups before
/// it; signatures over data given as base64 are made over that byte too. A zero byte in the text
/// counts as "A". Bits that fill no whole byte are dropped unseen.
Base64Decoding base64DecodeReporting(std::string_view text, std::vector<std::uint8_t>& out);

/// Whether this text decodes.
bool base64Decode(std::string_view text, std::vector<std::uint8_t>& out);
