#include <gtest/gtest.h>

#include <cstdint>
#include <optional>

#include "curve/field.h"
#include "curve/point.h"
#include "curve/sect163r2.h"
#include "tests/support/leak_check.h"
#include "tests/support/libcrypto_curve.h"
#include "tests/support/random_operands.h"

namespace {

using core::FieldElement;

using PointAdd = LeakCheckedTest;
using PointDouble = LeakCheckedTest;

const core::CurveCoefficients& coefficients() {
    return core::sect163r2.coefficients;
}

const FieldElement& polynomial() {
    return core::sect163r2.domain.reductionPolynomial;
}

AffinePoint sum(const AffinePoint& P, const AffinePoint& Q) {
    PointRecord out(pointAtInfinity());
    core::pointAdd(PointRecord(P), PointRecord(Q), coefficients(), out, polynomial());
    return affineFrom(out);
}

AffinePoint twice(const AffinePoint& P) {
    PointRecord out(pointAtInfinity());
    core::pointDouble(PointRecord(P), coefficients(), out, polynomial());
    return affineFrom(out);
}

TEST_F(PointAdd, OfRandomPointsMatchesTheJudge) {
    const CurveJudge judge;
    for (int i = 0; i < 3000; ++i) {
        const AffinePoint P = judge.randomPoint();
        const AffinePoint Q = judge.randomPoint();
        const AffinePoint expected = judge.add(P, Q);
        ASSERT_EQ(sum(P, Q), expected) << P << " + " << Q;
        ASSERT_EQ(sum(Q, P), expected) << Q << " + " << P;
    }
}

TEST_F(PointAdd, MixesCapacities) {
    const CurveJudge judge;
    for (unsigned mix = 0; mix < 27; ++mix) {
        const AffinePoint P = judge.randomPoint();
        const AffinePoint Q = judge.randomPoint();
        PointRecord first(P, programCapacities[mix % 3]);
        PointRecord second(Q, programCapacities[mix / 3 % 3]);
        PointRecord out(pointAtInfinity(), programCapacities[mix / 9]);
        core::pointAdd(first, second, coefficients(), out, polynomial());
        EXPECT_EQ(affineFrom(out), judge.add(P, Q));
        core::pointDouble(first, coefficients(), out, polynomial());
        EXPECT_EQ(affineFrom(out), judge.twice(P));
        // The operands stay.
        EXPECT_EQ(affineFrom(first), P);
        EXPECT_EQ(affineFrom(second), Q);
    }
}

TEST_F(PointAdd, OfPointsOffTheSubgroupMatchesTheJudge) {
    // The published point of order 2 is (0, sqrt(b)); with it every point has a partner of order
    // 2n.
    const CurveJudge judge;
    const AffinePoint order2 = *judge.pointWithX(0);
    for (int i = 0; i < 100; ++i) {
        const AffinePoint P = judge.randomPoint();
        EXPECT_EQ(sum(P, order2), judge.add(P, order2));
        EXPECT_EQ(sum(order2, P), judge.add(order2, P));
        const AffinePoint Q = judge.add(P, order2);
        EXPECT_EQ(twice(Q), judge.twice(P));
    }
}

TEST_F(PointAdd, OfInfinityGivesTheOtherPoint) {
    const AffinePoint P = CurveJudge().randomPoint();
    EXPECT_EQ(sum(pointAtInfinity(), P), P);
    EXPECT_EQ(sum(P, pointAtInfinity()), P);
    EXPECT_EQ(sum(pointAtInfinity(), pointAtInfinity()), pointAtInfinity());
}

TEST_F(PointAdd, OfTwoInfinitiesCopiesTheSecond) {
    PointRecord first(pointAtInfinity());
    PointRecord second(pointAtInfinity());
    second->flags |= otherFlags;
    const AffinePoint before = CurveJudge().randomPoint();
    PointRecord out(before);
    core::pointAdd(first, second, coefficients(), out, polynomial());
    EXPECT_EQ(out->flags, otherFlags | core::pointInfinity);
    EXPECT_EQ(valueOf(*out->x), before.x);
    EXPECT_EQ(valueOf(*out->y), before.y);
}

TEST_F(PointAdd, OfAPointAndItsNegativeMarksInfinityAlone) {
    const CurveJudge judge;
    for (int i = 0; i < 50; ++i) {
        const AffinePoint P = judge.randomPoint();
        const AffinePoint before = judge.randomPoint();
        PointRecord out(before);
        out->flags = otherFlags;
        core::pointAdd(PointRecord(P), PointRecord(judge.negative(P)), coefficients(), out,
                       polynomial());
        EXPECT_EQ(out->flags, otherFlags | core::pointInfinity);
        EXPECT_EQ(valueOf(*out->x), before.x);
        EXPECT_EQ(valueOf(*out->y), before.y);
    }
}

TEST_F(PointAdd, OfAPointAndItselfIsItsDouble) {
    const CurveJudge judge;
    for (int i = 0; i < 200; ++i) {
        const AffinePoint P = judge.randomPoint();
        EXPECT_EQ(sum(P, P), judge.twice(P));
        EXPECT_EQ(sum(P, P), twice(P));
    }
}

TEST_F(PointAdd, DoublesForTheNegativeOfAPointWithAShortX) {
    // Such a point compares as its own negative.
    const CurveJudge judge;
    std::optional<AffinePoint> P;
    while (!P.has_value()) {
        P = judge.pointWithX(randomPolynomial(126) + BigNumber::powerOfTwo(127));
    }
    EXPECT_EQ(sum(*P, judge.negative(*P)), judge.twice(*P));
}

TEST_F(PointAdd, ClearsTheInfinityFlagAlone) {
    const CurveJudge judge;
    PointRecord out(pointAtInfinity());
    out->flags |= otherFlags;
    const PointRecord P(judge.randomPoint());
    core::pointAdd(P, PointRecord(judge.randomPoint()), coefficients(), out, polynomial());
    EXPECT_EQ(out->flags, otherFlags);
    out->flags |= core::pointInfinity;
    core::pointDouble(P, coefficients(), out, polynomial());
    EXPECT_EQ(out->flags, otherFlags);
}

TEST_F(PointAdd, ReadsCoefficientAAndNotB) {
    const CurveJudge judge;
    const AffinePoint P = judge.randomPoint();
    const AffinePoint Q = judge.randomPoint();
    const FieldElement other = usedElement();
    PointRecord out(pointAtInfinity());
    core::pointAdd(PointRecord(P), PointRecord(Q), {.a = coefficients().a, .b = other}, out,
                   polynomial());
    EXPECT_EQ(affineFrom(out), judge.add(P, Q));
    // x of a sum contains a as a term.
    const BigNumber a = randomPolynomial(163);
    const FieldElement changed = elementFrom(a);
    core::pointAdd(PointRecord(P), PointRecord(Q), {.a = changed, .b = other}, out, polynomial());
    EXPECT_EQ(valueOf(*out->x), polynomialSum(polynomialSum(judge.add(P, Q).x, 1), a));
    core::pointDouble(PointRecord(P), {.a = changed, .b = other}, out, polynomial());
    EXPECT_EQ(valueOf(*out->x), polynomialSum(polynomialSum(judge.twice(P).x, 1), a));
}

TEST_F(PointAdd, IsAssociative) {
    const CurveJudge judge;
    for (int i = 0; i < 200; ++i) {
        const AffinePoint P = judge.randomPoint();
        const AffinePoint Q = judge.randomPoint();
        const AffinePoint R = judge.randomPoint();
        EXPECT_EQ(sum(sum(P, Q), R), sum(P, sum(Q, R)));
    }
}

TEST_F(PointDouble, OfRandomPointsMatchesTheJudge) {
    const CurveJudge judge;
    for (int i = 0; i < 3000; ++i) {
        const AffinePoint P = judge.randomPoint();
        ASSERT_EQ(twice(P), judge.twice(P)) << "2 * " << P;
    }
}

TEST_F(PointDouble, OfInfinityMarksInfinityAlone) {
    const AffinePoint before = CurveJudge().randomPoint();
    PointRecord out(before);
    out->flags = otherFlags;
    core::pointDouble(PointRecord(pointAtInfinity()), coefficients(), out, polynomial());
    EXPECT_EQ(out->flags, otherFlags | core::pointInfinity);
    EXPECT_EQ(valueOf(*out->x), before.x);
    EXPECT_EQ(valueOf(*out->y), before.y);
}

TEST_F(PointDouble, OfThePointOfOrderTwoReturns) {
    const AffinePoint order2 = *CurveJudge().pointWithX(0);
    PointRecord out(pointAtInfinity());
    core::pointDouble(PointRecord(order2), coefficients(), out, polynomial());
    EXPECT_FALSE(core::pointIsInfinity(out));
}

TEST_F(PointDouble, OfAnXThatIsAMultipleOfThePolynomialReturns) {
    const BigNumber f = curvePolynomial();
    for (const std::uint64_t shift : {0U, 1U, 28U}) {
        PointRecord out(pointAtInfinity());
        core::pointDouble(PointRecord({.x = f << shift, .y = randomPolynomial(192)}),
                          coefficients(), out, polynomial());
        EXPECT_FALSE(core::pointIsInfinity(out));
    }
}

}  // namespace
