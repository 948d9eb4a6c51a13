#include "curve/fast/order.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/curve_keys.h"
#include "tests/support/fast_routes.h"
#include "tests/support/random_operands.h"

namespace {

const BigNumber& radix() {
    static const BigNumber power = BigNumber::powerOfTwo(192);
    return power;
}

/// Numbers below n: at both ends, at the borders of limbs, powers of two, and random ones.
std::vector<BigNumber> numbersBelowOrder() {
    const BigNumber n = curveOrder();
    std::vector<BigNumber> numbers = {0, 1, 2, 3, n - 1, n - 2, n - 3, n >> 1, (n >> 1) + 1};
    for (std::uint64_t bit = 0; bit < 163; ++bit) {
        numbers.push_back(BigNumber::powerOfTwo(bit));
        numbers.push_back(BigNumber::powerOfTwo(bit) - 1);
    }
    for (int i = 0; i < 100; ++i) {
        numbers.push_back(CurveJudge().randomScalar());
    }
    return numbers;
}

TEST(BelowOrder, IsAllOnesBelowTheOrderAndZeroFromThereOn) {
    const BigNumber n = curveOrder();
    for (const BigNumber& a : numbersBelowOrder()) {
        EXPECT_EQ(core::belowOrder(wordsOf(a)), ~std::uint64_t{0}) << a;
        EXPECT_EQ(core::belowOrder(wordsOf(n + a)), 0U) << a;
    }
    EXPECT_EQ(core::belowOrder(wordsOf(radix() - 1)), 0U);
}

TEST(ReduceOnce, TakesTheOrderFromWhatIsNotBelowIt) {
    const BigNumber n = curveOrder();
    for (const BigNumber& a : numbersBelowOrder()) {
        EXPECT_EQ(numberOf(core::reduceOnce(wordsOf(a))), a);
        EXPECT_EQ(numberOf(core::reduceOnce(wordsOf(n + a))), a);
    }
}

TEST(OrderSum, IsTheSumModuloTheOrder) {
    const std::vector<BigNumber> numbers = numbersBelowOrder();
    for (const BigNumber& a : numbers) {
        for (const BigNumber& b : numbers) {
            ASSERT_EQ(numberOf(core::orderSum(wordsOf(a), wordsOf(b))), (a + b) % curveOrder())
                << a << ", " << b;
        }
    }
}

TEST(OrderProduct, OfAMontgomeryFormIsTheProductModuloTheOrder) {
    const std::vector<BigNumber> numbers = numbersBelowOrder();
    for (const BigNumber& a : numbers) {
        const core::Words163 form = core::toOrderForm(wordsOf(a));
        ASSERT_EQ(numberOf(form), a * radix() % curveOrder()) << a;
        for (const BigNumber& b : numbers) {
            ASSERT_EQ(numberOf(core::orderProduct(form, wordsOf(b))), a * b % curveOrder())
                << a << ", " << b;
        }
    }
}

TEST(OrderInverse, IsTheMontgomeryFormOfTheInverse) {
    for (const BigNumber& a : numbersBelowOrder()) {
        ASSERT_EQ(numberOf(core::orderInverse(wordsOf(a))),
                  a.inverseModulo(curveOrder()) * radix() % curveOrder())
            << a;
    }
}

}  // namespace
