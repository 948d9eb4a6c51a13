#include "tools/signature/byte_string.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/support/big_number.h"
#include "tests/support/hexadecimal.h"
#include "tests/support/random_operands.h"

namespace {

TEST(BigEndianBytes, TakesTheLowBytesAndPutsZerosInFront) {
    const std::array<std::uint64_t, 2> words = {0x0123456789ABCDEF, 0xFEDCBA9876543210};
    EXPECT_EQ(bigEndianBytes(words, 0), ByteString());
    EXPECT_EQ(bigEndianBytes(words, 1), ByteString{0xEF});
    EXPECT_EQ(bigEndianBytes(words, 9),
              (ByteString{0x10, 0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}));
    EXPECT_EQ(bigEndianBytes(words, 18),
              bytesFromHexadecimal("0000FEDCBA98765432100123456789ABCDEF"));
}

TEST(IntegerFromBytes, ReadsTheNumberThatLibcryptoReads) {
    for (std::size_t size = 0; size <= 24; ++size) {
        for (int round = 0; round < 20; ++round) {
            ByteString bytes = randomBytes(size);
            std::fill_n(bytes.begin(), randomBelow(size + 1), 0);
            const core::CoreInteger value = integerFromBytes(bytes, 3);
            const BigNumber expected =
                BigNumber::fromHexadecimal("0" + hexadecimalFromBytes(bytes.data(), bytes.size()));
            EXPECT_EQ(BigNumber::fromInteger(value), expected);
            EXPECT_EQ(value.lengthAndSign, expected.toInteger(3).lengthAndSign) << "not normal";
            EXPECT_EQ(value.capacity, 3U);
            EXPECT_EQ(bigEndianBytes(value.limbs, size), bytes);
        }
    }
}

TEST(HexadecimalDigits, AreTwoForEachByte) {
    EXPECT_EQ(hexadecimalDigits(ByteString()), "");
    EXPECT_EQ(hexadecimalDigits(ByteString{0x00, 0x0F, 0xA0, 0x9B, 0xFF}), "000fa09bff");
}

}  // namespace
