#pragma once

#include <string>

struct SignOptions {
    std::string project;
    std::string file = "-";  ///< "-": standard input
    bool json = false;
};

/// Signs a file and prints the signature's text. Refuses where the random device would give a nonce
/// away, and what is signed is not read then.
int signCommand(const SignOptions& options);
