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

/// Makes a project file, in silence. Refuses where the random device would make a key that can be
/// guessed.
int createCommand(const CreateOptions& options);
