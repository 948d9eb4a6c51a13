#include "tests/unit/curve/small_curve.h"
#include "tests/support/leak_check.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "curve/point.h"
#include "tests/support/libcrypto_curve.h"

namespace {

using core::FieldElement;

/// The curve's constants and its points of odd order as records of the core.
class CoreCurve {
public:
    explicit CoreCurve(const SmallCurve& curve)
        : degree_(curve.degree()),
          f_(elementFrom(curve.polynomial(), degree_)),
          a_(elementFrom(curve.a(), degree_)),
          unreadB_(usedElement(degree_)) {}

    std::uint64_t degree() const { return degree_; }
    const FieldElement& f() const { return f_; }
    core::CurveCoefficients coefficients() const { return {.a = a_, .b = unreadB_}; }

    PointRecord record(const SmallPoint& point) const {
        return PointRecord({.x = point.x, .y = point.y, .infinity = point.infinity}, curveCapacity,
                           degree_);
    }
    FieldElement scalar(unsigned value) const { return elementFrom(value, degree_); }

private:
    std::uint64_t degree_;
    FieldElement f_;
    FieldElement a_;
    FieldElement unreadB_;
};

/// A result before its operation, and its value after it.
class SmallResult {
public:
    explicit SmallResult(const CoreCurve& curve) : record_(pointAtInfinity(), 48, curve.degree()) {}

    operator core::CurvePoint&() { return record_; }  // NOLINT(google-explicit-constructor)

    SmallPoint value() const {
        if (core::pointIsInfinity(record_)) {
            return {.x = 0, .y = 0, .infinity = true};
        }
        return {.x = static_cast<unsigned>(record_->x->words[0]),
                .y = static_cast<unsigned>(record_->y->words[0])};
    }

private:
    PointRecord record_;
};

class SmallCurves : public LeakCheckedTest, public testing::WithParamInterface<unsigned> {
protected:
    /// u1 * P + u2 * Q for all scalars up to the order.
    static void checkTwinMultiples(const CoreCurve& core, const OddSubgroup& group, std::size_t P,
                                   std::size_t Q) {
        const PointRecord first = core.record(group.point(P));
        const PointRecord second = core.record(group.point(Q));
        for (unsigned u1 = 0; u1 <= group.order(); ++u1) {
            for (unsigned u2 = 0; u2 <= group.order(); ++u2) {
                SmallResult out(core);
                core::pointMultiplyTwin(first, second, core.scalar(u1), core.scalar(u2), out,
                                        core.coefficients(), core.f());
                const std::size_t sum = group.sum(group.multiple(u1, P), group.multiple(u2, Q));
                ASSERT_EQ(out.value(), group.point(sum))
                    << u1 << " * " << group.point(P) << " + " << u2 << " * " << group.point(Q);
            }
        }
    }
};

TEST_P(SmallCurves, HaveAJudgeWhoseLawIsAGroup) {
    const SmallCurve curve = curvesOfLargeOddOrder(GetParam()).front();
    const std::vector<SmallPoint> points = curve.points();
    for (const SmallPoint& P : points) {
        EXPECT_TRUE(curve.add(P, SmallCurve::negative(P)).infinity);
        for (const SmallPoint& Q : points) {
            const SmallPoint sum = curve.add(P, Q);
            ASSERT_TRUE(curve.isOnCurve(sum));
            ASSERT_EQ(sum, curve.add(Q, P));
            const SmallPoint R = points.back();
            ASSERT_EQ(curve.add(sum, R), curve.add(P, curve.add(Q, R)));
        }
    }
}

TEST_P(SmallCurves, AddEveryPairOfPoints) {
    for (const SmallCurve& curve : curvesOfLargeOddOrder(GetParam())) {
        const OddSubgroup group(curve);
        const CoreCurve core(curve);
        ASSERT_GT(group.order(), 5U);
        for (std::size_t i = 0; i < group.order(); ++i) {
            for (std::size_t j = 0; j < group.order(); ++j) {
                SmallResult out(core);
                core::pointAdd(core.record(group.point(i)), core.record(group.point(j)),
                               core.coefficients(), out, core.f());
                ASSERT_EQ(out.value(), group.point(group.sum(i, j)))
                    << group.point(i) << " + " << group.point(j);
            }
        }
    }
}

TEST_P(SmallCurves, DoubleEveryPoint) {
    for (const SmallCurve& curve : curvesOfLargeOddOrder(GetParam())) {
        const OddSubgroup group(curve);
        const CoreCurve core(curve);
        for (std::size_t i = 0; i < group.order(); ++i) {
            SmallResult out(core);
            core::pointDouble(core.record(group.point(i)), core.coefficients(), out, core.f());
            EXPECT_EQ(out.value(), group.point(group.sum(i, i))) << "2 * " << group.point(i);
        }
    }
}

TEST_P(SmallCurves, TellEveryPointFromItsNegativeAndFromOthers) {
    for (const SmallCurve& curve : curvesOfLargeOddOrder(GetParam())) {
        const OddSubgroup group(curve);
        const CoreCurve core(curve);
        for (std::size_t i = 0; i < group.order(); ++i) {
            for (std::size_t j = 0; j < group.order(); ++j) {
                const int expected = i == j ? 1 : group.sum(i, j) == 0 ? -1 : 0;
                EXPECT_EQ(
                    core::pointCompare(core.record(group.point(i)), core.record(group.point(j))),
                    expected)
                    << group.point(i) << " " << group.point(j);
            }
        }
    }
}

TEST_P(SmallCurves, MultiplyEveryPointByEveryScalar) {
    for (const SmallCurve& curve : curvesOfLargeOddOrder(GetParam())) {
        const OddSubgroup group(curve);
        const CoreCurve core(curve);
        for (std::size_t i = 0; i < group.order(); ++i) {
            const PointRecord P = core.record(group.point(i));
            for (unsigned k = 1; k < 1U << core.degree(); ++k) {
                SmallResult out(core);
                core::pointMultiply(core.scalar(k), P, core.coefficients(), out, core.f());
                ASSERT_EQ(out.value(), group.point(group.multiple(k, i)))
                    << k << " * " << group.point(i);
            }
        }
    }
}

TEST_P(SmallCurves, SumEveryTwoMultiplesOfAGeneratorAndAnyPoint) {
    const SmallCurve curve = curvesOfLargeOddOrder(GetParam()).front();
    const OddSubgroup group(curve);
    const CoreCurve core(curve);
    const std::size_t generator = group.generator();
    ASSERT_NE(generator, 0U);
    for (std::size_t Q = 0; Q < group.order(); ++Q) {
        checkTwinMultiples(core, group, generator, Q);
    }
}

TEST_P(SmallCurves, SumEveryTwoMultiplesOfEveryTwoPoints) {
    // With points of the orders 3, 5 and 15.
    const SmallCurve curve = curveOfOddOrder(GetParam(), 15);
    const OddSubgroup group(curve);
    const CoreCurve core(curve);
    for (std::size_t P = 0; P < group.order(); ++P) {
        for (std::size_t Q = 0; Q < group.order(); ++Q) {
            checkTwinMultiples(core, group, P, Q);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Degree, SmallCurves, testing::Values(5U, 6U, 7U),
                         testing::PrintToStringParamName());

}  // namespace
