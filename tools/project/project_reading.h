#pragma once

#include <optional>
#include <string>

#include "project/project_file.h"
#include "tools/refusal.h"

/// A project file as a person wants to see it.
struct ProjectReading {
    /// The fault that `ProjectFile::loadReporting` met, in words that follow the path and a colon,
    /// as in "the directory ends after 3 of 5 entries". Nothing when the file loads.
    std::optional<Refusal> refusal;
    bool unreadable = false;  ///< the refusal says nothing of the content, which could not be read

    ProjectFile project;  ///< what was loaded; empty after a refusal
};

/// The fault of a loading in words that follow the path and a colon, if it has one.
std::optional<Refusal> loadingRefusal(const ProjectLoading& loading, const std::string& path);

/// Loads the project at `path` as the program does, and opens it once. What is no regular file is
/// unreadable when it does not load, and so is a file that there is no memory for.
ProjectReading readProject(const std::string& path);
