#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

#include "curve/field.h"
#include "tests/support/capacity_guard.h"
#include "tests/support/field_judge.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"

namespace {

using core::FieldElement;

using FieldReduce = LeakCheckedTest;

/// A field by the exponents of its polynomial.
using Exponents = std::vector<std::uint64_t>;

/// Irreducible polynomials: SEC 2 version 2.0, section 3.1, SEC 2 version 1.0 for the smaller ones,
/// and others at the borders of words.
const std::vector<Exponents>& otherFields() {
    static const std::vector<Exponents> fields = {
        {2, 1, 0},         {5, 2, 0},          {7, 1, 0},         {31, 3, 0},   {32, 7, 3, 2, 0},
        {63, 1, 0},        {64, 4, 3, 1, 0},   {65, 18, 0},       {113, 9, 0},  {127, 1, 0},
        {128, 7, 2, 1, 0}, {129, 5, 0},        {131, 8, 3, 2, 0}, {193, 15, 0}, {233, 74, 0},
        {239, 158, 0},     {283, 12, 7, 5, 0}, {409, 87, 0}};
    return fields;
}

/// Reduces one product and compares with what must come out, libcrypto's remainder if nothing else
/// is given.
void checkReduction(const BigNumber& product, const BigNumber& f, std::uint64_t capacity,
                    std::optional<BigNumber> expected = std::nullopt) {
    const std::uint64_t degree = f.bitLength() - 1;
    FieldElement e = elementFrom(product, degree, capacity);
    const FieldElement polynomial = elementFrom(f, degree, capacity);
    const CapacityGuard guard(e);
    core::fieldReduce(e, polynomial);
    ASSERT_EQ(contentOf(e), expected.has_value() ? *expected : FieldJudge(f).reduce(product))
        << f << ": " << product;
    ASSERT_EQ(e.degree, degree);
    ASSERT_EQ(contentOf(polynomial), f);
}

TEST_F(FieldReduce, HighestSquareBitMatchesLongDivision) {
    const BigNumber f = curvePolynomial();
    const core::FieldTemporary square(core::fieldNew(163));
    core::fieldSquare(elementFrom(BigNumber::powerOfTwo(162)), *square);
    EXPECT_EQ(contentOf(*square), BigNumber::powerOfTwo(324));
    core::fieldReduce(*square, elementFrom(f));
    EXPECT_EQ(contentOf(*square), longDivisionRemainder(BigNumber::powerOfTwo(324), f));
}

TEST_F(FieldReduce, OfEdgesMatchesTheJudge) {
    for (const BigNumber& product : edgePolynomials(325)) {
        for (const std::uint64_t capacity : programCapacities) {
            checkReduction(product, curvePolynomial(), capacity);
        }
    }
}

TEST_F(FieldReduce, OfEverySingleBitMatchesLongDivision) {
    const BigNumber f = curvePolynomial();
    for (std::uint64_t bit = 0; bit < 325; ++bit) {
        const BigNumber power = BigNumber::powerOfTwo(bit);
        FieldElement e = elementFrom(power);
        core::fieldReduce(e, elementFrom(f));
        EXPECT_EQ(contentOf(e), longDivisionRemainder(power, f)) << bit;
    }
}

TEST_F(FieldReduce, OfRandomProductsMatchesTheJudge) {
    for (int i = 0; i < 30000; ++i) {
        checkReduction(randomPolynomial(325), curvePolynomial(), programCapacities[randomBelow(3)]);
    }
}

TEST_F(FieldReduce, AfterMultiplicationOrSquaringMatchesTheJudge) {
    const FieldJudge judge(curvePolynomial());
    const FieldElement f = elementFrom(curvePolynomial());
    FieldElement out = usedElement();
    for (int i = 0; i < 20000; ++i) {
        const BigNumber a = randomPolynomial(163);
        const BigNumber b = randomPolynomial(163);
        core::fieldMultiply(elementFrom(a), elementFrom(b), out);
        core::fieldReduce(out, f);
        ASSERT_EQ(contentOf(out), judge.multiply(a, b)) << a << " * " << b;
        core::fieldSquare(elementFrom(a), out);
        core::fieldReduce(out, f);
        ASSERT_EQ(contentOf(out), judge.square(a)) << a;
    }
}

TEST_F(FieldReduce, ForDegree163HasThePolynomialBuiltIn) {
    const BigNumber product = randomPolynomial(325);
    FieldElement e = elementFrom(product);
    core::fieldReduce(e, usedElement());
    EXPECT_EQ(contentOf(e), FieldJudge(curvePolynomial()).reduce(product));
}

TEST_F(FieldReduce, ForDegree163LeavesWhatLiesAboveTheProduct) {
    // A product has eleven words of 32 bits; the other half of its last 64-bit word stays too.
    const BigNumber product = randomPolynomial(325);
    FieldElement e = usedElement(163, 112);
    const FieldElement above = e;
    std::copy_n(elementFrom(product).words.begin(), 6, e.words.begin());
    constexpr std::uint64_t highHalf = 0xFFFFFFFF00000000;
    e.words[5] |= above.words[5] & highHalf;
    core::fieldReduce(e, elementFrom(curvePolynomial()));
    EXPECT_EQ(valueOf(e), FieldJudge(curvePolynomial()).reduce(product));
    EXPECT_EQ(e.words[3], 0U);
    EXPECT_EQ(e.words[4], 0U);
    EXPECT_EQ(e.words[5], above.words[5] & highHalf);
    EXPECT_TRUE(std::equal(above.words.begin() + 6, above.words.end(), e.words.begin() + 6));
}

TEST_F(FieldReduce, OfOtherFieldsMatchesTheJudge) {
    for (const Exponents& exponents : otherFields()) {
        const BigNumber f = polynomialOf(exponents);
        const std::uint64_t productBits = 2 * exponents.front() - 1;
        for (const BigNumber& product : edgePolynomials(productBits)) {
            checkReduction(product, f, 112);
        }
        for (int i = 0; i < 1000; ++i) {
            checkReduction(randomPolynomial(productBits), f, 112);
        }
    }
}

TEST_F(FieldReduce, TakesAnyPolynomialOfAnyOtherDegree) {
    for (std::uint64_t degree = 2; degree <= 447; ++degree) {
        if (degree == 163) {
            continue;
        }
        // Dense, so that no coefficient of f can be missed; libcrypto takes sparse ones alone.
        const BigNumber dense = BigNumber::powerOfTwo(degree + 1) - 1;
        const BigNumber random = BigNumber::powerOfTwo(degree) + randomPolynomial(degree);
        const BigNumber allOnes = BigNumber::powerOfTwo(2 * degree - 1) - 1;
        for (const BigNumber& f : {dense, random}) {
            for (const BigNumber& product : {allOnes, randomPolynomial(2 * degree - 1)}) {
                checkReduction(product, f, 112, longDivisionRemainder(product, f));
            }
        }
    }
}

TEST_F(FieldReduce, OfDegreeZeroLeavesNothing) {
    FieldElement e = usedElement(0, 48);
    core::fieldReduce(e, elementFrom(BigNumber(1), 0));
    EXPECT_EQ(contentOf(e), BigNumber(0));
}

TEST_F(FieldReduce, OfOtherDegreesZeroesTheRestOfTheCapacity) {
    const BigNumber f = polynomialOf({113, 9, 0});
    const BigNumber product = randomPolynomial(225);
    FieldElement e = usedElement(113, 112);
    std::copy_n(elementFrom(product, 113, 48).words.begin(), 4, e.words.begin());
    core::fieldReduce(e, elementFrom(f, 113, 48));
    EXPECT_EQ(contentOf(e), FieldJudge(f).reduce(product));
}

TEST_F(FieldReduce, OfOtherDegreesTakesItsTableInOneBlock) {
    const std::uint64_t before = testHostAllocations();
    FieldElement e = elementFrom(randomPolynomial(225), 113);
    core::fieldReduce(e, elementFrom(polynomialOf({113, 9, 0}), 113));
    EXPECT_EQ(testHostAllocations(), before + 1);
}

}  // namespace
