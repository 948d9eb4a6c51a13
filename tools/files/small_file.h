#pragma once

#include <optional>
#include <string>

/// What a file of a few bytes holds, or why that is not known.
struct SmallFile {
    std::optional<std::string> failure;  ///< in words, with the name of the file in front
    std::string content;
};

/// Reads the file at `path`, or standard input for "-", which must hold `what`, as in "signature":
/// more than 4096 bytes are no such thing.
SmallFile readSmallFile(const std::string& path, const std::string& what);
