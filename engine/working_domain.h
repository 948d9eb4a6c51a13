#pragma once

#include <cstdint>

#include "curve/curve_domain.h"

/// Bytes of `words` in use in the coordinates of one call.
inline constexpr std::uint64_t workingElementCapacity = 112;

/// The domain of one call: the curve sect163r2 with the project's base point in the place of the
/// published one. It refers to `basePoint`.
core::CurveDomain workingDomain(const core::CurvePoint& basePoint);
