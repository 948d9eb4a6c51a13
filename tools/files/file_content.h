#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// Appends the file at `path`, or standard input for "-", to `content`: to its end, or `most` bytes
/// of it. Returns nothing, or why that failed, with the name of the file first.
std::optional<std::string> readContent(const std::string& path, std::string& content,
                                       std::size_t most = std::string::npos);
