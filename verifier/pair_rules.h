#pragma once

#include "core/core_integer.h"
#include "curve/signature_primitive.h"

// What keeps two numbers out of a signature's text from being a signature of anything.

/// The first fault of r and s below the order of sect163r2.
core::PairFault pairFault(const core::CoreInteger& r, const core::CoreInteger& s);

/// Whether r, as a text was read, has more limbs than it needs. Verifying compares it, its limbs
/// included, with a number that has either all three of them or no zero limb at its top.
bool isPadded(const core::CoreInteger& r);
