#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "curve/field.h"
#include "tests/support/capacity_guard.h"
#include "tests/support/field_judge.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"

namespace {

using core::FieldElement;

using FieldMultiply = LeakCheckedTest;
using FieldSquare = LeakCheckedTest;

/// Degrees below, at and above word borders.
constexpr std::array<std::uint64_t, 22> productDegrees = {1,   5,   31,  32,  33,  63,  64,  65,
                                                          113, 127, 128, 129, 162, 163, 191, 192,
                                                          193, 233, 283, 409, 447, 448};

/// Multiplies elements of these capacities, of which none may be left.
void checkProduct(const BigNumber& a, const BigNumber& b, std::uint64_t degree,
                  std::uint64_t capacity, std::uint64_t outCapacity) {
    FieldElement first = elementFrom(a, degree, capacity);
    FieldElement second = elementFrom(b, degree, capacity);
    FieldElement out = usedElement(7, outCapacity);
    const CapacityGuard firstGuard(first);
    const CapacityGuard secondGuard(second);
    const CapacityGuard outGuard(out);
    ASSERT_EQ(core::fieldMultiply(first, second, out), 1);
    ASSERT_EQ(out.degree, degree);
    ASSERT_EQ(out.capacity, outCapacity);
    ASSERT_EQ(contentOf(out), polynomialProduct(a, b)) << degree << ": " << a << " * " << b;
    ASSERT_EQ(contentOf(first), a);
    ASSERT_EQ(contentOf(second), b);
}

TEST_F(FieldMultiply, OfEdgeOperandsIsTheUnreducedProduct) {
    const std::vector<BigNumber> edges = edgePolynomials(163);
    for (const BigNumber& a : edges) {
        for (const BigNumber& b : edges) {
            checkProduct(a, b, 163, 48, 48);
        }
    }
}

TEST_F(FieldMultiply, OfRandomOperandsIsTheUnreducedProduct) {
    for (int i = 0; i < 20000; ++i) {
        checkProduct(randomPolynomial(163), randomPolynomial(163), 163,
                     programCapacities[randomBelow(3)], programCapacities[randomBelow(3)]);
    }
}

TEST_F(FieldMultiply, TakesTheWordAboveTheSecondOperandAlong) {
    for (int i = 0; i < 100; ++i) {
        const BigNumber b =
            polynomialSum(randomPolynomial(163), BigNumber::powerOfTwo(std::uint64_t{3} * 64));
        checkProduct(randomPolynomial(163), b, 163, 48, 48);
    }
}

TEST_F(FieldMultiply, WorksForEveryDegree) {
    for (const std::uint64_t degree : productDegrees) {
        for (const BigNumber& a : edgePolynomials(degree + 1)) {
            const BigNumber operand = a % BigNumber::powerOfTwo(degree);
            checkProduct(operand, operand, degree, 112, 112);
            checkProduct(operand, randomPolynomial(degree), degree, 112, 112);
        }
    }
}

TEST_F(FieldMultiply, TakesTheDegreeOfTheFirstOperand) {
    const FieldElement a = elementFrom(3, 163);
    const FieldElement b = elementFrom(5, 5);
    FieldElement out = usedElement();
    core::fieldMultiply(a, b, out);
    EXPECT_EQ(out.degree, 163U);
    core::fieldMultiply(b, a, out);
    EXPECT_EQ(out.degree, 5U);
}

void checkSquare(const BigNumber& a, std::uint64_t degree, std::uint64_t capacity,
                 std::uint64_t outCapacity) {
    FieldElement operand = elementFrom(a, degree, capacity);
    FieldElement out = usedElement(7, outCapacity);
    const FieldElement before = out;
    {
        const CapacityGuard operandGuard(operand);
        const CapacityGuard outGuard(out);
        core::fieldSquare(operand, out);
    }
    ASSERT_EQ(out.degree, degree);
    ASSERT_EQ(out.capacity, outCapacity);
    const auto words = static_cast<std::ptrdiff_t>(2 * core::fieldWords(degree));
    ASSERT_EQ(BigNumber::fromLimbs({out.words.begin(), out.words.begin() + words}),
              polynomialProduct(a, a))
        << degree << ": " << a;
    // Exactly 2W words are written.
    const auto end = static_cast<std::ptrdiff_t>(outCapacity / 8);
    ASSERT_TRUE(std::equal(before.words.begin() + words, before.words.begin() + end,
                           out.words.begin() + words));
    ASSERT_EQ(contentOf(operand), a);
}

TEST_F(FieldSquare, OfEdgeOperandsIsTheUnreducedSquare) {
    for (const BigNumber& a : edgePolynomials(163)) {
        checkSquare(a, 163, 48, 48);
    }
}

TEST_F(FieldSquare, OfRandomOperandsIsTheUnreducedSquare) {
    for (int i = 0; i < 20000; ++i) {
        checkSquare(randomPolynomial(163), 163, programCapacities[randomBelow(3)],
                    programCapacities[randomBelow(3)]);
    }
}

TEST_F(FieldSquare, SpreadsEveryByteInEveryPlace) {
    for (std::uint64_t byte = 0; byte < 256; ++byte) {
        for (std::uint64_t place = 0; place < 24; ++place) {
            checkSquare(BigNumber(byte) << 8 * place, 163, 48, 48);
        }
    }
}

TEST_F(FieldSquare, WorksForEveryDegree) {
    for (const std::uint64_t degree : productDegrees) {
        for (const BigNumber& a : edgePolynomials(degree + 1)) {
            checkSquare(a % BigNumber::powerOfTwo(degree), degree, 112, 112);
        }
    }
}

}  // namespace
