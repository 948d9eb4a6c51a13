#pragma once

#include <string>

#include "project/project_file.h"

/// What an attribute is, as in "x of the base point"; empty for an id that the program ignores.
std::string attributeMeaning(ProjectAttributeId id);

/// "attribute 72 (x of the base point)".
std::string namedAttribute(ProjectAttributeId id);
