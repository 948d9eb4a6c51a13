#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "core/integer.h"
#include "curve/field.h"
#include "tests/support/capacity_guard.h"
#include "tests/support/field_judge.h"
#include "tests/support/leak_check.h"
#include "tests/support/project_builder.h"
#include "tests/support/random_operands.h"

namespace {

using core::FieldElement;

using FieldRandom = LeakCheckedTest;
using FieldToInteger = LeakCheckedTest;
using FieldFromInteger = LeakCheckedTest;
using FieldLoad = LeakCheckedTest;

/// The 32-bit words of an element.
std::uint32_t halfWord(const FieldElement& e, std::size_t index) {
    return static_cast<std::uint32_t>(e.words.at(index / 2) >> 32 * (index % 2));
}

TEST_F(FieldRandom, ShiftsTheTopWordOfTheDrawnBytes) {
    const Bytes drawn = randomBytes(24);
    testHostPlayRandom(drawn);
    FieldElement e = elementFrom(0);
    core::fieldRandom(e);
    EXPECT_EQ(testHostRandomLeft(), 0U);
    const BigNumber number = BigNumber::fromBytes(drawn);
    // 163 = 5 * 32 + 3: of the sixth word, the upper 3 bits come down.
    EXPECT_EQ(contentOf(e), number % BigNumber::powerOfTwo(160) + (number >> 189 << 160));
}

TEST_F(FieldRandom, DrawsTheWordsOfTheDegree) {
    for (const std::uint64_t degree : {5U, 31U, 32U, 33U, 64U, 95U, 96U, 97U, 160U, 193U, 448U}) {
        const std::size_t halfWords = (degree + 31) / 32;
        const Bytes drawn = randomBytes(4 * halfWords);
        testHostPlayRandom(drawn);
        testHostPlayRandom({0xEE});
        FieldElement e = usedElement(degree, 112);
        const FieldElement before = e;
        core::fieldRandom(e);
        ASSERT_EQ(testHostRandomLeft(), 1U) << degree;
        testHostPlayRandom(randomBytes(3));
        core::fieldRandom(*core::FieldTemporary(core::fieldNew(32)));

        for (std::size_t i = 0; i < 2 * e.words.size(); ++i) {
            std::uint32_t expected = halfWord(before, i);
            if (i < halfWords) {
                std::memcpy(&expected, drawn.data() + 4 * i, 4);
            }
            if (i + 1 == halfWords && degree % 32 != 0) {
                expected >>= 32 - degree % 32;
            }
            EXPECT_EQ(halfWord(e, i), expected) << degree << " " << i;
        }
    }
}

TEST_F(FieldRandom, LeavesNoBitAboveTheField) {
    for (int i = 0; i < 1000; ++i) {
        FieldElement e = elementFrom(0);
        core::fieldRandom(e);
        EXPECT_LE(contentOf(e).bitLength(), 163U);
    }
    testHostPlayRandom(Bytes(24, 0xFF));
    FieldElement e = elementFrom(0);
    core::fieldRandom(e);
    EXPECT_EQ(contentOf(e), BigNumber::powerOfTwo(163) - 1);
}

TEST_F(FieldToInteger, KeepsTheLengthOfTheDegree) {
    for (const std::uint64_t capacity : programCapacities) {
        for (const BigNumber& value : edgePolynomials(163)) {
            FieldElement e = elementFrom(value, 163, capacity);
            e.words[3] = 99;
            core::CoreInteger integer;
            integer.lengthAndSign = 7 | core::integerSignBit;
            integer.capacity = 8;
            integer.limbs.fill(77);
            core::fieldToInteger(e, integer);
            EXPECT_EQ(integer.lengthAndSign, 3U);
            EXPECT_EQ(integer.capacity, 8U);
            EXPECT_EQ(BigNumber::fromInteger(integer), value);
            EXPECT_EQ(std::count(integer.limbs.begin() + 3, integer.limbs.begin() + 8, 0U), 5);
            EXPECT_EQ(integer.limbs[8], 77U);
        }
    }
}

TEST_F(FieldToInteger, TakesTheWordsOfOtherDegrees) {
    for (const std::uint64_t degree : {5U, 64U, 65U, 192U, 193U, 448U}) {
        const FieldElement e = usedElement(degree, 112);
        core::CoreInteger integer{.lengthAndSign = 0, .capacity = 16, .limbs = {}};
        core::fieldToInteger(e, integer);
        EXPECT_EQ(integer.lengthAndSign, (degree + 63) / 64);
        EXPECT_EQ(BigNumber::fromInteger(integer), valueOf(e));
    }
}

TEST_F(FieldFromInteger, ZeroesTheRestOfTheCapacityAndKeepsTheDegree) {
    for (const std::uint64_t capacity : programCapacities) {
        for (std::uint64_t limbs = 0; limbs <= capacity / 8; ++limbs) {
            const BigNumber value =
                limbs == 0 ? BigNumber(0) : BigNumber::powerOfTwo(64 * limbs) - 5;
            FieldElement e = usedElement(163, capacity);
            const CapacityGuard guard(e);
            core::fieldFromInteger(value.toInteger(), e);
            EXPECT_EQ(e.degree, 163U);
            EXPECT_EQ(contentOf(e), value);
        }
    }
}

TEST_F(FieldFromInteger, OfLengthZeroGivesZero) {
    core::CoreInteger zero{.lengthAndSign = 0, .capacity = 3, .limbs = {}};
    FieldElement e = usedElement();
    core::fieldFromInteger(zero, e);
    EXPECT_EQ(contentOf(e), BigNumber(0));
}

TEST_F(FieldFromInteger, DropsTheSign) {
    FieldElement e = usedElement();
    core::fieldFromInteger((-BigNumber(5)).toInteger(), e);
    EXPECT_EQ(contentOf(e), BigNumber(5));
    EXPECT_EQ(e.degree, 163U);
}

TEST_F(FieldFromInteger, UndoesToInteger) {
    for (const std::uint64_t capacity : programCapacities) {
        for (int i = 0; i < 100; ++i) {
            const BigNumber value = randomPolynomial(163);
            core::CoreInteger integer{.lengthAndSign = 0, .capacity = 41, .limbs = {}};
            core::fieldToInteger(elementFrom(value, 163, capacity), integer);
            FieldElement e = usedElement(163, capacity);
            core::fieldFromInteger(integer, e);
            EXPECT_EQ(contentOf(e), value);
        }
    }
}

TEST_F(FieldLoad, ReadsTheBitCountAndTheWordsBehindFourBytes) {
    const std::string digits = "123456789ABCDEF0112233445566778899AABBCCD";
    for (const std::uint8_t filler : {std::uint8_t{0}, std::uint8_t{0xFF}}) {
        FieldElement e = elementFrom(0, 5, 64);
        core::fieldLoad(elementValue(163, digits, filler).data(), e);
        EXPECT_EQ(e.degree, 163U);
        EXPECT_EQ(e.capacity, 64U);
        EXPECT_EQ(contentOf(e), BigNumber::fromHexadecimal(digits));
    }
}

TEST_F(FieldLoad, TakesWhole32BitWordsUnmasked) {
    for (const std::uint32_t bits : {1U, 31U, 32U, 33U, 63U, 64U, 65U, 129U, 163U, 192U, 448U}) {
        const std::size_t halfWords = (bits + 31) / 32;
        Bytes stored(8 + 4 * halfWords, 0xFF);
        std::memcpy(stored.data(), &bits, sizeof bits);
        FieldElement e = elementFrom(0, 9, 112);
        e.words.fill(0x5555555555555555);
        core::fieldLoad(stored.data(), e);
        EXPECT_EQ(e.degree, bits);
        for (std::size_t i = 0; i < 2 * e.words.size(); ++i) {
            EXPECT_EQ(halfWord(e, i), i < halfWords ? 0xFFFFFFFF : 0x55555555) << bits << " " << i;
        }
    }
}

TEST_F(FieldLoad, OfNoBitsSetsTheDegreeAlone) {
    const Bytes stored(8, 0);
    FieldElement e = usedElement();
    const FieldElement before = e;
    core::fieldLoad(stored.data(), e);
    EXPECT_EQ(e.degree, 0U);
    EXPECT_EQ(e.words, before.words);
}

}  // namespace
