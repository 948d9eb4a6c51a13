#pragma once

#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"

/// A key as far as attributes make one.
struct ModelKey {
    ProjectKey key;
    bool hasPoints = false;  ///< all four coordinates are there, of the degree of the field
    bool hasScalar = false;
    bool arePointsSound = false;  ///< both are on the curve and of order n, by libcrypto
};
ModelKey readKey(const AttributeValues& attributes);
