#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

/// A text of the core's radix-64 form, worked out bit by bit.
struct CoreTextMeaning {
    std::vector<std::uint8_t> bytes;  ///< three for each group
    std::uint64_t count = 0;          ///< three for each group, less one for each "=", modulo 2^64
};

/// The meaning of a text of any length; an incomplete group makes it mean nothing at all.
CoreTextMeaning referenceCoreText(std::string_view text);
