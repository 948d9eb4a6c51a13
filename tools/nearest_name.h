#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The one of these names that a mistyped word most likely stands for: the nearest, or of several
/// that are as near, the first. Nothing where more than a third of the word's characters would have
/// to change; one may in a shorter word.
///
/// A change inserts, deletes or replaces a character, or exchanges two neighbours; upper and lower
/// case of a letter count as the same.
std::optional<std::string> nearestName(std::string_view word, std::span<const std::string> names);
