#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Pieces of a request in sentences for a person.

/// The text between double quotation marks, cut behind its first 60 bytes. Whatever is no printable
/// ASCII is written as "\x" and two hexadecimal digits, so that each byte of a request shows.
std::string quotation(std::string_view text);

/// The part of a text that counts where it is handed on as terminated: up to its first zero byte.
std::string beforeZero(const std::string& text);

/// The remark on names that nothing knows, `count` of them, of which the first are given; `kind` is
/// their noun.
std::string unknownNames(const std::string& kind, const std::vector<std::string>& names,
                         std::uint64_t count);
