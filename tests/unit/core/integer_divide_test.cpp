#include <gtest/gtest.h>

#include "core/integer.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"
#include "tests/unit/core/integer_operands.h"

namespace {

using core::CoreInteger;

using IntegerDivide = LeakCheckedTest;

CoreInteger quotient(const CoreInteger& a, const CoreInteger& b) {
    CoreInteger result = usedResult();
    core::integerDivide(a, b, result);
    return result;
}

void checkDivision(const BigNumber& a, const BigNumber& b) {
    const CoreInteger dividend = a.toInteger();
    const CoreInteger divisor = b.toInteger();
    EXPECT_TRUE(isNormalValue(quotient(dividend, divisor), a / b)) << a << " / " << b;
    EXPECT_TRUE(isSame(dividend, a.toInteger()));
    EXPECT_TRUE(isSame(divisor, b.toInteger()));
}

TEST_F(IntegerDivide, OfEdgeOperandsAgreesWithTheJudge) {
    const std::vector<BigNumber> edges = edgeNumbers(6);
    for (const BigNumber& a : edges) {
        for (const BigNumber& b : edges) {
            if (!b.isZero()) {
                checkDivision(a, b);
            }
        }
    }
}

TEST_F(IntegerDivide, OfRandomOperandsAgreesWithTheJudge) {
    for (int i = 0; i < 20000; ++i) {
        const BigNumber b = randomNumber(20) + 1;
        checkDivision(randomNumber(20), b);
    }
}

TEST_F(IntegerDivide, OfMultiplesAndTheirNeighboursAgreesWithTheJudge) {
    for (int i = 0; i < 2000; ++i) {
        const BigNumber b = randomNumber(6) + 1;
        const BigNumber multiple = b * (randomNumber(6) + 1);
        checkDivision(multiple, b);
        checkDivision(multiple - 1, b);
        checkDivision(multiple + (b - 1), b);
    }
}

TEST_F(IntegerDivide, ByZeroGivesZeroAndForZeroOne) {
    EXPECT_TRUE(isNormalValue(quotient(BigNumber(5).toInteger(), CoreInteger{}), 0));
    EXPECT_TRUE(isNormalValue(quotient(CoreInteger{}, CoreInteger{}), 1));
    EXPECT_TRUE(isNormalValue(quotient(CoreInteger{}, BigNumber(5).toInteger()), 0));
    const CoreInteger signedZero{.lengthAndSign = core::integerSignBit};
    EXPECT_TRUE(isNormalValue(quotient(BigNumber(5).toInteger(), signedZero), 0));
    EXPECT_TRUE(isNormalValue(quotient(signedZero, BigNumber(5).toInteger()), 0));
    EXPECT_TRUE(isNormalValue(quotient(signedZero, CoreInteger{}), 0));
}

TEST_F(IntegerDivide, OfEqualValuesGivesOne) {
    const CoreInteger value = randomNumber(5).toInteger();
    const CoreInteger same = value;
    EXPECT_TRUE(isNormalValue(quotient(value, same), 1));
    EXPECT_TRUE(isNormalValue(quotient(value, value), 1));
}

TEST_F(IntegerDivide, OfANegativeByANonNegativeGivesZero) {
    EXPECT_TRUE(
        isNormalValue(quotient((-BigNumber(100)).toInteger(), BigNumber(7).toInteger()), 0));
    EXPECT_TRUE(isNormalValue(quotient((-BigNumber(100)).toInteger(), CoreInteger{}), 0));
}

TEST_F(IntegerDivide, EndsForANegativeDivisor) {
    const CoreInteger minusSeven = (-BigNumber(7)).toInteger();
    EXPECT_TRUE(isNormalValue(quotient(BigNumber(100).toInteger(), minusSeven), -BigNumber(14)));
    EXPECT_TRUE(isNormalValue(quotient(BigNumber(5).toInteger(), minusSeven), 0));
    EXPECT_TRUE(isNormalValue(quotient(CoreInteger{}, minusSeven), 0));
}

TEST_F(IntegerDivide, ComparesLengthsAsTheyStandAndDividesValues) {
    for (unsigned i = 0; i < 500; ++i) {
        const BigNumber a = randomNumber(5);
        const BigNumber b = randomNumber(3) + 1;
        const CoreInteger longA = withZeroTop(a.toInteger(), i % 4);
        const CoreInteger longB = withZeroTop(b.toInteger(), i / 4 % 4);
        const bool shorter = longA.lengthAndSign < longB.lengthAndSign;
        EXPECT_TRUE(isNormalValue(quotient(longA, longB), shorter ? 0 : a / b)) << a << " / " << b;
    }
    const CoreInteger longZero = rawInteger({0, 0});
    EXPECT_TRUE(isNormalValue(quotient(longZero, BigNumber(5).toInteger()), 0));
    EXPECT_TRUE(isNormalValue(quotient(BigNumber(5).toInteger(), longZero), 0));
    EXPECT_TRUE(isNormalValue(quotient(rawInteger({5, 0, 0}), longZero), 0));
    EXPECT_TRUE(isNormalValue(quotient(longZero, longZero), 1));
    EXPECT_TRUE(isNormalValue(quotient(longZero, CoreInteger{}), 0));
}

TEST_F(IntegerDivide, IsRightInAResultWhoseCapacityIsBelowItsLength) {
    CoreInteger result = rawInteger({7, 9});
    result.capacity = 0;
    core::integerDivide(BigNumber(100).toInteger(), BigNumber(5).toInteger(), result);
    EXPECT_EQ(BigNumber::fromInteger(result), BigNumber(20));
}

}  // namespace
