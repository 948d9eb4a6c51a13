#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "curve/field.h"
#include "tests/support/capacity_guard.h"
#include "tests/support/field_judge.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"

namespace {

using core::FieldElement;

using FieldNew = LeakCheckedTest;
using FieldCopy = LeakCheckedTest;
using FieldClear = LeakCheckedTest;
using FieldIsZero = LeakCheckedTest;
using FieldIsOne = LeakCheckedTest;
using FieldCompare = LeakCheckedTest;
using FieldDegree = LeakCheckedTest;
using FieldAdd = LeakCheckedTest;
using FieldShift = LeakCheckedTest;

/// Degrees on both sides of word borders, up to the largest that elements have room for.
constexpr std::array<std::uint64_t, 22> degrees = {1,   5,   31,  32,  33,  63,  64,  65,
                                                   127, 128, 129, 160, 162, 163, 191, 192,
                                                   193, 233, 320, 409, 447, 448};

/// Words with two halves that are told apart.
constexpr std::uint64_t mark = 0x8000000180000001;

TEST_F(FieldNew, GivesAZeroElementOfTheDegree) {
    for (const std::uint64_t degree : degrees) {
        const core::FieldTemporary e(core::fieldNew(degree));
        EXPECT_EQ(e->degree, degree);
        EXPECT_EQ(std::count(e->words.begin(), e->words.end(), 0U), std::ssize(e->words));
    }
}

TEST_F(FieldNew, RoundsTheCapacity) {
    const auto capacityFor = [](std::uint64_t degree) {
        return core::FieldTemporary(core::fieldNew(degree))->capacity;
    };
    EXPECT_EQ(capacityFor(163), 48U);
    EXPECT_EQ(capacityFor(5), 48U);
    EXPECT_EQ(capacityFor(263), 48U);   // 32 whole bytes and 95: one short of 128
    EXPECT_EQ(capacityFor(264), 112U);  // 33 and 95
    EXPECT_EQ(capacityFor(448), 112U);
}

TEST_F(FieldNew, TakesOneBlockThatReleaseGivesBack) {
    const std::int64_t before = testHostLiveBlocks();
    FieldElement* const e = core::fieldNew(163);
    EXPECT_EQ(testHostLiveBlocks(), before + 1);
    core::fieldRelease(e);
    EXPECT_EQ(testHostLiveBlocks(), before);
}

TEST_F(FieldCopy, TakesTheSmallerCapacityAndLeavesTheRest) {
    for (const std::uint64_t from : programCapacities) {
        for (const std::uint64_t to : programCapacities) {
            const FieldElement source = usedElement(163, from);
            FieldElement destination = usedElement(7, to);
            const FieldElement before = destination;
            EXPECT_EQ(core::fieldCopy(source, destination), 1);
            EXPECT_EQ(destination.degree, 163U);
            EXPECT_EQ(destination.capacity, to);
            const auto words = static_cast<std::ptrdiff_t>(std::min(from, to) / 8);
            EXPECT_TRUE(std::equal(source.words.begin(), source.words.begin() + words,
                                   destination.words.begin()));
            EXPECT_TRUE(std::equal(before.words.begin() + words, before.words.end(),
                                   destination.words.begin() + words));
        }
    }
}

TEST_F(FieldCopy, StaysWithinBothCapacities) {
    for (const std::uint64_t from : programCapacities) {
        for (const std::uint64_t to : programCapacities) {
            FieldElement source = usedElement(163, from);
            FieldElement destination = usedElement(163, to);
            const CapacityGuard sourceGuard(source);
            const CapacityGuard destinationGuard(destination);
            core::fieldCopy(source, destination);
        }
    }
}

TEST_F(FieldClear, ZeroesTheCapacityAndKeepsTheDegree) {
    for (const std::uint64_t capacity : programCapacities) {
        FieldElement e = usedElement(163, capacity);
        const CapacityGuard guard(e);
        core::fieldClear(e);
        EXPECT_EQ(contentOf(e), BigNumber(0));
        EXPECT_EQ(e.degree, 163U);
        EXPECT_EQ(e.capacity, capacity);
    }
}

TEST_F(FieldIsZero, LooksAtTheLowWordsAlone) {
    for (const std::uint64_t degree : degrees) {
        FieldElement e = usedElement(degree, 112);
        const std::size_t words = core::fieldWords(degree);
        std::fill_n(e.words.begin(), words, 0);
        EXPECT_TRUE(core::fieldIsZero(e)) << degree;
        for (std::size_t word = 0; word < words; ++word) {
            for (const unsigned bit : {0U, 31U, 32U, 63U}) {
                e.words[word] = std::uint64_t{1} << bit;
                EXPECT_FALSE(core::fieldIsZero(e)) << degree << " " << word << " " << bit;
            }
            e.words[word] = 0;
        }
    }
}

TEST_F(FieldIsOne, LooksAtTheLowWordsAlone) {
    for (const std::uint64_t degree : degrees) {
        FieldElement e = usedElement(degree, 112);
        const std::size_t words = core::fieldWords(degree);
        std::fill_n(e.words.begin(), words, 0);
        EXPECT_FALSE(core::fieldIsOne(e)) << degree;
        e.words[0] = 1;
        EXPECT_TRUE(core::fieldIsOne(e)) << degree;
        for (std::size_t word = 0; word < words; ++word) {
            const FieldElement one = e;
            e.words[word] ^= mark & ~std::uint64_t{1};
            EXPECT_FALSE(core::fieldIsOne(e)) << degree << " " << word;
            e = one;
        }
        e.words[0] = 3;
        EXPECT_FALSE(core::fieldIsOne(e)) << degree;
    }
}

TEST_F(FieldCompare, OrdersTheLowWordsAsNumbers) {
    std::vector<BigNumber> values = edgePolynomials(192);
    for (int i = 0; i < 100; ++i) {
        values.push_back(randomPolynomial(192));
    }
    for (const BigNumber& a : values) {
        for (const BigNumber& b : values) {
            const int expected = a == b ? 0 : a < b ? -1 : 1;
            ASSERT_EQ(core::fieldCompare(elementFrom(a), elementFrom(b)), expected)
                << a << " " << b;
        }
    }
}

TEST_F(FieldCompare, IgnoresHigherWords) {
    FieldElement a = elementFrom(5, 163, 112);
    const FieldElement b = elementFrom(5);
    a.words[3] = 1;
    EXPECT_EQ(core::fieldCompare(a, b), 0);
    EXPECT_EQ(core::fieldCompare(b, a), 0);
}

TEST_F(FieldCompare, LetsTheDegreesDecideFirst) {
    EXPECT_EQ(core::fieldCompare(elementFrom(5, 162), elementFrom(5, 163)), -1);
    EXPECT_EQ(core::fieldCompare(elementFrom(5, 163), elementFrom(5, 162)), 1);
    EXPECT_EQ(core::fieldCompare(elementFrom(9, 5), elementFrom(1, 163)), -1);
    EXPECT_EQ(core::fieldCompare(elementFrom(1, 163), elementFrom(9, 5)), 1);
    // As unsigned numbers of 64 bits.
    FieldElement vast = elementFrom(1);
    vast.degree = std::uint64_t{1} << 63;
    EXPECT_EQ(core::fieldCompare(vast, elementFrom(1)), 1);
    EXPECT_EQ(core::fieldCompare(elementFrom(1), vast), -1);
}

TEST_F(FieldDegree, IsZeroForZeroAndOne) {
    EXPECT_EQ(core::fieldDegree(elementFrom(0)), 0U);
    EXPECT_EQ(core::fieldDegree(elementFrom(1)), 0U);
}

TEST_F(FieldDegree, IsTheHighestExponentOfTheLowWords) {
    FieldElement high = elementFrom(0, 163, 112);
    high.words[3] = 1;
    EXPECT_EQ(core::fieldDegree(high), 0U);
    for (std::uint64_t exponent = 1; exponent < 192; ++exponent) {
        const BigNumber power = BigNumber::powerOfTwo(exponent);
        EXPECT_EQ(core::fieldDegree(elementFrom(power)), exponent);
        EXPECT_EQ(core::fieldDegree(elementFrom(power + power - 1)), exponent);
        high = elementFrom(power + randomPolynomial(exponent), 163, 112);
        high.words[3] = mark;
        EXPECT_EQ(core::fieldDegree(high), exponent);
    }
}

TEST_F(FieldAdd, IsTheSumOfPolynomialsOverTheLowWords) {
    for (const std::uint64_t degree : degrees) {
        FieldElement a = usedElement(degree, 112);
        FieldElement b = usedElement(degree == 5 ? 163 : 5, 112);
        FieldElement out = usedElement(9, 112);
        const FieldElement before = out;
        const BigNumber sum = polynomialSum(
            valueOf(a), valueOf({.degree = degree, .capacity = 112, .words = b.words}));
        EXPECT_EQ(core::fieldAdd(a, b, out), 1);
        EXPECT_EQ(out.degree, degree);
        EXPECT_EQ(valueOf(out), sum);
        const auto words = static_cast<std::ptrdiff_t>(core::fieldWords(degree));
        EXPECT_TRUE(std::equal(before.words.begin() + words, before.words.end(),
                               out.words.begin() + words));

        const FieldElement old = a;
        EXPECT_EQ(core::fieldAddTo(a, b), 1);
        EXPECT_EQ(a.degree, degree);
        EXPECT_EQ(valueOf(a), sum);
        EXPECT_TRUE(
            std::equal(old.words.begin() + words, old.words.end(), a.words.begin() + words));
    }
}

TEST_F(FieldShift, LeftMultipliesTheLowWordsAndTheOneAboveByZ) {
    for (const std::uint64_t degree : degrees) {
        const std::uint64_t words = core::fieldWords(degree);
        for (int i = 0; i < 20; ++i) {
            FieldElement e = usedElement(degree, 112);
            const FieldElement before = e;
            core::fieldShiftLeftOne(e);
            const auto shifted = [&](const FieldElement& element) {
                return BigNumber::fromLimbs(
                    {element.words.begin(), element.words.begin() + words + 1});
            };
            EXPECT_EQ(shifted(e), (shifted(before) << 1) % BigNumber::powerOfTwo(64 * (words + 1)));
            EXPECT_TRUE(std::equal(before.words.begin() + words + 1, before.words.end(),
                                   e.words.begin() + words + 1));
        }
    }
}

TEST_F(FieldShift, RightDividesTheLowWordsByZTakingInABitFromAbove) {
    for (const std::uint64_t degree : degrees) {
        const std::uint64_t words = core::fieldWords(degree);
        for (int i = 0; i < 20; ++i) {
            FieldElement e = usedElement(degree, 112);
            const FieldElement before = e;
            core::fieldShiftRightOne(e);
            const BigNumber takenIn = before.words[words] % 2;
            EXPECT_EQ(valueOf(e), (valueOf(before) >> 1) + (takenIn << (64 * words - 1)));
            EXPECT_TRUE(std::equal(before.words.begin() + words + 1, before.words.end(),
                                   e.words.begin() + words + 1));
        }
    }
}

TEST_F(FieldShift, RightMovesOnlyTheLowHalfOfTheWordAbove) {
    FieldElement e = elementFrom(0, 163, 112);
    e.words[3] = 0x8000000380000003;
    core::fieldShiftRightOne(e);
    EXPECT_EQ(e.words[2], std::uint64_t{1} << 63);
    EXPECT_EQ(e.words[3], 0x8000000340000001);
    core::fieldShiftRightOne(e);
    EXPECT_EQ(e.words[2], 0xC000000000000000);
    EXPECT_EQ(e.words[3], 0x8000000320000000);
}

}  // namespace
