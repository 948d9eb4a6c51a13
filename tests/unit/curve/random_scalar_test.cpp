#include "curve/random_scalar.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "tests/support/curve_keys.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"

namespace {

using DrawScalar = LeakCheckedTest;

/// Draws from these numbers, one after the other.
BigNumber drawFrom(const std::vector<BigNumber>& candidates) {
    for (const BigNumber& candidate : candidates) {
        testHostPlayRandom(nonceDraw(candidate));
    }
    core::FieldElement k = usedElement();
    core::drawScalar(k, elementFrom(curveOrder()));
    EXPECT_EQ(testHostRandomLeft(), 0U) << "not every number was looked at";
    EXPECT_EQ(k.degree, 163U);
    return contentOf(k);
}

TEST_F(DrawScalar, TakesTheFirstNumberFromOneToOrderMinusOne) {
    const BigNumber n = curveOrder();
    for (const BigNumber& taken :
         {BigNumber(1), BigNumber(2), n - 1, n - 2, BigNumber::powerOfTwo(162)}) {
        EXPECT_EQ(drawFrom({taken}), taken);
    }
}

TEST_F(DrawScalar, PassesOverZeroAndWhatIsNotBelowTheOrder) {
    const BigNumber n = curveOrder();
    const BigNumber largest = BigNumber::powerOfTwo(163) - 1;
    EXPECT_EQ(drawFrom({0, 1}), BigNumber(1));
    EXPECT_EQ(drawFrom({0, 0, 5}), BigNumber(5));
    EXPECT_EQ(drawFrom({n, 7}), BigNumber(7));
    EXPECT_EQ(drawFrom({n + 1, largest, n - 1}), n - 1);
    EXPECT_EQ(drawFrom({largest, 0, n, 0, n + 5, 9}), BigNumber(9));
}

TEST_F(DrawScalar, IgnoresTheDrawnBitsThatTheFieldHasNoRoomFor) {
    // The low 29 bits of the last 32 go.
    Bytes draw = nonceDraw(5);
    for (std::size_t i = 20; i < 24; ++i) {
        draw[i] = 0xFF;
    }
    draw[23] = 0x1F;
    testHostPlayRandom(draw);
    core::FieldElement k = usedElement();
    core::drawScalar(k, elementFrom(curveOrder()));
    EXPECT_EQ(contentOf(k), BigNumber(5));
}

TEST_F(DrawScalar, RejectsAboutHalfOfTheDraws) {
    // n is a little above 2^162: of 2000 draws of 163 bits about 1000 survive, give or take 22.
    constexpr std::size_t draws = 2000;
    int taken = 0;
    testHostPlayRandom(randomBytes(24 * draws));
    while (testHostRandomLeft() >= 24) {
        core::FieldElement k = elementFrom(0);
        core::drawScalar(k, elementFrom(curveOrder()));
        EXPECT_LT(contentOf(k), curveOrder());
        EXPECT_GT(contentOf(k), BigNumber(0));
        ++taken;
    }
    EXPECT_GT(taken, 800);
    EXPECT_LT(taken, 1200);
}

TEST_F(DrawScalar, ReachesBothHalvesOfTheRange) {
    int low = 0;
    constexpr int draws = 400;
    for (int i = 0; i < draws; ++i) {
        core::FieldElement k = elementFrom(0);
        core::drawScalar(k, elementFrom(curveOrder()));
        low += contentOf(k) < (curveOrder() >> 1) ? 1 : 0;
    }
    EXPECT_GT(low, draws / 4);
    EXPECT_LT(low, draws * 3 / 4);
}

}  // namespace
