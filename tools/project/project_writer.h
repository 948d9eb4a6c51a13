#pragma once

#include <optional>
#include <string>

#include "project/project_file.h"

/// Whether a file of the attributes would be larger than 32-bit offsets reach: then what is wrong,
/// `path` in front. Values that share bytes where they were loaded from stand apart in a new file.
std::optional<std::string> sizeRefusal(const ProjectFile& project, const std::string& path);

/// Writes the attributes of `project`, of which there must be one at least, as a new file at
/// `path`. Returns what went wrong, path in front, or nothing; a `sizeRefusal` before anything
/// else.
///
/// The file appears whole or not at all, and none that exists is replaced
/// (tools/files/whole_file.h). Its owner alone can read it if there is a private scalar in it,
/// everybody otherwise.
std::optional<std::string> writeProjectFile(const ProjectFile& project, const std::string& path);
