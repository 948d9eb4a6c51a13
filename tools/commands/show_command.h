#pragma once

#include <string>

struct ShowOptions {
    std::string file;
    bool secret = false;  ///< the private scalar too
    bool json = false;
};

/// Shows every attribute of a project.
int showCommand(const ShowOptions& options);
