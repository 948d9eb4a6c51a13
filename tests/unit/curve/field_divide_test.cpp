#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "curve/field.h"
#include "tests/support/capacity_guard.h"
#include "tests/support/field_judge.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"

namespace {

using core::FieldElement;

using FieldDivide = LeakCheckedTest;

const FieldElement& curveField() {
    static const FieldElement f = elementFrom(curvePolynomial());
    return f;
}

/// a / b in the curve's field.
BigNumber quotient(const BigNumber& a, const BigNumber& b) {
    FieldElement out = usedElement();
    core::fieldDivide(elementFrom(a), elementFrom(b), out, curveField());
    EXPECT_EQ(out.degree, 163U);
    return contentOf(out);
}

TEST_F(FieldDivide, OfEdgeOperandsMatchesTheJudge) {
    const FieldJudge judge(curvePolynomial());
    std::vector<BigNumber> edges = edgePolynomials(163);
    for (const BigNumber& a : edges) {
        for (const BigNumber& b : edges) {
            if (!b.isZero()) {
                ASSERT_EQ(quotient(a, b), judge.divide(a, b)) << a << " / " << b;
            }
        }
    }
}

TEST_F(FieldDivide, OfRandomOperandsMatchesTheJudge) {
    const FieldJudge judge(curvePolynomial());
    for (int i = 0; i < 20000; ++i) {
        const BigNumber a = randomPolynomial(163);
        BigNumber b = randomPolynomial(163);
        b = b.isZero() ? BigNumber(1) : b;
        ASSERT_EQ(quotient(a, b), judge.divide(a, b)) << a << " / " << b;
    }
}

TEST_F(FieldDivide, IsUndoneByMultiplication) {
    FieldElement product = usedElement();
    for (int i = 0; i < 5000; ++i) {
        const BigNumber a = randomPolynomial(163);
        const BigNumber b = polynomialSum(randomPolynomial(162), BigNumber::powerOfTwo(162));
        core::fieldMultiply(elementFrom(quotient(a, b)), elementFrom(b), product);
        core::fieldReduce(product, curveField());
        ASSERT_EQ(contentOf(product), a) << a << " / " << b;
    }
}

TEST_F(FieldDivide, ByOneGivesTheNumerator) {
    for (const BigNumber& a : edgePolynomials(163)) {
        EXPECT_EQ(quotient(a, 1), a);
    }
}

TEST_F(FieldDivide, ByOneTakesTheWordsAboveTheNumeratorAlong) {
    for (const unsigned bit : {192U, 256U, 320U}) {
        const BigNumber a = polynomialSum(randomPolynomial(163), BigNumber::powerOfTwo(bit));
        EXPECT_EQ(quotient(a, 1), a);
    }
}

TEST_F(FieldDivide, MixesCapacities) {
    const FieldJudge judge(curvePolynomial());
    for (unsigned mix = 0; mix < 81; ++mix) {
        const BigNumber aValue = randomPolynomial(163);
        const BigNumber bValue = polynomialSum(randomPolynomial(162), BigNumber::powerOfTwo(162));
        FieldElement a = elementFrom(aValue, 163, programCapacities[mix % 3]);
        FieldElement b = elementFrom(bValue, 163, programCapacities[mix / 3 % 3]);
        FieldElement f = elementFrom(curvePolynomial(), 163, programCapacities[mix / 9 % 3]);
        FieldElement out = usedElement(163, programCapacities[mix / 27]);
        const FieldElement before = out;
        {
            const CapacityGuard aGuard(a);
            const CapacityGuard bGuard(b);
            const CapacityGuard fGuard(f);
            const CapacityGuard outGuard(out);
            core::fieldDivide(a, b, out, f);
        }
        EXPECT_EQ(valueOf(out), judge.divide(aValue, bValue));
        // The quotient comes from an element of 48 bytes.
        EXPECT_TRUE(std::equal(before.words.begin() + 6,
                               before.words.begin() + static_cast<std::ptrdiff_t>(out.capacity / 8),
                               out.words.begin() + 6));
    }
}

TEST_F(FieldDivide, MayWriteOverEitherOperand) {
    const FieldJudge judge(curvePolynomial());
    for (int i = 0; i < 200; ++i) {
        const BigNumber a = randomPolynomial(163);
        const BigNumber b = polynomialSum(randomPolynomial(162), BigNumber::powerOfTwo(162));
        FieldElement overA = elementFrom(a);
        core::fieldDivide(overA, elementFrom(b), overA, curveField());
        EXPECT_EQ(contentOf(overA), judge.divide(a, b));
        FieldElement overB = elementFrom(b);
        core::fieldDivide(elementFrom(a), overB, overB, curveField());
        EXPECT_EQ(contentOf(overB), judge.divide(a, b));
        FieldElement both = elementFrom(b);
        core::fieldDivide(both, both, both, curveField());
        EXPECT_EQ(contentOf(both), BigNumber(1));
    }
}

TEST_F(FieldDivide, ByZeroGivesZero) {
    for (const BigNumber& a : {BigNumber(0), BigNumber(1), randomPolynomial(163)}) {
        EXPECT_EQ(quotient(a, 0), BigNumber(0));
    }
}

TEST_F(FieldDivide, ByAMultipleOfThePolynomialGivesZero) {
    // Three words have room for 29 more bits than the field: z^j * f for every j, and others.
    for (std::uint64_t bits = 1; bits <= 29; ++bits) {
        const BigNumber power = BigNumber::powerOfTwo(bits - 1);
        for (const BigNumber& factor :
             {power, power + power - 1, polynomialSum(power, randomPolynomial(bits))}) {
            const BigNumber b = polynomialProduct(curvePolynomial(), factor);
            EXPECT_EQ(quotient(randomPolynomial(163), b), BigNumber(0)) << b;
            EXPECT_EQ(quotient(0, b), BigNumber(0)) << b;
        }
    }
}

TEST_F(FieldDivide, ByAnUnreducedDivisorGivesTheQuotientOfItsRemainder) {
    const FieldJudge judge(curvePolynomial());
    std::vector<BigNumber> divisors = edgePolynomials(192);
    for (int i = 0; i < 5000; ++i) {
        divisors.push_back(randomPolynomial(192));
    }
    for (const BigNumber& b : divisors) {
        const BigNumber reduced = judge.reduce(b);
        const BigNumber a = randomPolynomial(163);
        const BigNumber expected = reduced.isZero() ? BigNumber(0) : judge.divide(a, reduced);
        ASSERT_EQ(quotient(a, b), expected) << a << " / " << b;
    }
}

TEST_F(FieldDivide, WorksModuloOtherPolynomialsOfTheSameDegree) {
    // ANSI X9.62, curve c2pnb163v1; then two more that are irreducible and differ from the curve's
    // in the middle word or in the top word alone.
    const std::vector<std::vector<std::uint64_t>> polynomials = {
        {163, 8, 2, 1, 0}, {163, 73, 66, 7, 6, 3, 0}, {163, 147, 130, 7, 6, 3, 0}};
    for (const std::vector<std::uint64_t>& exponents : polynomials) {
        const BigNumber polynomial = polynomialOf(exponents);
        for (int i = 0; i < 100; ++i) {
            const BigNumber expected = randomPolynomial(163);
            const BigNumber b = polynomialSum(randomPolynomial(162), BigNumber::powerOfTwo(162));
            const BigNumber a = longDivisionRemainder(polynomialProduct(expected, b), polynomial);
            FieldElement out = usedElement();
            core::fieldDivide(elementFrom(a), elementFrom(b), out, elementFrom(polynomial));
            ASSERT_EQ(contentOf(out), expected) << a << " / " << b << " modulo " << polynomial;
        }
    }
}

TEST_F(FieldDivide, WorksInOtherFields) {
    const std::vector<std::vector<std::uint64_t>> fields = {
        {5, 2, 0},    {7, 1, 0},     {31, 3, 0},         {63, 1, 0},        {65, 18, 0},
        {113, 9, 0},  {127, 1, 0},   {129, 5, 0},        {131, 8, 3, 2, 0}, {193, 15, 0},
        {233, 74, 0}, {239, 158, 0}, {283, 12, 7, 5, 0}, {409, 87, 0}};
    for (const std::vector<std::uint64_t>& exponents : fields) {
        const FieldJudge judge(polynomialOf(exponents));
        const std::uint64_t degree = exponents.front();
        const FieldElement f = elementFrom(judge.polynomial(), degree, 112);
        for (int i = 0; i < 300; ++i) {
            const BigNumber a = randomPolynomial(degree);
            BigNumber b = randomPolynomial(degree);
            b = b.isZero() ? BigNumber(1) : b;
            FieldElement out = elementFrom(0, degree, 112);
            core::fieldDivide(elementFrom(a, degree, 112), elementFrom(b, degree, 112), out, f);
            ASSERT_EQ(contentOf(out), judge.divide(a, b)) << degree << ": " << a << " / " << b;
        }
    }
}

}  // namespace
