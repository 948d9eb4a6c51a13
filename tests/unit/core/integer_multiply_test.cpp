#include <gtest/gtest.h>

#include "core/integer.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"
#include "tests/unit/core/integer_operands.h"

namespace {

using core::CoreInteger;

using IntegerMultiply = LeakCheckedTest;

CoreInteger product(const CoreInteger& a, const CoreInteger& b) {
    CoreInteger result = usedResult();
    core::integerMultiply(a, b, result);
    return result;
}

TEST_F(IntegerMultiply, OfEdgeOperandsAgreesWithTheJudge) {
    const std::vector<BigNumber> edges = edgeNumbers(12);
    for (const BigNumber& a : edges) {
        for (const BigNumber& b : edges) {
            EXPECT_TRUE(isNormalValue(product(a.toInteger(), b.toInteger()), a * b))
                << a << " * " << b;
        }
    }
}

TEST_F(IntegerMultiply, OfRandomOperandsAgreesWithTheJudge) {
    for (unsigned i = 0; i < 20000; ++i) {
        const BigNumber a = withSign(randomNumber(20), i);
        const BigNumber b = withSign(randomNumber(20), i >> 1);
        EXPECT_TRUE(isNormalValue(product(a.toInteger(), b.toInteger()), a * b)) << a << " * " << b;
    }
}

TEST_F(IntegerMultiply, FillsTheWholeRoom) {
    const BigNumber largest = BigNumber::powerOfTwo(8192) - 1;
    EXPECT_TRUE(
        isNormalValue(product(largest.toInteger(), largest.toInteger()), largest * largest));
}

TEST_F(IntegerMultiply, ByZeroIsZeroWithoutASign) {
    const CoreInteger minusFive = (-BigNumber(5)).toInteger();
    EXPECT_EQ(product(minusFive, CoreInteger{}).lengthAndSign, 0U);
    EXPECT_EQ(product(CoreInteger{}, minusFive).lengthAndSign, 0U);
    EXPECT_EQ(product(minusFive, rawInteger({0, 0})).lengthAndSign, 0U);
}

TEST_F(IntegerMultiply, AcceptsZeroTopLimbsAndGivesANormalProduct) {
    for (unsigned i = 0; i < 2000; ++i) {
        const BigNumber a = randomNumber(6);
        const BigNumber b = withSign(randomNumber(6), i);
        const CoreInteger longA = withZeroTop(a.toInteger(), i % 4);
        const CoreInteger longB = withZeroTop(b.toInteger(), i / 4 % 4);
        EXPECT_TRUE(isNormalValue(product(longA, longB), a * b)) << a << " * " << b;
    }
}

TEST_F(IntegerMultiply, IsRightInAResultWhoseCapacityIsBelowItsLength) {
    CoreInteger result = rawInteger({7, 9, 11});
    result.capacity = 0;
    core::integerMultiply(BigNumber(3).toInteger(), BigNumber(5).toInteger(), result);
    EXPECT_EQ(BigNumber::fromInteger(result), BigNumber(15));
}

}  // namespace
