#pragma once

#include <string>

struct VerifyOptions {
    std::string project;
    std::string signature;
    std::string file = "-";  ///< "-": standard input
    bool json = false;
};

/// Verifies a signature of a file and prints true or false; says why it is false on standard error.
int verifyCommand(const VerifyOptions& options);
