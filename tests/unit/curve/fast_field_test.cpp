#include "curve/fast/fast_field.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "curve/fast/carryless_products.h"
#include "curve/fast/plain_products.h"
#include "tests/support/fast_routes.h"
#include "tests/support/random_operands.h"

namespace {

using core::Words163;

/// The operations of one FastField, and its unreduced products.
struct FieldOperations {
    std::string name;
    core::Product163 (*multiply)(const Words163&, const Words163&);
    Words163 (*product)(const Words163&, const Words163&);
    Words163 (*square)(const Words163&);
    Words163 (*sumOfProducts)(const Words163&, const Words163&, const Words163&, const Words163&);
    Words163 (*inverse)(const Words163&);
};

template <class Products>
FieldOperations operationsBy(const char* name) {
    using Field = core::FastField<Products>;
    return {name,          Products::multiply,   Field::product,
            Field::square, Field::sumOfProducts, Field::inverse};
}

std::vector<FieldOperations> allOperations() {
    std::vector<FieldOperations> all = {operationsBy<core::PlainProducts>("Plain")};
    if (core::hasCarrylessMultiplication()) {
        all.push_back(operationsBy<core::CarrylessProducts>("Carryless"));
    }
    return all;
}

class FastField : public testing::TestWithParam<FieldOperations> {
protected:
    const FieldJudge judge{curvePolynomial()};
};

/// Edge polynomials and random ones.
std::vector<BigNumber> operands() {
    std::vector<BigNumber> all = edgePolynomials(163);
    for (int i = 0; i < 100; ++i) {
        all.push_back(randomPolynomial(163));
    }
    return all;
}

TEST_P(FastField, MultipliesAsTheJudgeDoes) {
    const std::vector<BigNumber> all = operands();
    for (const BigNumber& a : all) {
        for (const BigNumber& b : all) {
            const core::Product163 product = GetParam().multiply(wordsOf(a), wordsOf(b));
            ASSERT_EQ(BigNumber::fromLimbs({product.begin(), product.end()}),
                      polynomialProduct(a, b))
                << a << " * " << b;
            ASSERT_EQ(numberOf(GetParam().product(wordsOf(a), wordsOf(b))), judge.multiply(a, b))
                << a << " * " << b;
        }
    }
}

TEST_P(FastField, SquaresAsTheJudgeDoes) {
    for (const BigNumber& a : operands()) {
        ASSERT_EQ(numberOf(GetParam().square(wordsOf(a))), judge.square(a)) << a;
    }
    for (std::uint64_t bit = 0; bit < 163; ++bit) {
        const BigNumber power = BigNumber::powerOfTwo(bit);
        ASSERT_EQ(numberOf(GetParam().square(wordsOf(power))), judge.square(power)) << bit;
    }
}

TEST_P(FastField, AddsTwoProductsBeforeItReduces) {
    for (int i = 0; i < 1000; ++i) {
        const BigNumber a = randomPolynomial(163);
        const BigNumber b = randomPolynomial(163);
        const BigNumber c = randomPolynomial(163);
        const BigNumber d = randomPolynomial(163);
        ASSERT_EQ(
            numberOf(GetParam().sumOfProducts(wordsOf(a), wordsOf(b), wordsOf(c), wordsOf(d))),
            polynomialSum(judge.multiply(a, b), judge.multiply(c, d)));
    }
}

TEST_P(FastField, InvertsAllButZero) {
    for (const BigNumber& a : operands()) {
        const BigNumber inverse = numberOf(GetParam().inverse(wordsOf(a)));
        if (a.isZero()) {
            ASSERT_TRUE(inverse.isZero());
        } else {
            ASSERT_EQ(inverse, judge.divide(1, a)) << a;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(By, FastField, testing::ValuesIn(allOperations()),
                         routeName<testing::TestParamInfo<FieldOperations>>);

}  // namespace
