#pragma once

#include "curve/field_element.h"

namespace core {

/// k := a random number from 1 to order - 1, uniform by rejection: elements of `fieldRandom` that
/// are zero or not below the order are drawn again. The degree of k must be that of the order. Time
/// tells how many were drawn again, and nothing of k.
void drawScalar(FieldElement& k, const FieldElement& order);

}  // namespace core
