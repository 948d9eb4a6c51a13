#include <gtest/gtest.h>

#include "core/integer.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"
#include "tests/unit/core/integer_operands.h"

namespace {

using core::CoreInteger;

using Operation = void (*)(const CoreInteger&, const CoreInteger&, CoreInteger&);

CoreInteger resultOf(Operation operation, const CoreInteger& a, const CoreInteger& b) {
    CoreInteger result = usedResult();
    operation(a, b, result);
    return result;
}

/// Whether the sum and the difference of all four pairs of signs are the judge's.
void checkSums(const BigNumber& a, const BigNumber& b) {
    for (unsigned signs = 0; signs < 4; ++signs) {
        const BigNumber first = withSign(a, signs);
        const BigNumber second = withSign(b, signs >> 1);
        const CoreInteger firstValue = first.toInteger();
        const CoreInteger secondValue = second.toInteger();
        EXPECT_TRUE(
            isNormalValue(resultOf(core::integerAdd, firstValue, secondValue), first + second))
            << first << " + " << second;
        EXPECT_TRUE(
            isNormalValue(resultOf(core::integerSubtract, firstValue, secondValue), first - second))
            << first << " - " << second;
        EXPECT_TRUE(isSame(firstValue, first.toInteger()));
        EXPECT_TRUE(isSame(secondValue, second.toInteger()));
    }
}

using IntegerSums = LeakCheckedTest;

TEST_F(IntegerSums, OfEdgeOperandsAgreeWithTheJudge) {
    const std::vector<BigNumber> edges = edgeNumbers(6);
    for (const BigNumber& a : edges) {
        for (const BigNumber& b : edges) {
            checkSums(a, b);
        }
    }
}

TEST_F(IntegerSums, OfRandomOperandsAgreeWithTheJudge) {
    for (int i = 0; i < 20000; ++i) {
        const BigNumber a = randomNumber(20);
        // Now and then operands that differ in their lowest limb only.
        checkSums(a, i % 4 == 0 ? a + randomBelow(3) : randomNumber(20));
    }
}

TEST(IntegerAdd, CarriesThroughAllLimbsIntoANewOne) {
    for (std::uint64_t limbs = 1; limbs <= 20; ++limbs) {
        const BigNumber power = BigNumber::powerOfTwo(64 * limbs);
        const CoreInteger sum =
            resultOf(core::integerAdd, (power - 1).toInteger(), core::integerOne);
        EXPECT_TRUE(isNormalValue(sum, power));
        EXPECT_EQ(sum.lengthAndSign, limbs + 1);
    }
}

TEST(IntegerAdd, AcceptsZeroTopLimbs) {
    const CoreInteger five = withZeroTop(BigNumber(5).toInteger(), 2);
    const CoreInteger big = BigNumber::fromLimbs({~std::uint64_t{0}, 1}).toInteger();
    for (const auto& [a, b] : {std::pair(&five, &big), std::pair(&big, &five)}) {
        const CoreInteger sum = resultOf(core::integerAdd, *a, *b);
        EXPECT_EQ(BigNumber::fromInteger(sum), BigNumber::fromLimbs({4, 2}));
        // The length of the longer operand stays.
        EXPECT_EQ(sum.lengthAndSign, 3U);
    }
    const CoreInteger sum = resultOf(core::integerAdd, five, CoreInteger{});
    EXPECT_EQ(BigNumber::fromInteger(sum), BigNumber(5));
}

TEST(IntegerAdd, KeepsTheCapacityOfTheResult) {
    CoreInteger result;
    result.capacity = 3;
    core::integerAdd(core::integerOne, core::integerOne, result);
    EXPECT_EQ(result.capacity, 3U);
    core::integerSubtract(core::integerOne, core::integerOne, result);
    EXPECT_EQ(result.capacity, 3U);
}

TEST(IntegerSubtract, BorrowsUpToTheTopOfTheLongerOperand) {
    // Zero top limbs make 5 count as the greater.
    const CoreInteger five = withZeroTop(BigNumber(5).toInteger(), 2);
    EXPECT_TRUE(isNormalValue(resultOf(core::integerSubtract, five, BigNumber(9).toInteger()),
                              BigNumber::powerOfTwo(192) - 4));
}

TEST(IntegerSubtract, OfZeroCopiesTheMinuendAsItStands) {
    const CoreInteger five = withZeroTop(BigNumber(5).toInteger(), 2);
    const CoreInteger difference = resultOf(core::integerSubtract, five, CoreInteger{});
    EXPECT_EQ(BigNumber::fromInteger(difference), BigNumber(5));
    EXPECT_EQ(difference.lengthAndSign, 3U);
}

TEST(IntegerSubtract, GivesNegativeAndZeroResults) {
    const CoreInteger seven = BigNumber(7).toInteger();
    EXPECT_TRUE(isNormalValue(resultOf(core::integerSubtract, BigNumber(5).toInteger(), seven),
                              -BigNumber(2)));
    EXPECT_EQ(resultOf(core::integerSubtract, seven, seven).lengthAndSign, 0U);
    const CoreInteger otherSeven = seven;
    EXPECT_EQ(resultOf(core::integerSubtract, seven, otherSeven).lengthAndSign, 0U);
    const CoreInteger negative = (-BigNumber(7)).toInteger();
    EXPECT_EQ(resultOf(core::integerAdd, negative, seven).lengthAndSign, 0U);
    EXPECT_EQ(resultOf(core::integerSubtract, negative, negative).lengthAndSign, 0U);
}

TEST(IntegerSubtract, BorrowsThroughAllLimbsAndShortens) {
    for (std::uint64_t limbs = 1; limbs <= 20; ++limbs) {
        const BigNumber power = BigNumber::powerOfTwo(64 * limbs);
        const CoreInteger difference =
            resultOf(core::integerSubtract, power.toInteger(), core::integerOne);
        EXPECT_TRUE(isNormalValue(difference, power - 1));
        EXPECT_EQ(difference.lengthAndSign, limbs);
    }
}

}  // namespace
