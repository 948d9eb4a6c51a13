#include <gtest/gtest.h>

#include <compare>
#include <cstring>

#include "core/integer.h"
#include "core/memory.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"
#include "tests/unit/core/integer_operands.h"

namespace {

using core::CoreInteger;

using IntegerAlloc = LeakCheckedTest;

TEST_F(IntegerAlloc, GivesZeroWithTheCapacityForTheBits) {
    for (const auto& [bits, limbs] : {std::pair<std::uint64_t, std::uint32_t>{0, 0},
                                      {1, 1},
                                      {8, 1},
                                      {63, 1},
                                      {64, 1},
                                      {65, 2},
                                      {128, 2},
                                      {163, 3},
                                      {15384, 241},
                                      {16384, 256}}) {
        CoreInteger* value = core::integerAlloc(bits);
        EXPECT_EQ(value->capacity, limbs) << bits << " bits";
        EXPECT_TRUE(isNormalValue(*value, 0));
        core::integerRelease(value);
    }
}

TEST_F(IntegerAlloc, TakesOneBlockThatReleaseGivesBack) {
    const std::uint64_t allocations = testHostAllocations();
    const std::int64_t live = testHostLiveBlocks();
    CoreInteger* value = core::integerAlloc(64);
    EXPECT_EQ(testHostAllocations(), allocations + 1);
    EXPECT_EQ(testHostLiveBlocks(), live + 1);
    core::integerRelease(value);
    EXPECT_EQ(testHostLiveBlocks(), live);
    core::integerRelease(nullptr);
    EXPECT_EQ(testHostLiveBlocks(), live);
}

TEST(IntegerOne, IsOne) {
    EXPECT_EQ(core::integerOne.lengthAndSign, 1U);
    EXPECT_EQ(core::integerOne.capacity, 1U);
    EXPECT_TRUE(isNormalValue(core::integerOne, 1));
}

TEST(IntegerClear, ZeroesTheWordAndTheLimbsOfTheCapacity) {
    CoreInteger value = rawInteger({1, 2, 3, 4, 5});
    value.lengthAndSign |= core::integerSignBit;
    value.capacity = 3;
    core::integerClear(value);
    CoreInteger expected;
    expected.capacity = 3;
    expected.limbs[3] = 4;
    expected.limbs[4] = 5;
    EXPECT_TRUE(isSame(value, expected));
}

TEST(IntegerClear, WithoutCapacityResetsTheWordOnly) {
    CoreInteger value = rawInteger({7, 8});
    value.capacity = 0;
    core::integerClear(value);
    EXPECT_EQ(value.lengthAndSign, 0U);
    EXPECT_EQ(value.limbs[0], 7U);
    EXPECT_EQ(value.limbs[1], 8U);
}

TEST(IntegerCopy, TakesValueAndSignAndNoCapacity) {
    for (int i = 0; i < 2000; ++i) {
        const BigNumber number = withSign(randomNumber(20), static_cast<unsigned>(i));
        const CoreInteger source = number.toInteger(20);
        CoreInteger destination = usedResult();
        destination.capacity = 200;
        core::integerCopy(source, destination);
        EXPECT_TRUE(isNormalValue(destination, number));
        EXPECT_EQ(destination.capacity, 200U);
    }
}

TEST(IntegerCopy, CopiesZeroLimbsAtTheTop) {
    const CoreInteger source = rawInteger({5, 0, 0});
    CoreInteger destination = rawInteger({1, 2, 3, 4, 5});
    core::integerCopy(source, destination);
    EXPECT_TRUE(isSame(destination, source));
}

TEST(IntegerCopy, ZeroesTheLimbsUpToTheOldLength) {
    const CoreInteger source = rawInteger({9});
    CoreInteger destination = rawInteger({1, 2, 3, 4});
    destination.lengthAndSign = 3;
    core::integerCopy(source, destination);
    CoreInteger expected = rawInteger({9, 0, 0, 4});
    expected.lengthAndSign = 1;
    EXPECT_TRUE(isSame(destination, expected));
}

TEST(IntegerCopy, OfZeroClearsTheCapacity) {
    CoreInteger destination = rawInteger({1, 2, 3, 4});
    destination.capacity = 2;
    core::integerCopy(CoreInteger{}, destination);
    EXPECT_EQ(destination.lengthAndSign, 0U);
    EXPECT_EQ(destination.limbs[1], 0U);
    EXPECT_EQ(destination.limbs[2], 3U);
    EXPECT_EQ(destination.capacity, 2U);
}

TEST(IntegerIsZero, LooksAtTheWholeWord) {
    EXPECT_TRUE(core::integerIsZero(CoreInteger{}));
    EXPECT_FALSE(core::integerIsZero(core::integerOne));
    EXPECT_FALSE(core::integerIsZero(rawInteger({0})));
    CoreInteger value;
    value.limbs[0] = 1;
    EXPECT_TRUE(core::integerIsZero(value));
    value.lengthAndSign = core::integerSignBit;
    EXPECT_FALSE(core::integerIsZero(value));
}

TEST(IntegerCompare, AgreesWithTheJudge) {
    const auto check = [](const BigNumber& a, const BigNumber& b) {
        const auto order = a <=> b;
        const int expected = std::is_lt(order) ? -1 : std::is_gt(order) ? 1 : 0;
        EXPECT_EQ(core::integerCompare(a.toInteger(), b.toInteger()), expected) << a << " " << b;
    };
    const std::vector<BigNumber> edges = edgeNumbers(8);
    for (const BigNumber& a : edges) {
        for (const BigNumber& b : edges) {
            check(a, b);
            check(-a, b);
            check(a, -b);
        }
    }
    for (int i = 0; i < 20000; ++i) {
        const BigNumber a = randomNumber(20);
        const BigNumber b = i % 3 == 0 ? a + randomBelow(2) : randomNumber(20);
        check(a, b);
        check(a, -b);
        check(-a, b);
        if (a.toInteger().lengthAndSign == b.toInteger().lengthAndSign) {
            check(-a, -b);
        }
    }
}

TEST(IntegerCompare, OfAnObjectWithItselfIsEqual) {
    const CoreInteger value = BigNumber::fromHexadecimal("-5").toInteger();
    EXPECT_EQ(core::integerCompare(value, value), 0);
}

TEST(IntegerCompare, OfNegativesLooksOnlyAtTheLimbsOfTheFirst) {
    const CoreInteger five = (-BigNumber(5)).toInteger();
    const CoreInteger seven = (-BigNumber(7)).toInteger();
    const CoreInteger big = (-BigNumber::powerOfTwo(64)).toInteger();
    EXPECT_EQ(core::integerCompare(five, seven), 1);
    EXPECT_EQ(core::integerCompare(seven, five), -1);
    EXPECT_EQ(core::integerCompare(five, big), -1);
    EXPECT_EQ(core::integerCompare(big, five), -1);
    const CoreInteger sameLow = (-(BigNumber::powerOfTwo(64) + 5)).toInteger();
    EXPECT_EQ(core::integerCompare(five, sameLow), 0);
    EXPECT_EQ(core::integerCompare(sameLow, five), -1);
}

TEST(IntegerCompare, TakesLengthsAsTheyStand) {
    const CoreInteger five = BigNumber(5).toInteger();
    const CoreInteger longFive = withZeroTop(five, 1);
    EXPECT_EQ(core::integerCompare(longFive, BigNumber(7).toInteger()), 1);
    EXPECT_EQ(core::integerCompare(five, longFive), -1);
    EXPECT_EQ(core::integerCompare(longFive, withZeroTop(five, 1)), 0);
    EXPECT_EQ(core::integerCompare(rawInteger({0}), CoreInteger{}), 1);
    EXPECT_EQ(core::integerCompare(CoreInteger{}, five), -1);
    EXPECT_EQ(core::integerCompare(CoreInteger{}, CoreInteger{}), 0);
}

TEST(IntegerCompare, DecidesAtTheHighestLimbThatDiffers) {
    EXPECT_EQ(core::integerCompare(rawInteger({9, 1, 4}), rawInteger({1, 2, 4})), -1);
    EXPECT_EQ(core::integerCompare(rawInteger({0, ~std::uint64_t{0}}), rawInteger({5, 1})), 1);
}

TEST(IntegerLengths, AgreeWithTheJudge) {
    std::vector<BigNumber> numbers = edgeNumbers(20);
    for (int i = 0; i < 5000; ++i) {
        numbers.push_back(randomNumber(20) >> randomBelow(64));
    }
    for (std::uint64_t exponent = 0; exponent < 300; ++exponent) {
        numbers.push_back(BigNumber::powerOfTwo(exponent));
    }
    for (const BigNumber& number : numbers) {
        for (const unsigned sign : {0U, 1U}) {
            const CoreInteger value = withSign(number, sign).toInteger();
            EXPECT_EQ(core::integerBitLength(value), number.bitLength()) << number;
            EXPECT_EQ(core::integerByteLength(value), number.toBytes().size()) << number;
        }
    }
}

TEST(IntegerLengths, OfSmallValues) {
    const auto lengths = [](const BigNumber& number) {
        const CoreInteger value = number.toInteger();
        return std::pair(core::integerBitLength(value), core::integerByteLength(value));
    };
    using Pair = std::pair<std::uint64_t, std::uint64_t>;
    EXPECT_EQ(lengths(0), Pair(0, 0));
    EXPECT_EQ(lengths(1), Pair(1, 1));
    EXPECT_EQ(lengths(255), Pair(8, 1));
    EXPECT_EQ(lengths(256), Pair(9, 2));
    EXPECT_EQ(lengths(BigNumber::powerOfTwo(64)), Pair(65, 9));
}

TEST(IntegerLengths, CountAZeroTopLimbAsNoBitAndOneByte) {
    EXPECT_EQ(core::integerBitLength(rawInteger({5, 0})), 64U);
    EXPECT_EQ(core::integerByteLength(rawInteger({5, 0})), 9U);
    EXPECT_EQ(core::integerBitLength(rawInteger({5, 0, 0})), 128U);
    EXPECT_EQ(core::integerByteLength(rawInteger({5, 0, 0})), 17U);
    EXPECT_EQ(core::integerBitLength(rawInteger({0})), 0U);
    EXPECT_EQ(core::integerByteLength(rawInteger({0})), 1U);
}

TEST(IntegerLimbs, AreTheMagnitudeAsLittleEndianBytes) {
    const BigNumber number = randomNumber(5);
    CoreInteger value = number.toInteger();
    EXPECT_EQ(core::integerLimbs(value), value.limbs.data());
    std::vector<std::uint8_t> bytes(5 * sizeof(std::uint64_t));
    std::memcpy(bytes.data(), core::integerLimbs(value), bytes.size());
    EXPECT_EQ(BigNumber::fromBytes(bytes), number);
}

std::vector<std::uint8_t> storedForm(std::uint32_t bits, std::vector<std::uint8_t> magnitude) {
    for (unsigned i = 0; i < 4; ++i) {
        magnitude.insert(magnitude.begin() + i, static_cast<std::uint8_t>(bits >> 8 * i));
    }
    return magnitude;
}

TEST(IntegerImport, ReadsTheMagnitudeOfAnyLength) {
    for (std::uint32_t bits = 1; bits <= 600; ++bits) {
        std::vector<std::uint8_t> magnitude = randomBytes((bits + 7) / 8);
        magnitude.back() |= 0x80;  // bits above the count are taken as well
        CoreInteger value;
        value.capacity = 10;
        core::integerImport(storedForm(bits, magnitude).data(), value);
        EXPECT_TRUE(isNormalValue(value, BigNumber::fromBytes(magnitude))) << bits << " bits";
        EXPECT_EQ(value.capacity, 10U);
    }
}

TEST(IntegerImport, IgnoresTheTopBitOfTheBitCount) {
    CoreInteger value;
    core::integerImport(storedForm(0x80000010, {0x34, 0x12}).data(), value);
    EXPECT_TRUE(isNormalValue(value, 0x1234));
}

TEST(IntegerImport, OfNoBitsLeavesTheValue) {
    for (const std::uint32_t bits : {0U, 0x80000000U}) {
        CoreInteger value = rawInteger({1, 2, 3});
        value.lengthAndSign |= core::integerSignBit;
        const CoreInteger before = value;
        core::integerImport(storedForm(bits, {0xFF}).data(), value);
        EXPECT_TRUE(isSame(value, before));
    }
}

TEST(IntegerImport, WritesTheWordAndTheBytesGivenOnly) {
    CoreInteger value = rawInteger({0x1111111111111111, 0x2222222222222222, 0x3333333333333333});
    value.lengthAndSign |= core::integerSignBit;
    core::integerImport(storedForm(71, {1, 2, 3, 4, 5, 6, 7, 8, 9}).data(), value);
    CoreInteger expected = rawInteger({0x0807060504030201, 0x2222222222222209, 0x3333333333333333});
    expected.lengthAndSign = 2;
    EXPECT_TRUE(isSame(value, expected));
}

TEST(IntegerImport, KeepsZeroBytesAtTheTop) {
    CoreInteger value;
    core::integerImport(storedForm(136, std::vector<std::uint8_t>(17)).data(), value);
    EXPECT_EQ(value.lengthAndSign, 3U);
}

TEST(IntegerNormalise, DropsZeroLimbsAtTheTopOnly) {
    for (const BigNumber& number : edgeNumbers(5)) {
        for (std::uint32_t zeros = 0; zeros <= 3; ++zeros) {
            CoreInteger value = withZeroTop(number.toInteger(), zeros);
            core::integerNormalise(value);
            EXPECT_TRUE(isNormalValue(value, number));
        }
    }
}

TEST(IntegerNormalise, DropsTheSign) {
    CoreInteger value = (-BigNumber(5)).toInteger();
    core::integerNormalise(value);
    EXPECT_TRUE(isNormalValue(value, 5));
    value = withZeroTop((-BigNumber(5)).toInteger(), 2);
    core::integerNormalise(value);
    EXPECT_TRUE(isNormalValue(value, 5));
}

}  // namespace
