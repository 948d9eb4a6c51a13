#pragma once

#include <string>

struct CheckOptions {
    std::string file;
    bool json = false;
};

/// Checks a project: a line with the fingerprint of its public key
/// (tools/signature/key_fingerprint.h), if there is one, and one for each finding; `exitNegative`
/// if there is a finding. Remarks on a random device that signing under the project must not use.
int checkCommand(const CheckOptions& options);
