#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// Reads the file at `path`, or standard input for "-", behind what
/// `content` holds: to its end, or as many bytes as are wanted at most. Returns why that failed,
/// the file's name in front, or nothing.
std::optional<std::string> readContent(const std::string& path, std::string& content,
                                       std::size_t most = std::string::npos);
