#pragma once

#include <optional>
#include <string>

#include "project/project_file.h"
#include "tools/refusal.h"

/// A project file as a person wants to see it.
struct ProjectReading {
    /// Why `ProjectFile::load` gives false, in words that follow the path and a colon, as in "the
    /// directory ends after 3 of 5 entries". Nothing when the file loads.
    std::optional<Refusal> refusal;
    bool unreadable = false;  ///< the refusal says nothing of the content, which could not be read

    ProjectFile project;  ///< what was loaded; empty after a refusal
};

/// Loads the project at `path` as the program does. Whether it loads is the answer of
/// `ProjectFile::load` alone; the reason for a refusal is looked up behind it. A file that there is
/// no memory for is unreadable.
ProjectReading readProject(const std::string& path);
