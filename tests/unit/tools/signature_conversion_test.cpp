#include "tools/signature/signature_conversion.h"

#include <array>
#include <string>

#include "tests/support/big_number.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"
#include "tests/unit/engine/engine_test.h"
#include "tests/unit/tools/refusal_text.h"

namespace {

using namespace std::string_literals;

constexpr std::array<SignatureForm, 3> forms = {SignatureForm::text, SignatureForm::der,
                                                SignatureForm::hexadecimal};

std::string hexadecimalRefusal(std::string_view hexadecimal) {
    return refusalText(readSignatureAs(SignatureForm::hexadecimal, hexadecimal).refusal);
}

SignatureNumbers acceptedNumbers(const SignatureReading& reading) {
    EXPECT_EQ(refusalText(reading.refusal), "accepted");
    return {.r = BigNumber::fromInteger(reading.r).toHexadecimal(),
            .s = BigNumber::fromInteger(reading.s).toHexadecimal()};
}

TEST(SignatureForms, ReadBackWhatTheyWriteAndKeepTheNumbers) {
    for (int round = 0; round < 500; ++round) {
        const SignatureNumbers numbers{.r = randomNumber(9 + randomBelow(13)),
                                       .s = randomNumber(1 + randomBelow(21))};
        const std::string text = signatureText(numbers);
        const SignatureReading first = readSignatureAs(SignatureForm::text, text);
        for (const SignatureForm from : forms) {
            const SignatureReading reading = readSignatureAs(from, writeSignatureAs(from, first));
            EXPECT_EQ(acceptedNumbers(reading), acceptedNumbers(first));
            for (const SignatureForm to : forms) {
                EXPECT_EQ(writeSignatureAs(to, reading), writeSignatureAs(to, first));
            }
            EXPECT_EQ(writeSignatureAs(SignatureForm::text, reading), text);
        }
    }
}

using SignatureFormsUnderTheEngine = EngineTest;

TEST_F(SignatureFormsUnderTheEngine, GiveTheTextThatSigningGave) {
    for (int round = 0; round < 100; ++round) {
        const std::string path = project(randomProjectKey());
        const std::string text = signedText(path, someData);
        const SignatureReading reading = readSignatureAs(SignatureForm::text, text);
        for (const SignatureForm form : forms) {
            const std::string back = writeSignatureAs(
                SignatureForm::text, readSignatureAs(form, writeSignatureAs(form, reading)));
            EXPECT_EQ(back, text);
        }
    }
}

TEST_F(SignatureFormsUnderTheEngine, MakeATextThatVerifiesOfLibcryptosNumbers) {
    for (int round = 0; round < 100; ++round) {
        const ProjectKey key = randomProjectKey();
        const SignatureNumbers numbers = judgeSign(key, someData);
        const SignatureReading reading =
            readSignatureAs(SignatureForm::hexadecimal, "r=" + numbers.r + " s=" + numbers.s);
        EXPECT_TRUE(
            verifies(project(key), someData, writeSignatureAs(SignatureForm::text, reading)));
    }
}

TEST(SignatureText, OfAnyPaddingIsWrittenInTheShortestHalves) {
    const SignatureNumbers numbers{.r = randomNumber(18), .s = randomNumber(19)};
    for (std::size_t half = 19; half <= 21; ++half) {
        const SignatureReading reading =
            readSignatureAs(SignatureForm::text, signatureText(numbers, half));
        EXPECT_EQ(writeSignatureAs(SignatureForm::text, reading), signatureText(numbers));
    }
}

TEST(HexadecimalSignature, IsWrittenOnTwoLinesOf42Digits) {
    const SignatureReading reading =
        readSignatureAs(SignatureForm::hexadecimal,
                        "r=0123456789ABCDEF00 s=3FFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFFF");
    EXPECT_EQ(writeSignatureAs(SignatureForm::hexadecimal, reading),
              "r=0000000000000000000000000123456789abcdef00\n"
              "s=03ffffffffffffffffffffffffffffffffffffffff");
    EXPECT_EQ(numberDigits(reading.s), "03ffffffffffffffffffffffffffffffffffffffff");
}

TEST(HexadecimalSignature, IsReadWithAnyWhiteSpaceCaseAndZeros) {
    const SignatureNumbers expected{.r = "0A1B2C3D4E5F6A7B8C9D", .s = "0E"};
    for (const std::string& text :
         {"r=A1b2C3d4E5f6A7b8C9d s=e"s, "\n\t r=0a1b2c3d4e5f6a7b8c9d\r\n\v\f s=0E \n"s,
          "r=" + std::string(1000, '0') + "A1B2C3D4E5F6A7B8C9D s=" + std::string(999, '0') + "E"}) {
        EXPECT_EQ(acceptedNumbers(readSignatureAs(SignatureForm::hexadecimal, text)), expected);
    }
}

TEST(HexadecimalSignature, RefusesOtherThanTwoWords) {
    EXPECT_EQ(hexadecimalRefusal("r=1 s=1"), "accepted");
    EXPECT_EQ(hexadecimalRefusal(""),
              "the signature has 0 words instead of two, \"r=...\" and \"s=...\"");
    EXPECT_EQ(hexadecimalRefusal("r=1"),
              "the signature has 1 word instead of two, \"r=...\" and \"s=...\"");
    EXPECT_EQ(hexadecimalRefusal("r=1 s=1 s=1"),
              "the signature has 3 words instead of two, \"r=...\" and \"s=...\"");
    EXPECT_EQ(hexadecimalRefusal("r= 1 s= 1"),
              "the signature has 4 words instead of two, \"r=...\" and \"s=...\"");
}

TEST(HexadecimalSignature, RefusesAWordWithoutItsName) {
    EXPECT_EQ(hexadecimalRefusal("s=1 r=1"), "\"r=\" is missing in front of a number");
    EXPECT_EQ(hexadecimalRefusal("R=1 s=1"), "\"r=\" is missing in front of a number");
    EXPECT_EQ(hexadecimalRefusal("1 s=1"), "\"r=\" is missing in front of a number");
    EXPECT_EQ(hexadecimalRefusal("r=1 1"), "\"s=\" is missing in front of a number");
    EXPECT_EQ(hexadecimalRefusal("r=1 r=1"), "\"s=\" is missing in front of a number");
}

TEST(HexadecimalSignature, RefusesWhatIsNoDigit) {
    EXPECT_EQ(hexadecimalRefusal("r= s=1"), "r has no digits");
    EXPECT_EQ(hexadecimalRefusal("r=1 s="), "s has no digits");
    EXPECT_EQ(hexadecimalRefusal("r=0x1 s=1"),
              "r has a character that is not a hexadecimal digit (number 2 of 3)");
    for (const char wrong : "/:@G`g-+=\0\xFF"s) {
        EXPECT_EQ(hexadecimalRefusal("r=1 s=00"s + wrong + "0"),
                  "s has a character that is not a hexadecimal digit (number 3 of 4)");
    }
}

TEST(HexadecimalSignature, RefusesNumbersThatNoSignatureHas) {
    const std::string below = multiplyAdd("-1", "1", curveOrderDigits);
    EXPECT_EQ(hexadecimalRefusal("r=" + below + " s=" + below), "accepted");
    EXPECT_EQ(hexadecimalRefusal("r=000 s=1"), "r is zero");
    EXPECT_EQ(hexadecimalRefusal("r=1 s=0"), "s is zero");
    for (const std::string& tooLarge : {std::string(curveOrderDigits), std::string(48, '1'),
                                        "1" + std::string(47, '0') + "1", std::string(4000, 'F')}) {
        EXPECT_EQ(hexadecimalRefusal("r=" + tooLarge + " s=1"), "r is not below the order");
        EXPECT_EQ(hexadecimalRefusal("r=1 s=" + tooLarge), "s is not below the order");
    }
    // Of numbers that fit into three limbs, a zero is told first.
    EXPECT_EQ(hexadecimalRefusal("r=" + std::string(48, 'F') + " s=0"), "s is zero");
    EXPECT_EQ(hexadecimalRefusal("r=1 s=" + below),
              "r is below 2^64 but padded to 21 bytes, a form that no signature is accepted in");
}

TEST(SignatureForms, RefuseWhatTheirReadersRefuse) {
    EXPECT_EQ(readSignatureAs(SignatureForm::text, "BBBBB").refusal,
              "the signature has 5 characters, which is not a multiple of four");
    EXPECT_EQ(readSignatureAs(SignatureForm::der, "0").refusal,
              "the signature ends before its length");
    EXPECT_EQ(readSignatureAs(SignatureForm::der, "0\x06\x02\x01\x00\x02\x01\x01"s).refusal,
              "r is zero");
}

}  // namespace
