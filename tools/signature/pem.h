#pragma once

#include <cstdint>
#include <span>
#include <string>

/// The bytes as a PEM text of this label (RFC 7468): base64 of RFC 4648 in lines of 64 characters
/// between two encapsulation boundaries, with a line feed behind each line.
std::string pemText(const std::string& label, std::span<const std::uint8_t> bytes);
