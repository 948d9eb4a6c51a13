#pragma once

#include <cstdint>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// Data to sign.
inline const Bytes someData = {'s', 'o', 'm', 'e', ' ', 'd', 'a', 't', 'a'};
