#pragma once

#include <openssl/ec.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>

#include "curve/curve_domain.h"
#include "curve/field_element.h"
#include "tests/support/big_number.h"
#include "tests/support/field_judge.h"

// Points of sect163r2 as numbers, and the group law on them by libcrypto.

struct AffinePoint {
    BigNumber x;
    BigNumber y;
    bool infinity = false;
};

/// Points at infinity are equal whatever their coordinates.
bool operator==(const AffinePoint& P, const AffinePoint& Q);

/// For the messages of failed comparisons.
std::ostream& operator<<(std::ostream& stream, const AffinePoint& point);

inline AffinePoint pointAtInfinity() {
    return {.x = {}, .y = {}, .infinity = true};
}

AffinePoint affineFrom(const core::CurvePoint& point);

/// Flags of a point beside the one that marks infinity.
inline constexpr std::uint64_t otherFlags = 0xF0;

/// A point of the core with the elements that it refers to. Infinity has some coordinates too,
/// which must not be read; it serves as a result before its operation.
class PointRecord {
public:
    explicit PointRecord(const AffinePoint& point, std::uint64_t capacity = curveCapacity,
                         std::uint64_t degree = curveDegree);
    PointRecord(const PointRecord&) = delete;
    PointRecord& operator=(const PointRecord&) = delete;

    operator core::CurvePoint&() { return point_; }  // NOLINT(google-explicit-constructor)
    operator const core::CurvePoint&() const {       // NOLINT(google-explicit-constructor)
        return point_;
    }
    core::CurvePoint* operator->() { return &point_; }
    const core::CurvePoint* operator->() const { return &point_; }

private:
    core::FieldElement x_;
    core::FieldElement y_;
    core::CurvePoint point_;
};

/// The curve sect163r2 in libcrypto, with the published base point or one of the caller's.
class CurveJudge {
public:
    CurveJudge();
    explicit CurveJudge(const AffinePoint& basePoint);

    BigNumber fieldPolynomial() const;
    BigNumber coefficientA() const;
    BigNumber coefficientB() const;
    BigNumber order() const;
    BigNumber cofactor() const;
    AffinePoint basePoint() const;

    AffinePoint add(const AffinePoint& P, const AffinePoint& Q) const;
    AffinePoint twice(const AffinePoint& P) const;
    AffinePoint negative(const AffinePoint& P) const;
    AffinePoint multiply(const BigNumber& factor, const AffinePoint& P) const;
    /// u1 * basePoint() + u2 * Q.
    AffinePoint multiplyTwin(const BigNumber& u1, const BigNumber& u2, const AffinePoint& Q) const;

    bool isOnCurve(const AffinePoint& P) const;
    /// One of the two points with this x, if there are any.
    std::optional<AffinePoint> pointWithX(const BigNumber& x) const;
    /// A point of order n.
    AffinePoint randomPoint() const;
    /// A number from 1 to n - 1.
    BigNumber randomScalar() const;

private:
    struct Releaser {
        void operator()(EC_GROUP* group) const { EC_GROUP_free(group); }
        void operator()(EC_POINT* point) const { EC_POINT_free(point); }
    };
    using Point = std::unique_ptr<EC_POINT, Releaser>;

    Point newPoint() const;
    Point pointFrom(const AffinePoint& P) const;
    AffinePoint affine(const EC_POINT* point) const;

    std::unique_ptr<EC_GROUP, Releaser> group_;
};
