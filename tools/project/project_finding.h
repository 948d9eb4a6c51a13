#pragma once

#include <optional>
#include <string>

#include "project/project_file.h"

/// What makes signatures under a key ones that cannot be relied on: they are made, and may not
/// verify.
enum class KeyDamage {
    none,
    points,  ///< a point that is not sound, nor one for other software
    scalar   ///< a private scalar out of its range or of another public point
};

/// One thing that is wrong with a project.
struct ProjectFinding {
    std::string code;                             ///< stays the same when words change
    std::optional<ProjectAttributeId> attribute;  ///< where it is, if in one attribute
    std::string text;                             ///< in words that follow the path and a colon
    KeyDamage damage = KeyDamage::none;           ///< of the signatures
};
