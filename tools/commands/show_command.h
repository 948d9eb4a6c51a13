#pragma once

#include <string>

struct ShowOptions {
    std::string file;
    bool secret = false;  ///< the private scalar too
    bool json = false;
};

/// Shows every attribute of a project, and the fingerprint of its public key
/// (tools/signature/key_fingerprint.h) if there is one.
int showCommand(const ShowOptions& options);
