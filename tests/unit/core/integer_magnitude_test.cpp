#include "core/integer_magnitude.h"

#include <gtest/gtest.h>

#include "tests/unit/core/integer_operands.h"

namespace {

using core::CoreInteger;

TEST(IntegerIsSound, AsksForALengthWithinTheRoomAndForZerosAboveIt) {
    CoreInteger value = rawInteger({5, 6});
    EXPECT_TRUE(core::integerIsSound(value));
    value.lengthAndSign = core::integerLimbRoom;
    EXPECT_TRUE(core::integerIsSound(value));
    value.lengthAndSign = core::integerLimbRoom + 1;
    EXPECT_FALSE(core::integerIsSound(value));
    value.lengthAndSign = 1;
    EXPECT_FALSE(core::integerIsSound(value));
}

TEST(IntegerMarkNegative, LeavesZeroWithoutASign) {
    CoreInteger zero;
    core::integerMarkNegative(zero);
    EXPECT_EQ(zero.lengthAndSign, 0U);
    CoreInteger five = BigNumber(5).toInteger();
    core::integerMarkNegative(five);
    core::integerMarkNegative(five);
    EXPECT_TRUE(isNormalValue(five, -BigNumber(5)));
}

TEST(IntegerTrim, ShortensToTheHighestLimbAndKeepsTheSign) {
    CoreInteger value = withZeroTop((-BigNumber::powerOfTwo(70)).toInteger(), 3);
    core::integerTrim(value, 5);
    EXPECT_TRUE(isNormalValue(value, -BigNumber::powerOfTwo(70)));
    value = withZeroTop(CoreInteger{}, 2);
    value.lengthAndSign |= core::integerSignBit;
    core::integerTrim(value, 2);
    EXPECT_EQ(value.lengthAndSign, 0U);
}

TEST(IntegerTrim, MeasuresFromTheLimbsGiven) {
    CoreInteger value = rawInteger({5, 6, 0, 0});
    value.lengthAndSign = 0;
    core::integerTrim(value, 4);
    EXPECT_EQ(value.lengthAndSign, 2U);
}

TEST(CompareMagnitudes, LeavesSignsOut) {
    const CoreInteger minusSeven = (-BigNumber(7)).toInteger();
    const CoreInteger five = BigNumber(5).toInteger();
    EXPECT_EQ(core::compareMagnitudes(minusSeven, five), 1);
    EXPECT_EQ(core::compareMagnitudes(five, minusSeven), -1);
    EXPECT_EQ(core::compareMagnitudes(minusSeven, BigNumber(7).toInteger()), 0);
}

TEST(SumsOfMagnitudes, LeaveSignsOut) {
    const CoreInteger minusSeven = (-BigNumber(7)).toInteger();
    const CoreInteger five = BigNumber(5).toInteger();
    CoreInteger result = usedResult();
    core::addMagnitudes(minusSeven, five, result);
    EXPECT_TRUE(isNormalValue(result, 12));
    core::subtractMagnitudes(minusSeven, five, result);
    EXPECT_TRUE(isNormalValue(result, 2));
    core::subtractMagnitudes(five, minusSeven, result);
    EXPECT_TRUE(isNormalValue(result, -BigNumber(2)));
}

}  // namespace
