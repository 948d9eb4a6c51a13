#pragma once

#include <string>

struct StripOptions {
    std::string file;
    std::string output;
};

/// Writes a copy of a project that only verifies: all attributes but the private scalar.
int stripCommand(const StripOptions& options);
