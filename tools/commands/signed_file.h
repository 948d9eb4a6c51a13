#pragma once

#include <functional>
#include <optional>
#include <string>

#include "project/project_file.h"
#include "tools/files/input_file.h"

/// Makes `file` stand for the file at `path` or for standard input ("-"), and says it if a part of
/// it counts alone. Returns why it cannot be signed, or nothing.
std::optional<std::string> prepareFile(const std::string& path, InputFile& file);

/// Loads the project, asks `keyRefusal` about its key, and prepares the file. Returns what stands
/// against an operation of the engine on them, or nothing.
std::optional<std::string> prepareOperation(
    const std::string& projectPath,
    const std::function<std::optional<std::string>(const ProjectFile&)>& keyRefusal,
    const std::string& filePath, InputFile& file);

/// The size of the prepared file as far as it counts.
std::uint32_t countedSize(const InputFile& file);
