#include "tools/signature/der.h"

#include <gtest/gtest.h>
#include <openssl/asn1.h>
#include <openssl/objects.h>

#include <array>
#include <memory>

#include "tests/support/big_number.h"
#include "tests/support/hexadecimal.h"
#include "tests/support/random_operands.h"

namespace {

/// What libcrypto encodes a value as, by one of its i2d functions.
template <typename Encode, typename Value>
ByteString libcryptoBytes(Encode encode, const Value* value) {
    unsigned char* data = nullptr;
    const int length = encode(value, &data);
    const ByteString bytes(data, data + length);
    OPENSSL_free(data);
    return bytes;
}

TEST(DerInteger, IsEncodedAsByLibcrypto) {
    for (std::size_t size = 0; size < 200; ++size) {
        ByteString bytes = randomBytes(size);
        std::fill_n(bytes.begin(), randomBelow(std::min<std::size_t>(size, 4) + 1), 0);
        const BigNumber number =
            BigNumber::fromHexadecimal("0" + hexadecimalFromBytes(bytes.data(), size));
        const std::unique_ptr<ASN1_INTEGER, void (*)(ASN1_INTEGER*)> expected(
            BN_to_ASN1_INTEGER(number.get(), nullptr), ASN1_INTEGER_free);
        EXPECT_EQ(derInteger(bytes), libcryptoBytes(i2d_ASN1_INTEGER, expected.get())) << number;
    }
}

TEST(DerInteger, HasAZeroByteInFrontOfASetTopBitAlone) {
    // X.690, section 8.3.
    EXPECT_EQ(derInteger(std::uint32_t{0}), (ByteString{0x02, 0x01, 0x00}));
    EXPECT_EQ(derInteger(ByteString()), (ByteString{0x02, 0x01, 0x00}));
    EXPECT_EQ(derInteger(127), (ByteString{0x02, 0x01, 0x7F}));
    EXPECT_EQ(derInteger(128), (ByteString{0x02, 0x02, 0x00, 0x80}));
    EXPECT_EQ(derInteger(ByteString{0, 0, 1}), (ByteString{0x02, 0x01, 0x01}));
    EXPECT_EQ(derInteger(0xFFFFFFFF), (ByteString{0x02, 0x05, 0x00, 0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(DerObjectIdentifier, IsEncodedAsByLibcrypto) {
    const auto expected = [](const char* name) {
        const std::unique_ptr<ASN1_OBJECT, void (*)(ASN1_OBJECT*)> object(OBJ_txt2obj(name, 1),
                                                                          ASN1_OBJECT_free);
        return libcryptoBytes(i2d_ASN1_OBJECT, object.get());
    };
    EXPECT_EQ(derObjectIdentifier({1, 2, 840, 10045, 1, 2, 3, 3}),
              expected("1.2.840.10045.1.2.3.3"));
    EXPECT_EQ(derObjectIdentifier({0, 39}), expected("0.39"));
    EXPECT_EQ(derObjectIdentifier({1, 39, 0, 127, 128, 16383, 16384, 4294967295}),
              expected("1.39.0.127.128.16383.16384.4294967295"));
}

TEST(DerStrings, AreEncodedAsByLibcrypto) {
    for (const std::size_t size : {0U, 1U, 126U, 127U, 128U, 255U, 256U, 65535U, 65536U}) {
        const ByteString bytes = randomBytes(size);
        const std::unique_ptr<ASN1_OCTET_STRING, void (*)(ASN1_OCTET_STRING*)> octets(
            ASN1_OCTET_STRING_new(), ASN1_OCTET_STRING_free);
        ASN1_OCTET_STRING_set(octets.get(), bytes.data(), static_cast<int>(size));
        EXPECT_EQ(derOctetString(bytes), libcryptoBytes(i2d_ASN1_OCTET_STRING, octets.get()));

        const std::unique_ptr<ASN1_BIT_STRING, void (*)(ASN1_BIT_STRING*)> bits(
            ASN1_BIT_STRING_new(), ASN1_BIT_STRING_free);
        ASN1_BIT_STRING_set(bits.get(), const_cast<unsigned char*>(bytes.data()),
                            static_cast<int>(size));
        bits->flags |= ASN1_STRING_FLAG_BITS_LEFT;
        EXPECT_EQ(derBitString(bytes), libcryptoBytes(i2d_ASN1_BIT_STRING, bits.get()));
    }
}

TEST(DerSequence, HoldsItsValuesInOrder) {
    EXPECT_EQ(derSequence({}), (ByteString{0x30, 0x00}));
    EXPECT_EQ(derSequence({derInteger(5), derOctetString(ByteString{7})}),
              (ByteString{0x30, 0x06, 0x02, 0x01, 0x05, 0x04, 0x01, 0x07}));
}

TEST(DerContext, HoldsAWholeValueUnderItsNumber) {
    EXPECT_EQ(derContext(1, derInteger(5)), (ByteString{0xA1, 0x03, 0x02, 0x01, 0x05}));
    EXPECT_EQ(derContext(0, derInteger(5)), (ByteString{0xA0, 0x03, 0x02, 0x01, 0x05}));
}

}  // namespace
