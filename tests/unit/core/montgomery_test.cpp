#include "core/montgomery.h"

#include <gtest/gtest.h>

#include "core/integer.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"
#include "tests/unit/core/integer_operands.h"

namespace {

using core::CoreInteger;
using core::modularProduct;
using core::montgomeryContext;
using core::montgomerySetup;
using core::montgomeryTeardown;

using MontgomerySetup = LeakCheckedTest;
using MontgomeryTeardown = LeakCheckedTest;
using ModularProduct = LeakCheckedTest;

/// The order of the curve's subgroup: SEC 2 version 2.0, section 3.2.3.
BigNumber curveOrder() {
    return BigNumber::fromHexadecimal("40000000000000000000292FE77E70C12A4234C33");
}

BigNumber randomOddNumber(std::uint32_t limbs) {
    const BigNumber number = randomNumber(limbs) + 3;
    return number.isOdd() ? number : number - 1;
}

/// Odd moduli: those at the edge of a limb, the order, and random ones.
std::vector<BigNumber> oddModuli() {
    std::vector<BigNumber> moduli = {3, 5, 255, curveOrder()};
    for (const BigNumber& number : edgeNumbers(6)) {
        if (number.isOdd() && number > BigNumber(1)) {
            moduli.push_back(number);
        }
    }
    for (std::uint32_t limbs = 1; limbs <= 20; ++limbs) {
        moduli.push_back(randomOddNumber(limbs));
    }
    return moduli;
}

TEST_F(MontgomerySetup, TakesTheFirstPowerOf64BitsAboveTheBitLength) {
    const auto radixFor = [](const BigNumber& modulus) {
        montgomerySetup(modulus.toInteger());
        const CoreInteger radix = *montgomeryContext.montgomeryRadix;
        montgomeryTeardown();
        return radix;
    };
    EXPECT_TRUE(isNormalValue(radixFor(curveOrder()), BigNumber::powerOfTwo(192)));
    EXPECT_TRUE(isNormalValue(radixFor(3), BigNumber::powerOfTwo(64)));
    EXPECT_TRUE(isNormalValue(radixFor(BigNumber::powerOfTwo(63) - 1), BigNumber::powerOfTwo(64)));
    EXPECT_TRUE(isNormalValue(radixFor(BigNumber::powerOfTwo(64) - 1), BigNumber::powerOfTwo(128)));
    EXPECT_TRUE(isNormalValue(radixFor(BigNumber::powerOfTwo(64) + 1), BigNumber::powerOfTwo(128)));
}

TEST_F(MontgomerySetup, GivesTheFactorWhoseProductIsMinusOneModuloTheRadix) {
    for (const BigNumber& modulus : oddModuli()) {
        const CoreInteger value = modulus.toInteger();
        montgomerySetup(value);
        EXPECT_TRUE(isSame(value, modulus.toInteger()));
        const BigNumber radix = BigNumber::fromInteger(*montgomeryContext.montgomeryRadix);
        const BigNumber factor = BigNumber::fromInteger(*montgomeryContext.montgomeryFactor);
        EXPECT_EQ((modulus * factor + 1) % radix, BigNumber(0)) << modulus;
        EXPECT_LT(factor, radix);
        montgomeryTeardown();
    }
}

TEST_F(MontgomerySetup, OnAnEvenModulusEndsWithAUselessContext) {
    montgomerySetup(BigNumber(10).toInteger());
    const BigNumber radix = BigNumber::fromInteger(*montgomeryContext.montgomeryRadix);
    EXPECT_EQ(radix, BigNumber::powerOfTwo(64));
    const BigNumber factor = BigNumber::fromInteger(*montgomeryContext.montgomeryFactor);
    EXPECT_NE((factor * 10 + 1) % radix, BigNumber(0));
    montgomeryTeardown();
}

TEST_F(MontgomerySetup, AgainWithoutATeardownLeaksTheFirstValues) {
    const CoreInteger modulus = curveOrder().toInteger();
    const std::int64_t before = testHostLiveBlocks();
    montgomerySetup(modulus);
    const core::MontgomeryContext first = montgomeryContext;
    EXPECT_EQ(testHostLiveBlocks(), before + 2);
    montgomerySetup(modulus);
    EXPECT_EQ(testHostLiveBlocks(), before + 4);
    EXPECT_NE(montgomeryContext.montgomeryRadix, first.montgomeryRadix);
    EXPECT_NE(montgomeryContext.montgomeryFactor, first.montgomeryFactor);
    montgomeryTeardown();
    EXPECT_EQ(testHostLiveBlocks(), before + 2);
    core::integerRelease(first.montgomeryRadix);
    core::integerRelease(first.montgomeryFactor);
}

TEST_F(MontgomeryTeardown, GivesTheValuesBackAndEmptiesTheContext) {
    EXPECT_EQ(montgomeryContext.montgomeryRadix, nullptr);
    EXPECT_EQ(montgomeryContext.montgomeryFactor, nullptr);
    const std::int64_t before = testHostLiveBlocks();
    montgomerySetup(curveOrder().toInteger());
    EXPECT_NE(montgomeryContext.montgomeryRadix, nullptr);
    EXPECT_NE(montgomeryContext.montgomeryFactor, nullptr);
    montgomeryTeardown();
    EXPECT_EQ(testHostLiveBlocks(), before);
    EXPECT_EQ(montgomeryContext.montgomeryRadix, nullptr);
    EXPECT_EQ(montgomeryContext.montgomeryFactor, nullptr);
    montgomeryTeardown();
    EXPECT_EQ(testHostLiveBlocks(), before);
}

void checkProduct(const BigNumber& a, const BigNumber& b, const BigNumber& modulus) {
    const CoreInteger first = a.toInteger();
    const CoreInteger second = b.toInteger();
    CoreInteger result = usedResult();
    modularProduct(first, second, modulus.toInteger(), result);
    EXPECT_TRUE(isNormalValue(result, a * b % modulus)) << a << " * " << b << " mod " << modulus;
    EXPECT_TRUE(isSame(first, a.toInteger()));
    EXPECT_TRUE(isSame(second, b.toInteger()));
}

TEST_F(ModularProduct, AgreesWithTheJudge) {
    for (const BigNumber& modulus : oddModuli()) {
        montgomerySetup(modulus.toInteger());
        const std::vector<BigNumber> edges = {0, 1, 2, modulus - 1, modulus - 2};
        for (const BigNumber& a : edges) {
            for (const BigNumber& b : edges) {
                checkProduct(a, b, modulus);
            }
        }
        for (int i = 0; i < 20; ++i) {
            checkProduct(randomNumber(20) % modulus, randomNumber(20) % modulus, modulus);
        }
        montgomeryTeardown();
    }
}

TEST_F(ModularProduct, ModuloTheCurveOrderAgreesWithTheJudge) {
    const BigNumber order = curveOrder();
    montgomerySetup(order.toInteger());
    for (int i = 0; i < 5000; ++i) {
        checkProduct(randomNumber(3) % order, randomNumber(3) % order, order);
    }
    montgomeryTeardown();
}

TEST_F(ModularProduct, TakesTheFirstOperandModuloTheModulus) {
    const BigNumber order = curveOrder();
    montgomerySetup(order.toInteger());
    for (int i = 0; i < 500; ++i) {
        checkProduct(order + randomNumber(5), randomNumber(3) % order, order);
    }
    checkProduct(order, order - 1, order);
    montgomeryTeardown();
}

TEST_F(ModularProduct, TakesASecondOperandUpToTheRadix) {
    const BigNumber longest = BigNumber::powerOfTwo(63) - 25;  // R is 2^64 here
    for (const BigNumber& modulus : {longest, curveOrder()}) {
        montgomerySetup(modulus.toInteger());
        const BigNumber radix = BigNumber::fromInteger(*montgomeryContext.montgomeryRadix);
        for (int i = 0; i < 500; ++i) {
            checkProduct(modulus - 1 - randomNumber(1) % modulus,
                         radix - 1 - randomNumber(1) % radix, modulus);
        }
        checkProduct(modulus - 1, radix - 1, modulus);
        montgomeryTeardown();
    }
}

TEST_F(ModularProduct, AcceptsZeroTopLimbs) {
    const BigNumber order = curveOrder();
    montgomerySetup(order.toInteger());
    for (unsigned i = 0; i < 500; ++i) {
        const BigNumber a = randomNumber(3) % order;
        const BigNumber b = randomNumber(2);
        CoreInteger result = usedResult();
        modularProduct(withZeroTop(a.toInteger(), i % 4), withZeroTop(b.toInteger(), i / 4 % 4),
                       order.toInteger(), result);
        EXPECT_TRUE(isNormalValue(result, a * b % order)) << a << " * " << b;
    }
    montgomeryTeardown();
}

}  // namespace
