#pragma once

#include <optional>
#include <string>

#include "project/project_file.h"

/// A project with a fresh key: a random base point of order n, a private scalar uniform in 1 to n -
/// 1 and the public point. The core must have been started.
ProjectFile newProject();

/// Writes the attributes of `project` as a new file at `path`, readable and writable by its owner
/// alone. Returns what went wrong, or nothing.
///
/// The file appears complete or not at all: it is written under another name in the same folder,
/// flushed to disk and renamed. A file that exists at `path` is never replaced.
std::optional<std::string> writeProjectFile(const ProjectFile& project, const std::string& path);
