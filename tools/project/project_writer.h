#pragma once

#include <optional>
#include <string>

#include "project/project_file.h"

/// Writes the attributes of `project`, of which there must be one at least, as a new file at
/// `path`. Returns what went wrong, path in front, or nothing.
///
/// The file appears whole or not at all, and none that exists is replaced
/// (tools/files/whole_file.h). Its owner alone can read it if there is a private scalar in it,
/// everybody otherwise.
std::optional<std::string> writeProjectFile(const ProjectFile& project, const std::string& path);
