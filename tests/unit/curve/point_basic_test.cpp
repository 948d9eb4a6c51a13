#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "core/state.h"
#include "curve/field.h"
#include "curve/point.h"
#include "tests/support/leak_check.h"
#include "tests/support/libcrypto_curve.h"
#include "tests/support/random_operands.h"
#include "tests/support/stopped_core.h"

namespace {

using core::CurvePoint;
using core::pointCompare;

using PointNew = LeakCheckedTest;
using PointRelease = LeakCheckedTest;
using PointCopy = LeakCheckedTest;
using PointNegate = LeakCheckedTest;
using PointCompare = LeakCheckedTest;

TEST_F(PointNew, GivesZeroCoordinatesOfTheDegreeAndNoFlags) {
    CurvePoint point{.x = nullptr, .y = nullptr, .flags = 0xFF};
    core::pointNew(163, point);
    EXPECT_EQ(point.flags, 0U);
    for (const core::FieldElement* coordinate : {point.x, point.y}) {
        EXPECT_EQ(coordinate->degree, 163U);
        EXPECT_EQ(coordinate->capacity, 48U);
        EXPECT_EQ(contentOf(*coordinate), BigNumber(0));
    }
    core::pointRelease(point);
}

TEST_F(PointNew, MakesXFirst) {
    core::freeBlocks[0].size = core::coreArenaSize;
    CurvePoint point;
    core::pointNew(163, point);
    EXPECT_EQ(static_cast<void*>(point.x), core::coreArena);
    core::pointRelease(point);
    // The next test has an arena that is not carved.
    const StoppedCore restarted;
}

TEST_F(PointRelease, GivesBothElementsBackAndZeroesTheRecord) {
    const std::int64_t before = testHostLiveBlocks();
    CurvePoint point;
    core::pointNew(163, point);
    EXPECT_EQ(testHostLiveBlocks(), before + 2);
    point.flags = otherFlags | core::pointInfinity;
    core::pointRelease(point);
    EXPECT_EQ(testHostLiveBlocks(), before);
    EXPECT_EQ(point.x, nullptr);
    EXPECT_EQ(point.y, nullptr);
    EXPECT_EQ(point.flags, 0U);
}

TEST_F(PointCopy, TakesFlagsAndCoordinates) {
    const CurveJudge judge;
    for (const std::uint64_t from : programCapacities) {
        for (const std::uint64_t to : programCapacities) {
            const AffinePoint value = judge.randomPoint();
            PointRecord point(value, from);
            point->flags = otherFlags;
            PointRecord out(pointAtInfinity(), to);
            core::pointCopy(point, out);
            EXPECT_EQ(affineFrom(out), value);
            EXPECT_EQ(out->flags, otherFlags);
        }
    }
}

TEST_F(PointCopy, OfInfinityLeavesTheCoordinates) {
    PointRecord infinity(pointAtInfinity());
    infinity->flags |= otherFlags;
    const AffinePoint before = CurveJudge().randomPoint();
    PointRecord out(before);
    core::pointCopy(infinity, out);
    EXPECT_EQ(out->flags, otherFlags | core::pointInfinity);
    EXPECT_EQ(valueOf(*out->x), before.x);
    EXPECT_EQ(valueOf(*out->y), before.y);
}

TEST_F(PointNegate, MatchesTheJudgeAndUndoesItself) {
    const CurveJudge judge;
    for (int i = 0; i < 200; ++i) {
        const AffinePoint value = judge.randomPoint();
        PointRecord point(value, programCapacities.at(static_cast<std::size_t>(i) % 3));
        core::pointNegate(point);
        EXPECT_EQ(affineFrom(point), judge.negative(value));
        core::pointNegate(point);
        EXPECT_EQ(affineFrom(point), value);
    }
}

TEST_F(PointNegate, LeavesThePointWithXZero) {
    const BigNumber y = randomPolynomial(163);
    PointRecord point({.x = 0, .y = y});
    core::pointNegate(point);
    EXPECT_EQ(affineFrom(point), (AffinePoint{.x = 0, .y = y}));
}

TEST_F(PointNegate, LeavesTheCoordinatesOfInfinity) {
    PointRecord point(pointAtInfinity());
    const BigNumber y = valueOf(*point->y);
    core::pointNegate(point);
    EXPECT_EQ(valueOf(*point->y), y);
    EXPECT_EQ(point->flags, core::pointInfinity);
}

TEST(PointIsInfinity, IsBitZeroOfTheFlags) {
    EXPECT_FALSE(core::pointIsInfinity({.flags = 0}));
    EXPECT_TRUE(core::pointIsInfinity({.flags = 1}));
    EXPECT_FALSE(core::pointIsInfinity({.flags = ~std::uint64_t{1}}));
    EXPECT_TRUE(core::pointIsInfinity({.flags = ~std::uint64_t{0}}));
}

TEST_F(PointCompare, TellsInfinityFromAllElse) {
    const PointRecord infinity(pointAtInfinity());
    const PointRecord other(pointAtInfinity());
    const PointRecord point(CurveJudge().randomPoint());
    EXPECT_EQ(pointCompare(infinity, other), 1);
    EXPECT_EQ(pointCompare(infinity, point), 0);
    EXPECT_EQ(pointCompare(point, infinity), 0);
}

TEST_F(PointCompare, ReadsTheInfinityFlagAlone) {
    const AffinePoint value = CurveJudge().randomPoint();
    PointRecord flagged(value);
    flagged->flags = otherFlags;
    EXPECT_EQ(pointCompare(flagged, PointRecord(value)), 1);
    flagged->flags |= core::pointInfinity;
    EXPECT_EQ(pointCompare(flagged, PointRecord(value)), 0);
}

TEST_F(PointCompare, TellsAPointItsNegativeAndOthersApart) {
    const CurveJudge judge;
    for (int i = 0; i < 200; ++i) {
        const AffinePoint P = judge.randomPoint();
        const AffinePoint Q = judge.randomPoint();
        // Only a top word of x that is not zero tells a point from its negative.
        if (P.x.bitLength() <= 128) {
            continue;
        }
        const PointRecord record(P, programCapacities.at(static_cast<std::size_t>(i) % 3));
        EXPECT_EQ(
            pointCompare(record,
                         PointRecord(P, programCapacities.at(static_cast<std::size_t>(i) / 3 % 3))),
            1);
        EXPECT_EQ(pointCompare(record, PointRecord(judge.negative(P))), -1);
        EXPECT_EQ(pointCompare(PointRecord(judge.negative(P)), record), -1);
        EXPECT_EQ(pointCompare(record, PointRecord(Q)), 0);
    }
}

TEST_F(PointCompare, OfPointsThatDifferInOneWordOfYIsZero) {
    const AffinePoint P = CurveJudge().randomPoint();
    const PointRecord record(P);
    for (std::size_t word = 0; word < 3; ++word) {
        for (const BigNumber& y : {P.y, polynomialSum(P.x, P.y)}) {
            PointRecord other({.x = P.x, .y = y});
            // Differs from both y values.
            other->y->words[word] = ~P.y.toInteger().limbs[word];
            if (P.x.toInteger().limbs[word] == ~std::uint64_t{0}) {
                other->y->words[word] ^= 1;
            }
            EXPECT_EQ(pointCompare(record, other), 0) << word;
        }
    }
}

TEST_F(PointCompare, LetsTheTopWordOfYDecide) {
    // A mixture of words of y and x + y counts as the point whose top word it has.
    const AffinePoint P{.x = BigNumber::fromLimbs({1, 2, 4}), .y = BigNumber::fromLimbs({8, 8, 3})};
    const auto compareWithY = [&](const std::vector<std::uint64_t>& words) {
        return pointCompare(PointRecord(P),
                            PointRecord({.x = P.x, .y = BigNumber::fromLimbs(words)}));
    };
    EXPECT_EQ(compareWithY({8, 8, 3}), 1);
    EXPECT_EQ(compareWithY({9, 8, 3}), 1);
    EXPECT_EQ(compareWithY({8, 10, 3}), 1);
    EXPECT_EQ(compareWithY({9, 10, 3}), 1);
    EXPECT_EQ(compareWithY({8, 8, 7}), -1);
    EXPECT_EQ(compareWithY({9, 8, 7}), -1);
    EXPECT_EQ(compareWithY({9, 10, 7}), -1);
    EXPECT_EQ(compareWithY({10, 8, 3}), 0);
    EXPECT_EQ(compareWithY({8, 9, 3}), 0);
    EXPECT_EQ(compareWithY({8, 8, 2}), 0);
}

TEST_F(PointCompare, TakesTheNegativeForThePointWhenTheTopWordOfXIsZero) {
    const CurveJudge judge;
    int found = 0;
    for (std::uint64_t low = 2; found < 10; ++low) {
        const std::optional<AffinePoint> P =
            judge.pointWithX((BigNumber(low) << 64) + randomPolynomial(64));
        if (P.has_value()) {
            ++found;
            EXPECT_EQ(pointCompare(PointRecord(*P), PointRecord(judge.negative(*P))), 1);
        }
    }
}

TEST_F(PointCompare, OfCoordinatesOfDifferentDegreesIsZero) {
    const AffinePoint P = CurveJudge().randomPoint();
    PointRecord other(P);
    other->x->degree = 162;
    EXPECT_EQ(pointCompare(PointRecord(P), other), 0);
}

}  // namespace
