#pragma once

#include <string>
#include <string_view>

/// The file name of `path` without its extension: what stands behind the last slash or backslash,
/// up to the last dot if that lies there.
std::string fileStem(std::string_view path);

/// Whether the program invoked by this path is a non-parsed-header program, which writes the HTTP
/// status line itself (RFC 3875, section 5): its stem begins with "nph-".
bool isNphInvocation(std::string_view path);
