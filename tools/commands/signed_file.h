#pragma once

#include <functional>
#include <optional>
#include <string>

#include "engine/mapped_file.h"
#include "project/project_file.h"
#include "project/project_key_record.h"
#include "tools/refusal.h"

/// Maps the file at `path`, or what standard input holds ("-"), into a fresh `input`, and says it
/// if a part of it counts alone. Returns why it cannot be signed, or nothing.
std::optional<std::string> mapSignedFile(const std::string& path, MappedInput& input);

/// Says that the file at `path` was cut while its mapped bytes were read, which then were not all
/// its own; nothing if it is still whole.
std::optional<std::string> cutFailure(const std::string& path, const MappedInput& input);

/// What an operation of the engine works on, read once: nothing that changes meanwhile comes
/// between what was asked of it and the answer.
struct PreparedOperation {
    ProjectFile project;
    KeyReport key;  ///< filled by the operation
    MappedInput input;
};

/// Loads the project, asks `keyRefusal` about its key, and maps the file. Returns what stands
/// against an operation on them, or nothing.
std::optional<std::string> prepareOperation(
    const std::string& projectPath,
    const std::function<std::optional<Refusal>(const ProjectFile&)>& keyRefusal,
    const std::string& filePath, PreparedOperation& operation);
