#include "tools/signature/signature_reading.h"

#include <openssl/ripemd.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/libcrypto_curve.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"
#include "tests/unit/engine/engine_test.h"
#include "tests/unit/tools/refusal_text.h"

namespace {

using namespace std::string_literals;

std::string refusalOf(std::string_view text) {
    return refusalText(readSignature(text).refusal);
}

/// The text of these numbers in halves of 21 bytes.
std::string fullText(const std::string& r, const std::string& s) {
    return signatureText({.r = r, .s = s}, 21);
}

std::string orderPlus(const std::string& digits) {
    return multiplyAdd("1", curveOrderDigits, digits);
}

SignatureNumbers numbersOf(const SignatureReading& reading) {
    return {.r = BigNumber::fromInteger(reading.r).toHexadecimal(),
            .s = BigNumber::fromInteger(reading.s).toHexadecimal()};
}

SignatureNumbers withoutZerosInFront(const SignatureNumbers& numbers) {
    return {.r = BigNumber::fromHexadecimal(numbers.r).toHexadecimal(),
            .s = BigNumber::fromHexadecimal(numbers.s).toHexadecimal()};
}

TEST(ReadSignature, RefusesAnEmptyText) {
    EXPECT_EQ(refusalOf(""), "the signature is empty");
    EXPECT_EQ(refusalOf("\0hJ2Y"s), "the signature is empty");
}

TEST(ReadSignature, RefusesATextOfMoreThan128Characters) {
    // As many "=" leave 42 bytes: it is the length alone that is refused.
    const std::string longest = std::string(72, 'B') + std::string(56, '=');
    EXPECT_EQ(refusalOf(longest), "accepted");
    EXPECT_EQ(refusalOf(longest + "="), "the signature has 129 characters, more than 128");
    EXPECT_EQ(refusalOf(longest + "===="), "the signature has 132 characters, more than 128");
}

TEST(ReadSignature, RefusesIncompleteGroups) {
    EXPECT_EQ(refusalOf("B"), "the signature has 1 character, which is not a multiple of four");
    EXPECT_EQ(refusalOf("BBB"), "the signature has 3 characters, which is not a multiple of four");
    EXPECT_EQ(refusalOf(std::string(57, 'B')),
              "the signature has 57 characters, which is not a multiple of four");
    EXPECT_EQ(refusalOf(std::string(127, 'B')),
              "the signature has 127 characters, which is not a multiple of four");
}

TEST(ReadSignature, RefusesMorePaddingThanBytes) {
    EXPECT_EQ(refusalOf("===="), "the signature has 4 \"=\", but its groups hold only 3 bytes");
    EXPECT_EQ(refusalOf(std::string(128, '=')),
              "the signature has 128 \"=\", but its groups hold only 96 bytes");
}

TEST(ReadSignature, RefusesMoreThan42Bytes) {
    EXPECT_EQ(refusalOf(std::string(60, 'B')), "the signature stands for 45 bytes, more than 42");
    EXPECT_EQ(refusalOf(std::string(58, 'B') + "=="),
              "the signature stands for 43 bytes, more than 42");
    EXPECT_EQ(refusalOf(std::string(128, 'B')), "the signature stands for 96 bytes, more than 42");
}

TEST(ReadSignature, RefusesNoBytes) {
    EXPECT_EQ(refusalOf("B==="), "the signature stands for no bytes");
    EXPECT_EQ(refusalOf("=B=="), "the signature stands for no bytes");
}

TEST(ReadSignature, RefusesHalvesOfOddLength) {
    EXPECT_EQ(refusalOf(std::string(55, 'B') + "="),
              "the signature's halves are of odd length (41 bytes)");
    EXPECT_EQ(refusalOf("BB=="), "the signature's halves are of odd length (1 byte)");
    EXPECT_EQ(refusalOf("=BB=BBBB=BBB"), "accepted");
    EXPECT_EQ(refusalOf("=BB=BBBB=BB="), "the signature's halves are of odd length (5 bytes)");
}

TEST(ReadSignature, RefusesZeros) {
    EXPECT_EQ(refusalOf(fullText("0", "1")), "r is zero");
    EXPECT_EQ(refusalOf(fullText("0", "0")), "r is zero");
    EXPECT_EQ(refusalOf(fullText("10000000000000000000000000000000000", "0")), "s is zero");
    EXPECT_EQ(refusalOf(std::string(56, '!')), "r is zero");
}

TEST(ReadSignature, RefusesNumbersFromTheOrderOn) {
    const std::string n = curveOrderDigits;
    const std::string below = multiplyAdd("-1", "1", n);
    const std::string most(42, 'F');
    EXPECT_EQ(refusalOf(fullText(below, below)), "accepted");
    EXPECT_EQ(refusalOf(fullText(below, "1")), "accepted");
    for (const std::string& tooLarge : {n, orderPlus("1"), most}) {
        EXPECT_EQ(refusalOf(fullText(tooLarge, below)), "r is not below the order");
        EXPECT_EQ(refusalOf(fullText(below, tooLarge)), "s is not below the order");
        EXPECT_EQ(refusalOf(fullText(tooLarge, tooLarge)), "r is not below the order");
        EXPECT_EQ(refusalOf(fullText(tooLarge, "0")), "s is zero");
    }
}

TEST(ReadSignature, GivesTheNumbersAndTheirLength) {
    for (int round = 0; round < 200; ++round) {
        const SignatureNumbers numbers{.r = randomNumber(17 + randomBelow(5)),
                                       .s = randomNumber(1 + randomBelow(21))};
        for (std::size_t half = 21; 2 * half >= std::max(numbers.r.size(), numbers.s.size());
             --half) {
            const SignatureReading reading = readSignature(signatureText(numbers, half) + "\0x"s);
            EXPECT_EQ(refusalText(reading.refusal), "accepted");
            EXPECT_EQ(reading.halfSize, half);
            EXPECT_EQ(numbersOf(reading), withoutZerosInFront(numbers));
        }
    }
}

TEST(ReadSignature, GivesNoNumbersOfATextWithoutHalves) {
    const SignatureReading reading = readSignature("BB==");
    EXPECT_EQ(reading.halfSize, 0U);
    EXPECT_EQ(numbersOf(reading), (SignatureNumbers{.r = "0", .s = "0"}));
}

TEST(ReadSignature, GivesTheNumbersThatItRefuses) {
    const SignatureReading reading = readSignature(fullText("0", std::string(42, 'F')));
    EXPECT_EQ(reading.refusal, "r is zero");
    EXPECT_EQ(reading.halfSize, 21U);
    EXPECT_EQ(numbersOf(reading), (SignatureNumbers{.r = "0", .s = std::string(42, 'F')}));
}

TEST(MismatchReason, NamesTheRareSignaturesWhoseRIsShort) {
    const std::string reason =
        "the signature was made over other data or under another key, or was altered";
    const auto reasonOf = [](const std::string& r) {
        return mismatchReason(readSignature(signatureText({.r = r, .s = "5"})));
    };
    EXPECT_EQ(reasonOf("1" + std::string(32, '0')), reason);
    const std::string rare = reason +
                             ", or it is one of the few (one in 2^35) that are made and not "
                             "accepted: its r is below 2^128";
    EXPECT_EQ(reasonOf(std::string(32, 'F')), rare);
    EXPECT_EQ(reasonOf("1"), rare);
}

TEST(WriteSignature, GivesTheTextOfTheShortestHalves) {
    for (int round = 0; round < 500; ++round) {
        const SignatureNumbers numbers{.r = randomNumber(1 + randomBelow(21)),
                                       .s = randomNumber(1 + randomBelow(21))};
        EXPECT_EQ(writeSignature(BigNumber::fromHexadecimal(numbers.r).toInteger(3),
                                 BigNumber::fromHexadecimal(numbers.s).toInteger(3)),
                  signatureText(numbers));
    }
}

SignatureReading signatureOf(const std::string& r, const std::string& s) {
    return signatureOfNumbers(BigNumber::fromHexadecimal(r).toInteger(3),
                              BigNumber::fromHexadecimal(s).toInteger(3));
}

TEST(SignatureOfNumbers, RefusesWhatItsTextIsRefusedFor) {
    for (const std::string& r :
         {"0"s, "1"s, std::string(16, 'F'), "1" + std::string(16, '0'), orderPlus("0")}) {
        for (const std::string& s :
             {"1"s, std::string(32, 'F'), "1" + std::string(32, '0'), orderPlus("0")}) {
            const SignatureReading ofText = readSignature(signatureText({.r = r, .s = s}));
            EXPECT_EQ(signatureOf(r, s).refusal, ofText.refusal);
            EXPECT_EQ(signatureOf(r, s).halfSize, ofText.halfSize);
        }
    }
    EXPECT_EQ(signatureOf("0", "0").refusal, "r is zero");
    EXPECT_EQ(signatureOf("1", "0").refusal, "s is zero");
    EXPECT_EQ(signatureOf("1", "1" + std::string(32, '0')).refusal,
              "r is below 2^64 but padded to 17 bytes, a form that no signature is accepted in");
}

/// Against the engine, under one key and for one signature that libcrypto made.
class ReadingAndVerifying : public EngineTest {
protected:
    /// One of: another character anywhere, "=" or what is no character of the alphabet among them;
    /// characters taken out, put in, or exchanged; the numbers in halves of another length.
    std::string mutated(std::string text) const {
        const std::string characters = "ABCDwxyz0189+/=!- \n\x7F\xFF";
        const std::uint64_t steps = randomBelow(4);
        if (randomBelow(3) == 0) {
            text = signatureText(randomBelow(4) == 0 ? negative : good, randomBelow(24));
        }
        for (std::uint64_t step = 0; step < steps; ++step) {
            const std::size_t position = randomBelow(text.size());
            const std::string character(1, characters[randomBelow(characters.size())]);
            switch (randomBelow(5)) {
                case 0:
                    text.replace(position, 1, character);
                    break;
                case 1:
                    text.erase(position, 1 + randomBelow(4));
                    break;
                case 2:
                    text.insert(position, 1 + randomBelow(4), character[0]);
                    break;
                case 3:
                    text.append(4 * randomBelow(3), '=');
                    break;
                default:
                    replaceAs(text, character[0]);
            }
            if (text.empty()) {
                return "";
            }
        }
        return text;
    }

