#pragma once

#include <string>

struct StripOptions {
    std::string file;
    std::string output;
};

/// Writes a copy of a project that only verifies: all attributes but the private scalar.
/// Fails when another attribute holds the scalar's bytes too.
int stripCommand(const StripOptions& options);
