#pragma once

#include <string>

/// Why something is refused.
struct Refusal {
    std::string code;  ///< short, as in "file.empty"; it stays the same when words change
    std::string text;  ///< for a person

    bool operator==(const Refusal&) const = default;
};
