#include "tools/signature/der_signature.h"

#include <gtest/gtest.h>
#include <openssl/ecdsa.h>

#include <memory>
#include <string>

#include "tests/support/big_number.h"
#include "tests/support/hexadecimal.h"
#include "tests/support/project_key.h"
#include "tests/support/random_operands.h"
#include "tests/unit/tools/refusal_text.h"

namespace {

using Signature = std::unique_ptr<ECDSA_SIG, void (*)(ECDSA_SIG*)>;

core::CoreInteger integer(const std::string& digits) {
    return BigNumber::fromHexadecimal(digits).toInteger(3);
}

/// The encoding that libcrypto makes; it takes any numbers.
Bytes libcryptoSignature(const std::string& r, const std::string& s) {
    const Signature signature(ECDSA_SIG_new(), ECDSA_SIG_free);
    BIGNUM* rNumber = nullptr;
    BIGNUM* sNumber = nullptr;
    BN_hex2bn(&rNumber, r.c_str());
    BN_hex2bn(&sNumber, s.c_str());
    ECDSA_SIG_set0(signature.get(), rNumber, sNumber);
    unsigned char* data = nullptr;
    const int length = i2d_ECDSA_SIG(signature.get(), &data);
    const Bytes bytes(data, data + length);
    OPENSSL_free(data);
    return bytes;
}

/// Whether libcrypto reads all of the bytes, and encodes what it read as the same bytes.
bool libcryptoReads(const Bytes& bytes) {
    const unsigned char* data = bytes.data();
    const Signature signature(d2i_ECDSA_SIG(nullptr, &data, static_cast<long>(bytes.size())),
                              ECDSA_SIG_free);
    if (signature == nullptr || data != bytes.data() + bytes.size()) {
        return false;
    }
    unsigned char* again = nullptr;
    const int length = i2d_ECDSA_SIG(signature.get(), &again);
    const bool same = Bytes(again, again + length) == bytes;
    OPENSSL_free(again);
    return same;
}

std::string refusalOf(const std::string& hexadecimalBytes) {
    return refusalText(readDerSignature(bytesFromHexadecimal(hexadecimalBytes)).refusal);
}

TEST(WriteDerSignature, GivesWhatLibcryptoGives) {
    for (int round = 0; round < 1000; ++round) {
        const std::string r = randomNumber(1 + randomBelow(21));
        const std::string s = randomNumber(1 + randomBelow(21));
        EXPECT_EQ(writeDerSignature(integer(r), integer(s)), libcryptoSignature(r, s));
    }
}

TEST(ReadDerSignature, TakesWhatLibcryptoGives) {
    for (int round = 0; round < 1000; ++round) {
        const std::string r = randomNumber(9 + randomBelow(13));
        const std::string s = randomNumber(1 + randomBelow(21));
        const SignatureReading reading = readDerSignature(libcryptoSignature(r, s));
        EXPECT_EQ(refusalText(reading.refusal), "accepted");
        EXPECT_EQ(reading.halfSize, std::max(r.size(), s.size()) / 2);
        EXPECT_EQ(BigNumber::fromInteger(reading.r), BigNumber::fromHexadecimal(r));
        EXPECT_EQ(BigNumber::fromInteger(reading.s), BigNumber::fromHexadecimal(s));
    }
}

TEST(ReadDerSignature, RefusesAMissingOrOtherSequence) {
    EXPECT_EQ(refusalOf("3006020101020101"), "accepted");
    EXPECT_EQ(refusalOf(""), "the signature is missing");
    EXPECT_EQ(refusalOf("3106020101020101"), "the signature has the tag 31 instead of 30");
    EXPECT_EQ(refusalOf("30"), "the signature ends before its length");
}

TEST(ReadDerSignature, RefusesEachWrongLength) {
    EXPECT_EQ(refusalOf("3080020101020101"), "the signature is of indefinite length");
    EXPECT_EQ(refusalOf("308106020101020101"),
              "the signature has a length of more than one byte, which no signature needs");
    EXPECT_EQ(refusalOf("3007020101020101"), "the signature ends after 6 of 7 bytes");
    EXPECT_EQ(refusalOf("3005020101020101"), "1 byte stands behind the signature");
    EXPECT_EQ(refusalOf("30060201010201010203"), "2 bytes stand behind the signature");
    EXPECT_EQ(refusalOf("3006028101020101"),
              "r has a length of more than one byte, which no signature needs");
    EXPECT_EQ(refusalOf("3006020101028001"), "s is of indefinite length");
    EXPECT_EQ(refusalOf("3006020101020201"), "s ends after 1 of 2 bytes");
    EXPECT_EQ(refusalOf("3003020301"), "r ends after 1 of 3 bytes");
    EXPECT_EQ(refusalOf("300102"), "r ends before its length");
    EXPECT_EQ(refusalOf("300702010102010103"), "1 byte stands behind s");
}

TEST(ReadDerSignature, RefusesANumberThatIsMissingOrNone) {
    EXPECT_EQ(refusalOf("3000"), "r is missing");
    EXPECT_EQ(refusalOf("3003020101"), "s is missing");
    EXPECT_EQ(refusalOf("3006040101020101"), "r has the tag 04 instead of 02");
    EXPECT_EQ(refusalOf("3006020101030101"), "s has the tag 03 instead of 02");
    EXPECT_EQ(refusalOf("30050200020101"), "r has no bytes");
}

TEST(ReadDerSignature, RefusesANumberThatIsNotInItsShortestForm) {
    EXPECT_EQ(refusalOf("300702020001020101"), "r has a zero byte too many in front");
    EXPECT_EQ(refusalOf("30070201010202007F"), "s has a zero byte too many in front");
    EXPECT_EQ(refusalOf("300702010102020080"), "accepted");
    EXPECT_EQ(refusalOf("3006020180020101"), "r is negative");
    EXPECT_EQ(refusalOf("30060201010201FF"), "s is negative");
}

TEST(ReadDerSignature, RefusesNumbersThatNoSignatureHas) {
    const std::string n = curveOrderDigits;
    const std::string below = multiplyAdd("-1", "1", n);
    const auto refusal = [](const std::string& r, const std::string& s) {
        return refusalText(readDerSignature(libcryptoSignature(r, s)).refusal);
    };
    EXPECT_EQ(refusal(below, below), "accepted");
    EXPECT_EQ(refusal("0", below), "r is zero");
    EXPECT_EQ(refusal(below, "0"), "s is zero");
    for (const std::string& tooLarge : {n, std::string(48, '7'), std::string(50, '7'),
                                        std::string(48, 'F'), "1" + std::string(48, '0') + "1"}) {
        EXPECT_EQ(refusal(tooLarge, below), "r is not below the order");
        EXPECT_EQ(refusal(below, tooLarge), "s is not below the order");
    }
    // Of numbers that fit into three limbs, a zero is told first.
    EXPECT_EQ(refusal(std::string(48, '7'), "0"), "s is zero");
    EXPECT_EQ(refusal("1", below),
              "r is below 2^64 but padded to 21 bytes, a form that no signature is accepted in");
}

TEST(ReadDerSignature, IsAsStrictAsLibcryptoOnMutatedBytes) {
    int accepted = 0;
    for (int round = 0; round < 20000; ++round) {
        Bytes bytes = libcryptoSignature(randomNumber(9 + randomBelow(13)), randomNumber(21));
        for (std::uint64_t step = randomBelow(3); step-- > 0;) {
            const auto position =
                bytes.begin() +
                static_cast<std::ptrdiff_t>(randomBelow(randomBelow(2) == 0 ? 6 : bytes.size()));
            switch (randomBelow(4)) {
                case 0:
                    bytes.erase(position);
                    break;
                case 1:
                    bytes.insert(position, static_cast<std::uint8_t>(randomBelow(256)));
                    break;
                default:
                    *position = static_cast<std::uint8_t>(*position ^ 1U << randomBelow(8));
            }
        }
        const SignatureReading reading = readDerSignature(bytes);
        if (!reading.refusal.has_value()) {
            EXPECT_TRUE(libcryptoReads(bytes)) << hexadecimalFromBytes(bytes.data(), bytes.size());
            EXPECT_EQ(writeDerSignature(reading.r, reading.s), bytes);
            ++accepted;
        } else if (libcryptoReads(bytes)) {
            // Well formed, so that only the numbers stand against it.
            const std::string& refusal = reading.refusal->text;
            EXPECT_TRUE(refusal.ends_with("below the order") || refusal.ends_with("is zero") ||
                        refusal.ends_with("is negative") || refusal.starts_with("r is below 2^64"))
                << refusal << ": " << hexadecimalFromBytes(bytes.data(), bytes.size());
        }
    }
    EXPECT_GT(accepted, 4000);
}

}  // namespace
