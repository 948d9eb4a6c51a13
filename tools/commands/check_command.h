#pragma once

#include <string>

struct CheckOptions {
    std::string file;
    bool json = false;
};

/// Proves a project sound: one line for each finding, and `exitNegative` if there is one.
int checkCommand(const CheckOptions& options);
