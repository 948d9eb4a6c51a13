#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "project/project_file.h"
#include "tools/refusal.h"

/// One entry of a project file's directory, as it stands there.
struct ProjectEntry {
    ProjectAttributeId id = 0;
    std::uint32_t offset = 0;  ///< of the value, from the start of the file
    std::uint32_t size = 0;    ///< of the value in bytes
};

/// A project file as a person wants to see it.
struct ProjectReading {
    /// Why `ProjectFile::load` gives false, in words that follow the path and a colon, as in "the
    /// directory ends after 3 of 5 entries". Nothing when the file loads.
    std::optional<Refusal> refusal;
    bool unreadable = false;  ///< the refusal says nothing of the content, which could not be read

    ProjectFile project;                ///< what was loaded; empty after a refusal
    std::vector<ProjectEntry> entries;  ///< the directory in its order, where the digest holds
};

/// Loads the project at `path` as the program does. Whether it loads is the answer of
/// `ProjectFile::load` alone; the reason for a refusal is looked up behind it. A file that there is
/// no memory for is unreadable.
ProjectReading readProject(const std::string& path);
