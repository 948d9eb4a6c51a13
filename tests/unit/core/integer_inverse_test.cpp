#include <gtest/gtest.h>

#include "core/integer.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"
#include "tests/unit/core/integer_operands.h"

namespace {

using core::CoreInteger;

using IntegerModularInverse = LeakCheckedTest;

/// Checks the outcome for a above and below the modulus alike.
void checkInverse(const BigNumber& a, const BigNumber& modulus) {
    const BigNumber expected = a.inverseModulo(modulus);
    const CoreInteger value = a.toInteger();
    const CoreInteger modulusValue = modulus.toInteger();
    CoreInteger result = usedResult();
    const bool found = core::integerModularInverse(value, modulusValue, result);
    EXPECT_EQ(found, !expected.isZero()) << a << " modulo " << modulus;
    EXPECT_TRUE(isNormalValue(result, expected)) << a << " modulo " << modulus;
    EXPECT_TRUE(isSame(value, a.toInteger()));
    EXPECT_TRUE(isSame(modulusValue, modulus.toInteger()));
}

TEST_F(IntegerModularInverse, OfAllSmallPairsAgreesWithTheJudge) {
    for (std::uint64_t modulus = 2; modulus <= 60; ++modulus) {
        for (std::uint64_t a = 0; a <= 2 * modulus; ++a) {
            checkInverse(a, modulus);
        }
    }
}

TEST_F(IntegerModularInverse, OfEdgeOperandsAgreesWithTheJudge) {
    const std::vector<BigNumber> edges = edgeNumbers(3);
    for (const BigNumber& a : edges) {
        for (const BigNumber& modulus : edges) {
            if (modulus > BigNumber(1)) {
                checkInverse(a, modulus);
            }
        }
    }
}

TEST_F(IntegerModularInverse, OfRandomOperandsAgreesWithTheJudge) {
    for (int i = 0; i < 10000; ++i) {
        const BigNumber modulus = randomNumber(5) + 2;
        checkInverse(randomNumber(5), modulus);
    }
    for (int i = 0; i < 100; ++i) {
        const BigNumber modulus = randomNumber(20) + 2;
        checkInverse(randomNumber(20), modulus);
    }
}

TEST_F(IntegerModularInverse, OfLongOperandsAgreesWithTheJudge) {
    // Together they have as many limbs as an integer has room for, or more.
    for (const auto& [limbs, modulusLimbs] : {std::pair(128U, 128U), {100U, 200U}, {254U, 254U}}) {
        checkInverse(randomNumber(limbs), randomNumber(modulusLimbs) + 2);
    }
}

TEST_F(IntegerModularInverse, OfSmallValuesAgreesWithTheDefinition) {
    const auto inverse = [](std::uint64_t a) {
        CoreInteger result = usedResult();
        const bool found =
            core::integerModularInverse(BigNumber(a).toInteger(), BigNumber(9).toInteger(), result);
        return std::pair(found, BigNumber::fromInteger(result));
    };
    EXPECT_EQ(inverse(0), std::pair(false, BigNumber(0)));
    EXPECT_EQ(inverse(1), std::pair(true, BigNumber(1)));
    EXPECT_EQ(inverse(2), std::pair(true, BigNumber(5)));
    EXPECT_EQ(inverse(6), std::pair(false, BigNumber(0)));
    EXPECT_EQ(inverse(9), std::pair(false, BigNumber(0)));
    EXPECT_EQ(inverse(10), std::pair(true, BigNumber(1)));
}

TEST_F(IntegerModularInverse, ModuloOneOrZero) {
    CoreInteger result = usedResult();
    EXPECT_TRUE(core::integerModularInverse(core::integerOne, BigNumber(1).toInteger(), result));
    EXPECT_TRUE(isNormalValue(result, 0));
    result = usedResult();
    EXPECT_FALSE(core::integerModularInverse(BigNumber(5).toInteger(), CoreInteger{}, result));
    EXPECT_TRUE(isNormalValue(result, 0));
}

TEST_F(IntegerModularInverse, EndsForZeroTopLimbs) {
    // The order of the curve's subgroup: SEC 2 version 2.0, section 3.2.3.
    const BigNumber order = BigNumber::fromHexadecimal("40000000000000000000292FE77E70C12A4234C33");
    for (unsigned i = 0; i < 300; ++i) {
        const BigNumber a = randomNumber(3) % order;
        const CoreInteger longA = withZeroTop(a.toInteger(), i % 4);
        const CoreInteger longOrder = withZeroTop(order.toInteger(), i / 4 % 3);
        CoreInteger result = usedResult();
        EXPECT_EQ(core::integerModularInverse(longA, longOrder, result), !a.isZero());
        EXPECT_TRUE(isNormalValue(result, a.inverseModulo(order))) << a;
    }
    CoreInteger result = usedResult();
    EXPECT_FALSE(core::integerModularInverse(rawInteger({0, 0}), order.toInteger(), result));
    EXPECT_TRUE(isNormalValue(result, 0));
    EXPECT_TRUE(core::integerModularInverse(rawInteger({1, 0, 0}), order.toInteger(), result));
    EXPECT_TRUE(isNormalValue(result, 1));
}

}  // namespace
