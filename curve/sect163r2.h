#pragma once

#include "curve/curve_domain.h"

namespace core {

/// The static form of a domain: the domain and, once more, its pair of coefficients, which nothing
/// reads.
struct CurveTable {
    CurveDomain domain;
    CurveCoefficients coefficients;
};

/// The curve sect163r2 of SEC 2 version 2.0, with its published base point; B-163 of FIPS 186-4,
/// appendix D.1.3. Read-only. Signatures put a project's base point in the place of the published
/// one.
extern const CurveTable sect163r2;

}  // namespace core
