#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

#include "fuzz/input_reader.h"
#include "fuzz/request_streams.h"

// The parts of a request in a fuzz input, as lines that a person can write.

/// Longest body that is announced without being beyond every string.
inline constexpr std::uint64_t longestAnnounced = 1 << 16;

/// Lengths from which on no string is that long.
inline constexpr std::uint64_t impossibleLength = std::numeric_limits<std::int64_t>::max();

/// The value of a variable from a line: "-" leaves it unset.
inline std::optional<std::string> variableFrom(const std::string& line) {
    return line == "-" ? std::nullopt : environmentValue(line);
}

/// A body with the variable that announces its length, from a line and all that follows: "=" stands
/// for the true length.
struct AnnouncedBody {
    std::optional<std::string> contentLength;
    std::string body;

    explicit AnnouncedBody(InputReader& input) {
        const std::string line = input.line();
        body = input.rest();
        contentLength = line == "=" ? std::to_string(body.size()) : variableFrom(line);
    }
};
