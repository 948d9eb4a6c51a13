#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// The bytes written as pairs of hexadecimal digits, most significant first in each pair; an odd
/// number of digits counts as having a leading zero. Anything but digits throws
/// std::invalid_argument.
std::vector<std::uint8_t> bytesFromHexadecimal(std::string_view digits);

/// Lower-case digits, two a byte.
std::string hexadecimalFromBytes(const void* data, std::size_t length);
