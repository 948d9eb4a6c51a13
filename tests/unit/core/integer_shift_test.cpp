#include <gtest/gtest.h>

#include "core/integer.h"
#include "tests/support/random_operands.h"
#include "tests/unit/core/integer_operands.h"

namespace {

using core::CoreInteger;

CoreInteger shiftedLeft(CoreInteger value, std::uint64_t count) {
    core::integerShiftLeft(value, count);
    return value;
}

CoreInteger shiftedRight(CoreInteger value, std::uint64_t count) {
    core::integerShiftRight(value, count);
    return value;
}

CoreInteger truncated(CoreInteger value, std::uint64_t count) {
    core::integerTruncate(value, count);
    return value;
}

std::vector<BigNumber> shiftOperands() {
    std::vector<BigNumber> numbers = edgeNumbers(6);
    for (int i = 0; i < 60; ++i) {
        numbers.push_back(randomNumber(20));
    }
    return numbers;
}

TEST(IntegerShiftLeft, AgreesWithTheJudge) {
    for (const BigNumber& number : shiftOperands()) {
        for (std::uint64_t count = 0; count <= 330; ++count) {
            EXPECT_TRUE(isNormalValue(shiftedLeft(number.toInteger(), count), number << count))
                << number << " << " << count;
        }
    }
}

TEST(IntegerShiftLeft, ByLessThanALimbKeepsTheSign) {
    for (const BigNumber& number : shiftOperands()) {
        for (std::uint64_t count = 0; count < 64; ++count) {
            EXPECT_TRUE(
                isNormalValue(shiftedLeft((-number).toInteger(), count), (-number) << count))
                << number << " << " << count;
        }
    }
}

TEST(IntegerShiftLeft, LeavesZero) {
    EXPECT_TRUE(isNormalValue(shiftedLeft(CoreInteger{}, 1), 0));
    EXPECT_TRUE(isNormalValue(shiftedLeft(CoreInteger{}, 640), 0));
}

TEST(IntegerShiftLeft, EndsAtTheHighestLimb) {
    EXPECT_TRUE(isNormalValue(shiftedLeft(rawInteger({5, 0, 0}), 3), 40));
    EXPECT_TRUE(isNormalValue(shiftedLeft(rawInteger({5, 0, 0}), 64), BigNumber(5) << 64));
}

TEST(IntegerShiftLeft, OfAValueThatFillsItsRoomStaysInIt) {
    const BigNumber number =
        BigNumber::powerOfTwo(std::uint64_t{64} * core::integerLimbRoom - 1) - 1;
    EXPECT_TRUE(isNormalValue(shiftedLeft(number.toInteger(), 1), number << 1));
}

TEST(IntegerShiftRight, AgreesWithTheJudge) {
    for (const BigNumber& number : shiftOperands()) {
        for (std::uint64_t count = 0; count <= number.bitLength() + 70; ++count) {
            for (const unsigned sign : {0U, 1U}) {
                const BigNumber value = withSign(number, sign);
                EXPECT_TRUE(isNormalValue(shiftedRight(value.toInteger(), count), value >> count))
                    << value << " >> " << count;
            }
        }
    }
}

TEST(IntegerShiftRight, OfAValueThatFillsItsRoomStaysInIt) {
    const BigNumber number = BigNumber::powerOfTwo(std::uint64_t{64} * core::integerLimbRoom) - 1;
    EXPECT_TRUE(isNormalValue(shiftedRight(number.toInteger(), 100), number >> 100));
}

TEST(IntegerShiftRight, BeyondTheBitsClearsTheCapacity) {
    CoreInteger value = rawInteger({1, 2, 3});
    value.capacity = 2;
    core::integerShiftRight(value, 130);
    EXPECT_EQ(value.lengthAndSign, 0U);
    EXPECT_EQ(value.limbs[1], 0U);
    EXPECT_EQ(value.limbs[2], 3U);
}

TEST(IntegerTruncate, AgreesWithTheJudge) {
    for (const BigNumber& number : shiftOperands()) {
        for (std::uint64_t count = 0; count <= number.bitLength() + 130; ++count) {
            const BigNumber expected = number % BigNumber::powerOfTwo(count);
            const CoreInteger value = truncated(number.toInteger(), count);
            ASSERT_EQ(BigNumber::fromInteger(value), expected) << number << " to " << count;
            CoreInteger normal = value;
            core::integerNormalise(normal);
            EXPECT_TRUE(isNormalValue(normal, expected)) << "a limb above the length";
        }
    }
}

TEST(IntegerTruncate, TakesTheLengthOfTheBits) {
    EXPECT_TRUE(isSame(truncated(BigNumber(5).toInteger(), 192), rawInteger({5, 0, 0})));
    EXPECT_EQ(truncated(BigNumber(5).toInteger(), 64).lengthAndSign, 1U);
    // A partial top limb that is zero goes, just that one.
    EXPECT_EQ(truncated(BigNumber(5).toInteger(), 191).lengthAndSign, 2U);
    EXPECT_EQ(truncated(BigNumber(5).toInteger(), 200).lengthAndSign, 3U);
    EXPECT_EQ(truncated(BigNumber(5).toInteger(), 100).lengthAndSign, 1U);
    // A whole top limb that is zero stays.
    EXPECT_EQ(truncated(rawInteger({5, 0, 7}), 128).lengthAndSign, 2U);
    EXPECT_EQ(truncated(rawInteger({0, 0, 7}), 100).lengthAndSign, 1U);
    EXPECT_EQ(truncated(rawInteger({8}), 3).lengthAndSign, 0U);
    EXPECT_EQ(truncated(rawInteger({8, 9}), 0).lengthAndSign, 0U);
}

TEST(IntegerTruncate, DropsHighBits) {
    EXPECT_TRUE(isNormalValue(truncated((BigNumber::powerOfTwo(130) + 5).toInteger(), 100), 5));
    EXPECT_TRUE(isNormalValue(truncated(BigNumber(0xFF).toInteger(), 3), 7));
}

TEST(IntegerTruncate, DropsTheSign) {
    EXPECT_TRUE(isNormalValue(truncated((-BigNumber(5)).toInteger(), 64), 5));
    EXPECT_TRUE(isNormalValue(truncated((-BigNumber(13)).toInteger(), 3), 5));
}

TEST(IntegerTruncate, OfAValueThatFillsItsRoomStaysInIt) {
    const BigNumber number = BigNumber::powerOfTwo(std::uint64_t{64} * core::integerLimbRoom) - 1;
    EXPECT_TRUE(isNormalValue(truncated(number.toInteger(), 100), BigNumber::powerOfTwo(100) - 1));
}

TEST(IntegerTruncate, LeavesZero) {
    EXPECT_TRUE(isNormalValue(truncated(CoreInteger{}, 192), 0));
}

}  // namespace
