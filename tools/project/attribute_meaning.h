#pragma once

#include <cstdint>
#include <string>

#include "project/project_file.h"

/// What an attribute is, as in "x of the base point"; empty for an id that the program ignores.
std::string attributeMeaning(ProjectAttributeId id);

/// "attribute 72 (x of the base point)".
std::string namedAttribute(ProjectAttributeId id);

/// The bits that a key attribute states, as the program reads them: a shorter value than four bytes
/// counts as filled up with zeros, and the top bit of a scalar's count is no part of it.
std::uint32_t statedBits(const ProjectFile& project, ProjectAttributeId id);
