#include <gtest/gtest.h>

#include "core/integer.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"
#include "tests/unit/core/integer_operands.h"

namespace {

using core::CoreInteger;

using IntegerModulo = LeakCheckedTest;

/// Remainder in a third object and in the place of the operand, and what becomes of the operands.
void checkModulo(const BigNumber& a, const BigNumber& modulus) {
    const BigNumber expected = a % modulus;
    const CoreInteger modulusValue = modulus.toInteger();
    CoreInteger value = a.toInteger();
    CoreInteger result = usedResult();
    core::integerModulo(value, modulusValue, &result);
    EXPECT_TRUE(isNormalValue(result, expected)) << a << " mod " << modulus;
    EXPECT_TRUE(isSame(modulusValue, modulus.toInteger()));
    const bool inPlace = a > modulus && a.bitLength() == modulus.bitLength();
    EXPECT_TRUE(isNormalValue(value, inPlace ? expected : a)) << a << " mod " << modulus;

    value = a.toInteger();
    core::integerModulo(value, modulusValue, nullptr);
    EXPECT_TRUE(isNormalValue(value, expected)) << a << " mod " << modulus;
}

TEST_F(IntegerModulo, OfEdgeOperandsAgreesWithTheJudge) {
    const std::vector<BigNumber> edges = edgeNumbers(5);
    for (const BigNumber& a : edges) {
        for (const BigNumber& modulus : edges) {
            if (!modulus.isZero()) {
                checkModulo(a, modulus);
            }
        }
    }
}

TEST_F(IntegerModulo, OfRandomOperandsAgreesWithTheJudge) {
    for (int i = 0; i < 20000; ++i) {
        checkModulo(randomNumber(20), randomNumber(20) + 1);
    }
}

TEST_F(IntegerModulo, OfMultiplesAndTheirNeighboursAgreesWithTheJudge) {
    for (int i = 0; i < 2000; ++i) {
        const BigNumber modulus = randomNumber(6) + 1;
        const BigNumber multiple = modulus * (randomNumber(4) + 1);
        checkModulo(multiple, modulus);
        checkModulo(multiple - 1, modulus);
        checkModulo(multiple + 1, modulus);
    }
}

TEST_F(IntegerModulo, OfOperandsOfOneBitLengthAgreesWithTheJudge) {
    for (int i = 0; i < 4000; ++i) {
        const std::uint64_t bits = 1 + randomBelow(640);
        const BigNumber top = BigNumber::powerOfTwo(bits - 1);
        checkModulo(top + randomNumber(10) % top, top + randomNumber(10) % top);
    }
}

struct Case {
    std::string a;
    std::string modulus;
    std::string remainder;
    std::string left;  ///< in the first operand
};

TEST_F(IntegerModulo, LeavesTheRemainderInTheOperandOnlyAtEqualBitLengths) {
    for (const Case& c : {Case{"D", "9", "4", "4"},    // 13 mod 9
                          Case{"12", "9", "0", "12"},  // 18 mod 9
                          Case{"10000000000000005", "9", "3", "10000000000000005"},
                          Case{"9", "9", "0", "9"}, Case{"5", "9", "5", "5"}}) {
        CoreInteger value = BigNumber::fromHexadecimal(c.a).toInteger();
        CoreInteger result = usedResult();
        core::integerModulo(value, BigNumber::fromHexadecimal(c.modulus).toInteger(), &result);
        EXPECT_TRUE(isNormalValue(result, BigNumber::fromHexadecimal(c.remainder))) << c.a;
        EXPECT_TRUE(isNormalValue(value, BigNumber::fromHexadecimal(c.left))) << c.a;
    }
}

TEST_F(IntegerModulo, OfZeroClearsTheResult) {
    for (const BigNumber& modulus : {BigNumber(9), BigNumber(0)}) {
        CoreInteger zero;
        CoreInteger result = usedResult();
        core::integerModulo(zero, modulus.toInteger(), &result);
        EXPECT_TRUE(isNormalValue(result, 0));
    }
}

TEST_F(IntegerModulo, ByZeroLeavesTheResult) {
    const CoreInteger before = usedResult();
    CoreInteger result = before;
    CoreInteger value = BigNumber(13).toInteger();
    core::integerModulo(value, CoreInteger{}, &result);
    EXPECT_TRUE(isSame(result, before));
    EXPECT_TRUE(isNormalValue(value, 13));
    core::integerModulo(value, CoreInteger{}, nullptr);
    EXPECT_TRUE(isNormalValue(value, 13));
}

TEST_F(IntegerModulo, OfANegativeIsTheNegative) {
    for (const char* digits : {"-D", "-5", "-10000000000000005"}) {
        const BigNumber number = BigNumber::fromHexadecimal(digits);
        CoreInteger value = number.toInteger();
        CoreInteger result = usedResult();
        core::integerModulo(value, BigNumber(9).toInteger(), &result);
        EXPECT_TRUE(isNormalValue(result, number));
        core::integerModulo(value, BigNumber(9).toInteger(), nullptr);
        EXPECT_TRUE(isNormalValue(value, number));
    }
}

TEST_F(IntegerModulo, ComparesLengthsAsTheyStandAndReducesValues) {
    for (unsigned i = 0; i < 1000; ++i) {
        const BigNumber a = randomNumber(5);
        const BigNumber modulus = randomNumber(3) + 1;
        const CoreInteger longA = withZeroTop(a.toInteger(), i % 4);
        const CoreInteger longModulus = withZeroTop(modulus.toInteger(), i / 4 % 4);
        const bool below = longA.lengthAndSign < longModulus.lengthAndSign ||
                           (longA.lengthAndSign == longModulus.lengthAndSign && a < modulus);
        CoreInteger value = longA;
        CoreInteger result = usedResult();
        core::integerModulo(value, longModulus, &result);
        if (below || a.isZero()) {
            EXPECT_EQ(BigNumber::fromInteger(result), a) << a << " mod " << modulus;
            EXPECT_TRUE(!below || isSame(result, longA)) << a << " mod " << modulus;
        } else {
            EXPECT_TRUE(isNormalValue(result, a % modulus)) << a << " mod " << modulus;
        }
    }
}

TEST_F(IntegerModulo, EndsForAModulusOfZeroLimbs) {
    const CoreInteger longZero = rawInteger({0, 0});
    for (const CoreInteger& a : {BigNumber(13).toInteger(), rawInteger({13, 0, 0})}) {
        CoreInteger value = a;
        CoreInteger result = usedResult();
        core::integerModulo(value, longZero, &result);
        EXPECT_TRUE(isNormalValue(result, 13));
    }
}

TEST_F(IntegerModulo, EndsForANegativeModulus) {
    for (const std::uint64_t a : {5U, 13U, 100U}) {
        CoreInteger value = BigNumber(a).toInteger();
        CoreInteger result = usedResult();
        core::integerModulo(value, (-BigNumber(9)).toInteger(), &result);
        EXPECT_TRUE(isNormalValue(result, a % 9)) << a;
    }
}

}  // namespace
