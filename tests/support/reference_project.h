#pragma once

#include "tests/support/project_builder.h"

// The reader of project files once more, over the bytes in memory and libcrypto's MD5.

/// What becomes of a file with these bytes.
struct ReferenceProject {
    bool loaded = false;
    bool directoryRefused = false;  ///< all in front of the directory was in order
    AttributeValues attributes{};   ///< of two with one id the first
};

ReferenceProject referenceProject(const Bytes& file);

/// The file with its digest put right, if there is room for one.
Bytes withDigest(Bytes file);

/// The same with the right magic as well.
Bytes mendedProject(Bytes file);
