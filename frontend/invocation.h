#pragma once

#include <string>
#include <string_view>

/// The part of `path` behind the last slash or backslash, cut at the last dot if there is one in
/// it.
std::string fileStem(std::string_view path);

/// Whether the program invoked by this path is a non-parsed-header program, which writes the HTTP
/// status line itself (RFC 3875, section 5): its stem begins with "nph-".
bool isNphInvocation(std::string_view path);
