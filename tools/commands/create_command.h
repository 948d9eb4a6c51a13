#pragma once

#include <optional>
#include <string>

#include "tools/project/new_project.h"

struct CreateOptions {
    std::string file;
    BasePoint base = BasePoint::random;
    std::optional<std::string>
        scalarFile;  ///< holds the scalar in hexadecimal; "-": standard input
};

/// Makes a project file, in silence.
int createCommand(const CreateOptions& options);
