#include "tests/support/libcrypto_curve.h"

#include <openssl/err.h>
#include <openssl/obj_mac.h>

#include <stdexcept>

#include "tests/support/random_operands.h"

namespace {

void require(bool done) {
    if (!done) {
        throw std::runtime_error("libcrypto refused a point");
    }
}

}  // namespace

bool operator==(const AffinePoint& P, const AffinePoint& Q) {
    return P.infinity == Q.infinity && (P.infinity || (P.x == Q.x && P.y == Q.y));
}

std::ostream& operator<<(std::ostream& stream, const AffinePoint& point) {
    if (point.infinity) {
        return stream << "infinity";
    }
    return stream << "(" << point.x << ", " << point.y << ")";
}

AffinePoint affineFrom(const core::CurvePoint& point) {
    if ((point.flags & core::pointInfinity) != 0) {
        return pointAtInfinity();
    }
    return {.x = valueOf(*point.x), .y = valueOf(*point.y)};
}

PointRecord::PointRecord(const AffinePoint& point, std::uint64_t capacity, std::uint64_t degree)
    : x_(elementFrom(point.infinity ? randomPolynomial(degree) : point.x, degree, capacity)),
      y_(elementFrom(point.infinity ? randomPolynomial(degree) : point.y, degree, capacity)),
      point_{.x = &x_, .y = &y_, .flags = point.infinity ? core::pointInfinity : 0} {}

CurveJudge::CurveJudge() : group_(EC_GROUP_new_by_curve_name(NID_sect163r2)) {
    require(group_ != nullptr);
}

CurveJudge::CurveJudge(const AffinePoint& basePoint) : CurveJudge() {
    const BigNumber n = order();
    const BigNumber h = cofactor();
    require(EC_GROUP_set_generator(group_.get(), pointFrom(basePoint).get(), n.get(), h.get()) ==
            1);
}

BigNumber CurveJudge::fieldPolynomial() const {
    BigNumber polynomial;
    require(EC_GROUP_get_curve(group_.get(), polynomial.get(), nullptr, nullptr, numberContext()) ==
            1);
    return polynomial;
}

BigNumber CurveJudge::coefficientA() const {
    BigNumber a;
    require(EC_GROUP_get_curve(group_.get(), nullptr, a.get(), nullptr, numberContext()) == 1);
    return a;
}

BigNumber CurveJudge::coefficientB() const {
    BigNumber b;
    require(EC_GROUP_get_curve(group_.get(), nullptr, nullptr, b.get(), numberContext()) == 1);
    return b;
}

BigNumber CurveJudge::order() const {
    BigNumber n;
    require(EC_GROUP_get_order(group_.get(), n.get(), numberContext()) == 1);
    return n;
}

BigNumber CurveJudge::cofactor() const {
    BigNumber h;
    require(EC_GROUP_get_cofactor(group_.get(), h.get(), numberContext()) == 1);
    return h;
}

AffinePoint CurveJudge::basePoint() const {
    return affine(EC_GROUP_get0_generator(group_.get()));
}

AffinePoint CurveJudge::add(const AffinePoint& P, const AffinePoint& Q) const {
    const Point sum = newPoint();
    require(EC_POINT_add(group_.get(), sum.get(), pointFrom(P).get(), pointFrom(Q).get(),
                         numberContext()) == 1);
    return affine(sum.get());
}

AffinePoint CurveJudge::twice(const AffinePoint& P) const {
    const Point result = newPoint();
    require(EC_POINT_dbl(group_.get(), result.get(), pointFrom(P).get(), numberContext()) == 1);
    return affine(result.get());
}

AffinePoint CurveJudge::negative(const AffinePoint& P) const {
    const Point point = pointFrom(P);
    require(EC_POINT_invert(group_.get(), point.get(), numberContext()) == 1);
    return affine(point.get());
}

AffinePoint CurveJudge::multiply(const BigNumber& factor, const AffinePoint& P) const {
    const Point product = newPoint();
    require(EC_POINT_mul(group_.get(), product.get(), nullptr, pointFrom(P).get(), factor.get(),
                         numberContext()) == 1);
    return affine(product.get());
}

AffinePoint CurveJudge::multiplyTwin(const BigNumber& u1, const BigNumber& u2,
                                     const AffinePoint& Q) const {
    const Point sum = newPoint();
    require(EC_POINT_mul(group_.get(), sum.get(), u1.get(), pointFrom(Q).get(), u2.get(),
                         numberContext()) == 1);
    return affine(sum.get());
}

bool CurveJudge::isOnCurve(const AffinePoint& P) const {
    const Point point = newPoint();
    // Refuses what is not on the curve, and says so in the error queue.
    const bool accepted = EC_POINT_set_affine_coordinates(group_.get(), point.get(), P.x.get(),
                                                          P.y.get(), numberContext()) == 1;
    ERR_clear_error();
    return P.infinity || accepted;
}

std::optional<AffinePoint> CurveJudge::pointWithX(const BigNumber& x) const {
    const Point point = newPoint();
    const bool found = EC_POINT_set_compressed_coordinates(group_.get(), point.get(), x.get(), 0,
                                                           numberContext()) == 1;
    ERR_clear_error();
    return found ? std::optional(affine(point.get())) : std::nullopt;
}

AffinePoint CurveJudge::randomPoint() const {
    return multiply(randomScalar(), basePoint());
}

BigNumber CurveJudge::randomScalar() const {
    return BigNumber::fromBytes(randomBytes(40)) % (order() - 1) + 1;
}

CurveJudge::Point CurveJudge::newPoint() const {
    Point point(EC_POINT_new(group_.get()));
    require(point != nullptr);
    return point;
}

CurveJudge::Point CurveJudge::pointFrom(const AffinePoint& P) const {
    Point point = newPoint();
    if (P.infinity) {
        require(EC_POINT_set_to_infinity(group_.get(), point.get()) == 1);
    } else {
        require(EC_POINT_set_affine_coordinates(group_.get(), point.get(), P.x.get(), P.y.get(),
                                                numberContext()) == 1);
    }
    return point;
}

AffinePoint CurveJudge::affine(const EC_POINT* point) const {
    AffinePoint result;
    if (EC_POINT_is_at_infinity(group_.get(), point) == 1) {
        result.infinity = true;
    } else {
        require(EC_POINT_get_affine_coordinates(group_.get(), point, result.x.get(), result.y.get(),
                                                numberContext()) == 1);
    }
    return result;
}
