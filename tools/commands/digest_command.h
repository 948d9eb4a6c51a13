#pragma once

#include <string>

struct DigestOptions {
    std::string file = "-";  ///< "-": standard input
    bool json = false;
};

/// Writes the RIPEMD-160 digest of a file as 20 bytes in reversed order: so other software reads
/// the number out of them that signing takes from the digest. A terminal is not given these bytes.
/// JSON has them in hexadecimal digits, and the digest as published beside them.
int digestCommand(const DigestOptions& options);
