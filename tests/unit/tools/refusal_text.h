#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "tools/refusal.h"

// Refusals are compared by their words.

inline bool operator==(const Refusal& refusal, std::string_view text) {
    return refusal.text == text;
}

inline std::ostream& operator<<(std::ostream& stream, const Refusal& refusal) {
    return stream << refusal.code << ": " << refusal.text;
}

/// The words of a refusal; "accepted" without one.
inline std::string refusalText(const std::optional<Refusal>& refusal) {
    return refusal.has_value() ? refusal->text : "accepted";
}
