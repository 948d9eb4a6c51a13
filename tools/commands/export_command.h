#pragma once

#include <string>

struct ExportOptions {
    std::string file;
    bool privateKey = false;
    bool json = false;  ///< the PEM as the one member of an object
};

/// Writes the project's public key, or its private key, as PEM with explicit curve parameters to
/// standard output. A key that other software would not read is refused: one with a value that is
/// absent or too large, a point off the curve or of another order, and as a private key one whose
/// points do not fit its scalar.
int exportCommand(const ExportOptions& options);
