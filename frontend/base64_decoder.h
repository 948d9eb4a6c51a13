#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

/// Decodes request data written in base64 into `out`, which must be empty; false, with `out`
/// without meaning, when the text is empty, its length is no multiple of four, it has a character
/// outside the alphabet, or "=" stands anywhere but at the end.
///
/// Text of more than one group decodes to the bytes of all groups but the last, one zero byte, and
/// the bytes of the last group; text of one group to exactly its bytes. Signatures over data given
/// as base64 are made over that zero byte too. A zero byte in the text counts as "A". Bits that
/// fill no whole byte are dropped unseen.
bool base64Decode(std::string_view text, std::vector<std::uint8_t>& out);
