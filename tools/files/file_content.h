#pragma once

#include <optional>
#include <string>

/// Reads the file at `path`, or standard input for "-", to its end, behind what `content` holds.
/// Returns why that failed, the file's name in front, or nothing.
std::optional<std::string> readContent(const std::string& path, std::string& content);
