#pragma once

#include <string_view>

/// Writes all of these bytes to the descriptor. False when the system refuses, with the reason in
/// `errno`.
bool writeAll(int descriptor, std::string_view bytes);