    /// Writes some of the characters "A" as one outside the alphabet.
    static void replaceAs(std::string& text, char character) {
        for (char& c : text) {
            if (c == 'A' && std::string("!- \n\x7F\xFF").find(character) != std::string::npos &&
                randomBelow(2) == 0) {
                c = character;
            }
        }
    }

    const ProjectKey key = randomProjectKey();
    const std::string path = project(key);
    const SignatureNumbers good = withoutZerosInFront(judgeSign(key, someData));
    /// It goes with r as s does, since x(-R) = x(R).
    const SignatureNumbers negative = {
        .r = good.r,
        .s = BigNumber::fromHexadecimal(multiplyAdd("-1", good.s, curveOrderDigits))
                 .toHexadecimal()};
};

TEST_F(ReadingAndVerifying, AgreeOnMutatedTexts) {
    int valid = 0;
    int refused = 0;
    for (int round = 0; round < 4000; ++round) {
        const std::string text = mutated(signatureText(good, 20 + randomBelow(2)));
        const SignatureReading reading = readSignature(text);
        const bool verdict = verifies(path, someData, text);
        const SignatureNumbers numbers = numbersOf(reading);
        const bool expected =
            !reading.refusal.has_value() && (numbers == good || numbers == negative);
        EXPECT_EQ(verdict, expected) << text << ": " << refusalText(reading.refusal);
        valid += verdict ? 1 : 0;
        refused += reading.refusal.has_value() ? 1 : 0;
    }
    EXPECT_GT(valid, 400);
    EXPECT_GT(refused, 400);
}

TEST_F(ReadingAndVerifying, AgreeWhateverStandsForAnA) {
    // The top byte of s is below 4, so that the last character is an "A".
    int valid = 0;
    for (int character = 1; character < 256; ++character) {
        std::string text = signatureText(good, 21);
        text.back() = static_cast<char>(character);
        const SignatureReading reading = readSignature(text);
        const bool verdict = verifies(path, someData, text);
        EXPECT_EQ(verdict, !reading.refusal.has_value() && numbersOf(reading) == good)
            << "character " << character;
        valid += verdict ? 1 : 0;
    }
    EXPECT_EQ(valid, 255 - 63 - 1) << "all but 63 others of the alphabet and the \"=\"";
}

TEST(SignatureRemarks, TellOfEachCharacterOutsideTheAlphabet) {
    const std::string alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=";
    for (int character = 1; character < 256; ++character) {
        const std::string strange(2, static_cast<char>(character));
        const bool isKnown = alphabet.find(strange[0]) != std::string::npos;
        const std::vector<std::string> remarks = signatureRemarks("AA" + strange);
        ASSERT_EQ(remarks.size(), isKnown ? 0U : 2U) << character;
        if (!isKnown) {
            EXPECT_TRUE(remarks[0].starts_with("character 3 of the signature is ")) << remarks[0];
            EXPECT_EQ(remarks[1],
                      "2 characters of the signature are outside its alphabet, read as \"A\"");
        }
    }
    EXPECT_EQ(
        signatureRemarks("AA!"),
        std::vector<std::string>{"character 3 of the signature is \"!\", which no signature has"})
        << "of this length nothing is decoded";
    EXPECT_EQ(signatureRemarks(std::string(132, '!')).size(), 1U) << "nor of this one";
    EXPECT_EQ(signatureRemarks("signature"), std::vector<std::string>());
}

TEST(SignatureRemarks, NameTheFirstCharacterOutsideTheAlphabet) {
    const std::vector<std::pair<std::string, std::string>> texts = {
        {"AB CD E",
         "character 3 of the signature is a space, which a \"+\" becomes in a URL or a form: write "
         "it as \"%2B\" there"},
        {" ABCD", "character 1 of the signature is a space, which is not part of it"},
        {"ABCD ", "character 5 of the signature is a space, which is not part of it"},
        {"AB%2BC", R"(character 3 of the signature is "%2B", as characters are written in a URL )"
                   "or a form: decode it first"},
        {"AB%2bC", R"(character 3 of the signature is "%2b", as characters are written in a URL )"
                   "or a form: decode it first"},
        {"ABC%2", R"(character 4 of the signature is "%", which no signature has)"},
        {"AB%2B", R"(character 3 of the signature is "%2B", as characters are written in a URL )"
                  "or a form: decode it first"},
        {"ABCD%2G2", R"(character 5 of the signature is "%", which no signature has)"},
        {"ABCD%G22", R"(character 5 of the signature is "%", which no signature has)"},
        {"ABCDE\n", "character 6 of the signature is a line feed, which is not part of it"},
        {"ABCDE\r\n", "character 6 of the signature is a carriage return, which is not part of it"},
        {"\tABCDE", "character 1 of the signature is a tab, which is not part of it"},
        {"\"ABCD\"", "character 1 of the signature is a quote, which is not part of it"},
        {"'ABCD'", "character 1 of the signature is a quote, which is not part of it"},
        {"A-B_C",
         R"(character 2 of the signature is "-", which base64 for URLs has instead of "+")"},
        {"AB_C-",
         R"(character 3 of the signature is "_", which base64 for URLs has instead of "/")"}};
    for (const auto& [text, remark] : texts) {
        const std::vector<std::string> remarks = signatureRemarks(text);
        ASSERT_FALSE(remarks.empty()) << text;
        EXPECT_EQ(remarks[0], remark);
    }
}

/// A key under which (r, s) is a signature of `someData` made with a point whose x is r + n.
ProjectKey keyWithXAboveTheOrder(const BigNumber& r, const BigNumber& s, const AffinePoint& R) {
    const CurveJudge curve;
    const BigNumber n = curve.order();
    const BigNumber nonce = curve.randomScalar();
    Bytes digest(RIPEMD160_DIGEST_LENGTH);
    RIPEMD160(someData.data(), someData.size(), digest.data());
    const BigNumber e = BigNumber::fromBytes(digest);
    const BigNumber scalar = (s * nonce % n + n - e) * r.inverseModulo(n) % n;
    const AffinePoint base = curve.multiply(nonce.inverseModulo(n), R);
    return keyWithScalar(scalar.toHexadecimal(), base.x.toHexadecimal(), base.y.toHexadecimal());
}

class ReadingOfASmallR : public EngineTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(ReadingOfASmallR, RefusesThePaddingThatTheEngineNeverAccepts) {
    const CurveJudge curve;
    for (int round = 0; round < 5; ++round) {
        std::optional<AffinePoint> R;
        BigNumber r;
        while (!R.has_value()) {
            r = BigNumber::fromHexadecimal(randomNumber(GetParam()));
            R = curve.pointWithX(r + curve.order());
            if (R.has_value() && !curve.multiply(curve.order(), *R).infinity) {
                R.reset();
            }
        }
        const SignatureNumbers numbers{.r = r.toHexadecimal(), .s = randomNumber(4)};
        const ProjectKey key = keyWithXAboveTheOrder(r, BigNumber::fromHexadecimal(numbers.s), *R);
        ASSERT_TRUE(judgeAccepts(key, someData, numbers));
        const std::string path = project(key);
        for (std::size_t half = std::max<std::size_t>(GetParam(), 4); half <= 21; ++half) {
            const std::string text = signatureText(numbers, half);
            const bool accepted = GetParam() > 8 || half <= 16;
            EXPECT_EQ(verifies(path, someData, text), accepted) << "halves of " << half;
            EXPECT_EQ(refusalOf(text), accepted ? "accepted"
                                                : "r is below 2^64 but padded to " +
                                                      std::to_string(half) +
                                                      " bytes, a form that no signature is "
                                                      "accepted in");
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Bytes, ReadingOfASmallR, testing::Values(1, 5, 8, 9, 12, 16),
                         testing::PrintToStringParamName());

}  // namespace
