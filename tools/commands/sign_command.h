#pragma once

#include <string>

struct SignOptions {
    std::string project;
    std::string file = "-";  ///< "-": standard input
    bool json = false;
};

/// Signs a file and prints the signature's text.
int signCommand(const SignOptions& options);
