#pragma once

#include <string>
#include <vector>

struct SignOptions {
    std::string project;
    std::vector<std::string> files = {"-"};  ///< "-": standard input
    std::string output = "-";                ///< a new file; "-": standard output
    bool json = false;
};

/// Signs a file and prints the signature's text, or several, and prints a line for each as in a
/// list (tools/signature/signature_list.h). A file that cannot be signed is told of, and the others
/// are signed; then, what goes to a file is not written.
///
/// Refuses where the random device would give a nonce away, and what is signed is not read then.
int signCommand(const SignOptions& options);
