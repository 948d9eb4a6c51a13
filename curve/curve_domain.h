#pragma once

#include <cstdint>

#include "core/core_integer.h"
#include "curve/field_element.h"

namespace core {

/// Bit of `CurvePoint::flags` that marks the point at infinity.
inline constexpr std::uint64_t pointInfinity = 1;

/// Point in affine coordinates, to which it refers. At infinity they stand for nothing.
struct CurvePoint {
    FieldElement* x = nullptr;
    FieldElement* y = nullptr;
    std::uint64_t flags = 0;
};

/// The pair a, b of the curve y^2 + xy = x^3 + a*x^2 + b. The group law reads a alone.
struct CurveCoefficients {
    const FieldElement& a;
    const FieldElement& b;
};

/// A curve and the base point of its signatures. The values that it refers to must outlive it. It
/// is trusted: nothing checks that the base point is on the curve or of the order.
struct CurveDomain {
    std::uint64_t degree;                     ///< m, the degree of the field
    const FieldElement& reductionPolynomial;  ///< f(z), with its bit m set
    const FieldElement& coefficientA;
    const FieldElement& coefficientB;
    const CurvePoint& basePoint;
    const FieldElement& order;     ///< n, the prime order of the base point
    const FieldElement& cofactor;  ///< h
};

/// The two halves of a signature; each refers to a value with room for n.
struct SignaturePair {
    CoreInteger& r;
    CoreInteger& s;
};

}  // namespace core
