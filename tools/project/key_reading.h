#pragma once

#include <optional>
#include <string>

#include "project/project_file.h"
#include "project/project_key_record.h"
#include "tools/refusal.h"

/// The fault of a key in words that name the attribute; nothing if there is none.
std::optional<Refusal> keyRefusal(const KeyReport& report);

/// `signingFault` of a loaded project.
std::optional<Refusal> signingRefusal(const ProjectFile& project);

/// `verifyingFault` of a loaded project.
std::optional<Refusal> verifyingRefusal(const ProjectFile& project);

/// Loads the project at `path`, and asks one of these about its key. Returns why it cannot be used,
/// the path in front, or nothing.
std::optional<std::string> loadUsableProject(
    const std::string& path, std::optional<Refusal> (*keyRefusal)(const ProjectFile&),
    ProjectFile& project);
