#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "curve/field_element.h"
#include "project/project_file.h"

/// Where the base point of a new project comes from.
enum class BasePoint {
    random,   ///< a random point of order n
    standard  ///< the published base point of the curve
};

/// A project with this base point, the scalar, which must be from 1 to n - 1, and the public point.
/// Without a scalar, one is drawn uniformly. The core must have been started.
ProjectFile newProject(BasePoint base, const std::optional<core::FieldElement>& scalar);

/// A project that only verifies: the coordinates of the base point and the public point of one that
/// has no `verifyingRefusal`, as the program reads them, and nothing else.
ProjectFile verifyingProject(const ProjectFile& project);

/// A scalar as a person hands it over.
struct ScalarReading {
    std::optional<std::string> refusal;  ///< what is wrong with the text, in words
    core::FieldElement scalar;           ///< of the order's degree
};

/// Reads the hexadecimal digits of a scalar from 1 to n - 1, most significant first, with white
/// space around them and zeros in front allowed.
ScalarReading readScalar(std::string_view text);
