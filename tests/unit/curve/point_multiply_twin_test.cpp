#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "curve/field.h"
#include "curve/point.h"
#include "curve/sect163r2.h"
#include "tests/support/curve_keys.h"
#include "tests/support/leak_check.h"
#include "tests/support/libcrypto_curve.h"
#include "tests/support/random_operands.h"

namespace {

using core::FieldElement;

using PointMultiplyTwin = LeakCheckedTest;

AffinePoint twin(const FieldElement& u1, const AffinePoint& P, const FieldElement& u2,
                 const AffinePoint& Q) {
    PointRecord out(pointAtInfinity());
    core::pointMultiplyTwin(PointRecord(P), PointRecord(Q), u1, u2, out,
                            core::sect163r2.coefficients,
                            core::sect163r2.domain.reductionPolynomial);
    return affineFrom(out);
}

AffinePoint twin(const BigNumber& u1, const AffinePoint& P, const BigNumber& u2,
                 const AffinePoint& Q) {
    return twin(elementFrom(u1), P, elementFrom(u2), Q);
}

TEST_F(PointMultiplyTwin, WithAZeroScalarIsTheOtherMultiple) {
    const CurveJudge judge;
    const AffinePoint P = judge.randomPoint();
    const AffinePoint Q = judge.randomPoint();
    for (int i = 0; i < 20; ++i) {
        const BigNumber u = judge.randomScalar();
        EXPECT_EQ(twin(0, P, u, Q), judge.multiply(u, Q));
        EXPECT_EQ(twin(u, P, 0, Q), judge.multiply(u, P));
    }
    EXPECT_EQ(twin(0, P, 0, Q), pointAtInfinity());
    EXPECT_EQ(twin(1, P, 0, Q), P);
    EXPECT_EQ(twin(0, P, 1, Q), Q);
}

TEST_F(PointMultiplyTwin, OfRandomScalarsMatchesTheJudge) {
    const CurveJudge published;
    for (int i = 0; i < 1000; ++i) {
        const CurveJudge judge(published.randomPoint());
        const AffinePoint Q = judge.randomPoint();
        const BigNumber u1 = judge.randomScalar();
        const BigNumber u2 = judge.randomScalar();
        ASSERT_EQ(twin(u1, judge.basePoint(), u2, Q), judge.multiplyTwin(u1, u2, Q))
            << u1 << " * " << judge.basePoint() << " + " << u2 << " * " << Q;
    }
}

TEST_F(PointMultiplyTwin, OfEdgeScalarsMatchesTheJudge) {
    const CurveJudge judge(CurveJudge().randomPoint());
    const AffinePoint Q = judge.randomPoint();
    const BigNumber n = curveOrder();
    const BigNumber ones = BigNumber::powerOfTwo(163) - 1;
    const std::vector<BigNumber> edges = {0,
                                          1,
                                          2,
                                          3,
                                          4,
                                          n - 1,
                                          n,
                                          n + 1,
                                          n >> 1,
                                          BigNumber::powerOfTwo(31),
                                          BigNumber::powerOfTwo(32),
                                          BigNumber::powerOfTwo(64),
                                          BigNumber::powerOfTwo(128) - 1,
                                          BigNumber::powerOfTwo(162),
                                          ones,
                                          ones / 3,
                                          ones / 7};
    for (const BigNumber& u1 : edges) {
        for (const BigNumber& u2 : edges) {
            ASSERT_EQ(twin(u1, judge.basePoint(), u2, Q), judge.multiplyTwin(u1, u2, Q))
                << u1 << ", " << u2;
        }
    }
}

TEST_F(PointMultiplyTwin, OfRelatedPointsMatchesTheJudge) {
    // Their small multiples meet in the table of sums.
    const CurveJudge judge(CurveJudge().randomPoint());
    const AffinePoint P = judge.basePoint();
    const BigNumber n = curveOrder();
    const BigNumber half = (n + 1) >> 1;
    for (const BigNumber& factor :
         {BigNumber(1), BigNumber(2), BigNumber(3), n - 1, n - 2, n - 3, half, n - half}) {
        const AffinePoint Q = judge.multiply(factor, P);
        for (int i = 0; i < 5; ++i) {
            const BigNumber u1 = judge.randomScalar();
            const BigNumber u2 = judge.randomScalar();
            EXPECT_EQ(twin(u1, P, u2, Q), judge.multiplyTwin(u1, u2, Q)) << factor;
        }
        // u1 + factor * u2 = n.
        const BigNumber u2 = judge.randomScalar();
        EXPECT_EQ(twin(n - factor * u2 % n, P, u2, Q), pointAtInfinity()) << factor;
    }
}

TEST_F(PointMultiplyTwin, OfInfinityCountsItAsZero) {
    const CurveJudge judge;
    const AffinePoint P = judge.randomPoint();
    const BigNumber u = judge.randomScalar();
    EXPECT_EQ(twin(u, P, 5, pointAtInfinity()), judge.multiply(u, P));
    EXPECT_EQ(twin(5, pointAtInfinity(), u, P), judge.multiply(u, P));
    EXPECT_EQ(twin(5, pointAtInfinity(), 7, pointAtInfinity()), pointAtInfinity());
}

TEST_F(PointMultiplyTwin, TakesTheWidthOfBothScalarsFromTheFirst) {
    const CurveJudge judge(CurveJudge().randomPoint());
    const AffinePoint P = judge.basePoint();
    const AffinePoint Q = judge.randomPoint();
    for (const std::uint64_t degree : {1U, 31U, 32U, 33U, 64U, 65U, 96U, 160U, 163U, 192U}) {
        const BigNumber width = BigNumber::powerOfTwo((degree + 31) / 32 * 32);
        FieldElement u1 = usedElement(degree, 48);
        FieldElement u2 = usedElement(163, 48);
        const BigNumber first = contentOf(u1) % width;
        const BigNumber second = contentOf(u2) % width;
        EXPECT_EQ(twin(u1, P, u2, Q), judge.multiplyTwin(first, second, Q)) << degree;
    }
}

TEST_F(PointMultiplyTwin, MixesCapacities) {
    const CurveJudge published;
    for (unsigned mix = 0; mix < 27; ++mix) {
        const CurveJudge judge(published.randomPoint());
        const AffinePoint Q = judge.randomPoint();
        const BigNumber u1 = judge.randomScalar();
        const BigNumber u2 = judge.randomScalar();
        const PointRecord first(judge.basePoint(), programCapacities[mix % 3]);
        const PointRecord second(Q, programCapacities[mix / 3 % 3]);
        PointRecord out(pointAtInfinity(), programCapacities[mix / 9]);
        core::pointMultiplyTwin(first, second, elementFrom(u1), elementFrom(u2), out,
                                core::sect163r2.coefficients,
                                core::sect163r2.domain.reductionPolynomial);
        EXPECT_EQ(affineFrom(out), judge.multiplyTwin(u1, u2, Q));
    }
}

}  // namespace
