#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "fuzz/input_reader.h"
#include "tools/request/raw_request.h"

// The parts of a request in a fuzz input, as lines that a person can write.

/// Longest body that is announced without being beyond every string.
inline constexpr std::uint64_t longestAnnounced = 1 << 16;

/// Lengths from which on no string is that long.
inline constexpr std::uint64_t impossibleLength = std::numeric_limits<std::int64_t>::max();

/// The value of a variable from a line, as far as the environment can hold it: up to its first zero
/// byte, and 1000 bytes at the most. "-" leaves it unset.
inline std::optional<std::string> variableFrom(const std::string& line) {
    constexpr std::size_t longestValue = 1000;
    return line == "-" ? std::nullopt
                       : std::optional(line.substr(0, std::min(line.find('\0'), longestValue)));
}

/// A body with the variable that announces its length, from a line and all that follows: "=" stands
/// for the true length.
inline RawRequest announcedBody(InputReader& input) {
    const std::string line = input.line();
    RawRequest request{.body = input.rest()};
    request.contentLength = line == "=" ? std::to_string(request.body.size()) : variableFrom(line);
    return request;
}
