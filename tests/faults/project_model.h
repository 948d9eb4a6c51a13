#pragma once

#include <optional>

#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"

// What the bytes of a project file say, read by the rules of the format alone.

/// The attributes of a file, the first of those with one id; nothing when the file is refused.
std::optional<AttributeValues> readProject(const Bytes& bytes);

/// A key as far as attributes make one.
struct ModelKey {
    ProjectKey key;
    bool hasPoints = false;  ///< all four coordinates are there, of the degree of the field
    bool hasScalar = false;
    bool arePointsSound = false;  ///< both are on the curve and of order n, by libcrypto
};
ModelKey readKey(const AttributeValues& attributes);

/// The file with its digest put right.
Bytes withDigest(Bytes bytes);
