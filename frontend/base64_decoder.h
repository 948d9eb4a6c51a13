#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

/// Decodes request data written in base64 into `out`, which must be empty. Refused, with `out` left
/// in any state: an empty text, incomplete groups of four, characters outside the alphabet, and "="
/// anywhere but at the end of the last group, which may consist of nothing else.
///
/// In front of the bytes of the last group stands one zero byte, if there are other groups before
/// it; signatures over data given as base64 are made over that byte too. A zero byte in the text
/// counts as "A". Bits that fill no whole byte are dropped unseen.
bool base64Decode(std::string_view text, std::vector<std::uint8_t>& out);
