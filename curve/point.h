#pragma once

#include <cstdint>

#include "curve/curve_domain.h"
#include "curve/field_element.h"

namespace core {

// Affine points of y^2 + xy = x^3 + a*x^2 + b over GF(2^m): their group law and multiples. `f` is
// the reduction polynomial. All coordinates are of its degree, which is no multiple of 64: mixed
// degrees may never end. `out` must have its coordinates (`pointNew`) and must not be an operand.
// Points off the curve are not detected; operations on them end, with results without
// meaning. Time depends on the values.

/// Makes the coordinates of `P`, x first, as new elements of this degree, and clears its flags.
void pointNew(std::uint64_t degree, CurvePoint& P);

/// Releases y, then x, and zeroes all three fields.
void pointRelease(CurvePoint& P);

/// A point with coordinates of its own, held by a scope.
class PointTemporary {
public:
    explicit PointTemporary(std::uint64_t degree) { pointNew(degree, point_); }
    ~PointTemporary() { pointRelease(point_); }
    PointTemporary(const PointTemporary&) = delete;
    PointTemporary& operator=(const PointTemporary&) = delete;

    CurvePoint& operator*() { return point_; }
    CurvePoint* operator->() { return &point_; }

private:
    CurvePoint point_;
};

inline bool pointIsInfinity(const CurvePoint& P) {
    return (P.flags & pointInfinity) != 0;
}

/// out := P. At infinity only the flags are copied.
void pointCopy(const CurvePoint& P, CurvePoint& out);

/// P := -P, that is y := y + x.
void pointNegate(CurvePoint& P);

/// 1 when the points are the same, -1 when each is the negative of the other, 0 otherwise.
///
/// P and -P are told apart by the top word of y alone. They agree in it when x has a zero top word,
/// and then -P counts as the same point.
int pointCompare(const CurvePoint& P, const CurvePoint& Q);

/// out := P + Q. At infinity, the coordinates of `out` are those of before.
void pointAdd(const CurvePoint& P, const CurvePoint& Q, const CurveCoefficients& curve,
              CurvePoint& out, const FieldElement& f);

/// out := 2P.
void pointDouble(const CurvePoint& P, const CurveCoefficients& curve, CurvePoint& out,
                 const FieldElement& f);

/// Bytes that the non-adjacent form of a scalar of this degree fits in.
inline std::uint64_t nafBufferSize(std::uint64_t degree) {
    return degree / 2 + 8;
}

/// Writes the non-adjacent form of `k` (Guide to Elliptic Curve Cryptography, algorithm 3.30) and
/// returns the number of bytes written, a multiple of 8.
///
/// Digit i stands in the bits 2i and 2i + 1 of the little-endian buffer, least significant digit
/// first: 00 for 0, 01 for 1, 11 for -1.
std::uint64_t nafEncode(const FieldElement& k, std::uint8_t* buffer);

/// out := k * P for a non-zero k, digit by digit of the non-adjacent form (algorithm 3.31).
void pointMultiply(const FieldElement& k, const CurvePoint& P, const CurveCoefficients& curve,
                   CurvePoint& out, const FieldElement& f);

/// out := u1 * P + u2 * Q by simultaneous multiplication with windows of two bits (algorithm 3.48).
/// The degree of `u1` tells the width of both scalars.
void pointMultiplyTwin(const CurvePoint& P, const CurvePoint& Q, const FieldElement& u1,
                       const FieldElement& u2, CurvePoint& out, const CurveCoefficients& curve,
                       const FieldElement& f);

}  // namespace core
