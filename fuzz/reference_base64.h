#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

/// What request data in base64 stands for, worked out as a string of single bits; empty when it is
/// refused.
std::optional<std::vector<std::uint8_t>> referenceBase64(std::string_view text);
