#pragma once

#include <string>

struct CheckOptions {
    std::string file;
    bool json = false;
};

/// Proves a project sound: one line for each finding, and `exitNegative` if there is one.
/// Remarks on a random device that signing under the project must not use.
int checkCommand(const CheckOptions& options);
