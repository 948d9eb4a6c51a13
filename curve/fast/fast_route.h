#pragma once

#include "curve/curve_domain.h"
#include "curve/field_163.h"

namespace core {

// The second route to multiples of points. What they are is defined in curve/point.h, for every
// curve and every point; here are the same numbers at a tenth of the time with carry-less
// multiplication, and at some four tenths without, for sound points of sect163r2 alone, by other
// formulas. No answer depends on which route gave it.
//
// A point is sound when its coordinates are reduced elements of degree 163, it is on the curve, and
// its order is n. The group has 2n elements and is cyclic, so the points of order n are the doubles
// other than infinity; and a point of the curve is a double exactly when Tr(x) = Tr(a)
// (G. Seroussi, Compact Representation of Elliptic Curve Points over F_2^n, 1998). Here
// Tr(a) = Tr(1) = 1, and Tr(x) = x_0 + x_157. So x is not 0, and neither is that of any multiple
// that is not infinity.

/// A point by its coordinates, not at infinity.
struct Point163 {
    Words163 x{};
    Words163 y{};
};

/// The second route with one way to multiply polynomials.
struct FastRoute {
    /// Whether the point, with whatever in it, is sound.
    bool (*isSound)(const CurvePoint& P);

    /// x of k * P for a sound P and a k below 2^163; 0 where that is infinity. It takes as many
    /// steps as any other k, and with carry-less multiplication the same branches and addresses. It
    /// takes no y: P and -P have the same.
    Words163 (*multipleX)(const Words163& k, const Words163& x);

    /// x of u1 * P + u2 * Q for sound points, if the table and the walk of `pointMultiplyTwin` meet
    /// no two summands of one x, beside the two doubles of the table, and do not end at infinity.
    /// Otherwise false, and nothing is known.
    bool (*twinMultipleX)(const Point163& P, const Point163& Q, const Words163& u1,
                          const Words163& u2, Words163& x);
};

/// By plain instructions, on every processor.
extern const FastRoute plainRoute;

/// By carry-less multiplication; only where `hasCarrylessMultiplication`.
extern const FastRoute carrylessRoute;

/// The faster one that the processor can take; null in a build by the defining arithmetic alone.
/// The linker resolves it, so that a test can put its own in its place.
const FastRoute* fastRoute();

inline Point163 load163(const CurvePoint& P) {
    return {.x = load163(*P.x), .y = load163(*P.y)};
}

}  // namespace core
