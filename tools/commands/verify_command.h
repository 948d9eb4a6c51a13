#pragma once

#include <optional>
#include <string>

/// Either a signature, or a file with one, or a list of them.
struct VerifyOptions {
    std::string project;
    std::string signature;
    std::optional<std::string> signatureFile{};  ///< "-": standard input
    std::string file = "-";                      ///< "-": standard input

    std::optional<std::string> list{};  ///< "-": standard input
    bool ignoreMissing = false;         ///< of a list: say nothing of files that there are not
    bool quiet = false;                 ///< of a list: say nothing of files that are well
    bool status = false;                ///< of a list: print nothing

    bool json = false;
};

/// Verifies a signature of a file and prints true or false; says why it is false on standard error
/// (tools/commands/false_verdict.h).
/// Or verifies the signatures of a list, and prints a line for each file.
int verifyCommand(const VerifyOptions& options);
