#pragma once

#include <string>

struct StripOptions {
    std::string file;
    std::string output;
};

/// Writes a copy of a project that only verifies, and holds nothing that verifying does not read:
/// no attribute of another kind and no byte behind or between what counts, where the private scalar
/// could stand once more in whatever form. Refuses a project that verifies nothing.
int stripCommand(const StripOptions& options);
