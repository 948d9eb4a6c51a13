#include "engine/signature_text.h"

#include "tests/support/big_number.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"
#include "tests/unit/engine/engine_test.h"

namespace {

const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// A project, and signatures of `someData` under it that come in 42 and in 40 bytes.
class SignatureText : public EngineTest {
protected:
    SignatureText() {
        while (longText.empty() || shortText.empty()) {
            const std::string text = signedText(path, someData);
            // Some tests put another character in the place of an "A" in the middle.
            const bool isLong = text.find('=') == std::string::npos;
            if (isLong && text.find('A') < text.size() - 2) {
                longText = text;
            } else if (!isLong && text.ends_with("==") && text.size() == 56) {
                shortText = text;
            }
        }
    }

    bool accepts(const std::string& text) const { return verifies(path, someData, text); }

    /// The long text with `character` for its first "A".
    std::string withFirstA(char character) const {
        std::string text = longText;
        text[text.find('A')] = character;
        return text;
    }

    const std::string path = project(randomProjectKey());
    std::string longText;
    std::string shortText;
};

TEST_F(SignatureText, IsAcceptedWithFortyTwoAndWithFortyBytes) {
    EXPECT_EQ(longText.size(), 56U);
    EXPECT_TRUE(accepts(longText));
    EXPECT_TRUE(accepts(shortText));
}

TEST_F(SignatureText, IsRefusedWithOneCharacterChanged) {
    for (std::size_t i = 0; i < longText.size(); ++i) {
        std::string text = longText;
        while (text[i] == longText[i]) {
            text[i] = alphabet[randomBelow(alphabet.size())];
        }
        EXPECT_FALSE(accepts(text)) << "character " << i;
    }
}

TEST_F(SignatureText, TakesCharactersOutsideTheAlphabetForA) {
    for (const char outside : {'!', '-', '_', ' ', '\n', '\x01', '\x80', '\xFF'}) {
        EXPECT_TRUE(accepts(withFirstA(outside))) << int{outside};
    }
    std::string every = longText;
    std::replace(every.begin(), every.end(), 'A', '!');
    EXPECT_TRUE(accepts(every));
}

TEST_F(SignatureText, IsRefusedWithACharacterOutsideTheAlphabetForAnother) {
    for (std::size_t i = 0; i < longText.size(); ++i) {
        std::string text = longText;
        text[i] = '!';
        EXPECT_EQ(accepts(text), longText[i] == 'A') << "character " << i;
    }
}

TEST_F(SignatureText, LooksNotAtTheBitsBehindTheLastByte) {
    // 40 bytes leave two bits of the last character before the padding.
    const std::size_t value = alphabet.find(shortText[53]);
    for (std::size_t other = 0; other < alphabet.size(); ++other) {
        std::string text = shortText;
        text[53] = alphabet[other];
        EXPECT_EQ(accepts(text), other % 4 == value % 4) << "value " << other;
    }
}

TEST_F(SignatureText, IsRefusedWhenEmpty) {
    EXPECT_FALSE(accepts(""));
}

TEST_F(SignatureText, IsRefusedWithALengthThatIsNoMultipleOfFour) {
    for (std::size_t length = 1; length <= 131; ++length) {
        if (length % 4 != 0) {
            std::string text = longText;
            text.resize(length, 'A');
            EXPECT_FALSE(accepts(text)) << "length " << length;
        }
    }
}

TEST_F(SignatureText, IsRefusedWhenCutShort) {
    for (std::size_t length = 4; length < longText.size(); length += 4) {
        EXPECT_FALSE(accepts(longText.substr(0, length))) << "length " << length;
    }
}

TEST_F(SignatureText, MayHave128Characters) {
    // 96 bytes less 54: the signature first, zeros behind it.
    const std::string text = longText + std::string(18, 'A') + std::string(54, '=');
    ASSERT_EQ(text.size(), 128U);
    EXPECT_TRUE(accepts(text));
}

TEST_F(SignatureText, IsRefusedBeyond128Characters) {
    EXPECT_FALSE(accepts(longText + std::string(19, 'A') + std::string(54, '=')));
    // 99 bytes less 57: no other limit stands in the way of this one.
    const std::string text = longText + std::string(19, 'A') + std::string(57, '=');
    ASSERT_EQ(text.size(), 132U);
    EXPECT_FALSE(accepts(text));
    EXPECT_FALSE(accepts(longText + std::string(100000, '=')));
}

TEST_F(SignatureText, IsRefusedOnANumberOfBytesAbove42) {
    EXPECT_FALSE(accepts(longText + "AAAA"));
    EXPECT_FALSE(accepts(longText + "AAA="));
    EXPECT_FALSE(accepts(longText + std::string(72, 'A')));
    EXPECT_FALSE(accepts(longText + std::string(20, 'A') + std::string(52, '=')));
}

TEST_F(SignatureText, IsRefusedOnAnOddNumberOfBytes) {
    EXPECT_FALSE(accepts(longText.substr(0, 55) + "="));
    EXPECT_FALSE(accepts(longText + "===="));
    EXPECT_FALSE(accepts(shortText.substr(0, 55) + "A"));
    EXPECT_FALSE(accepts(withFirstA('=')));
}

TEST_F(SignatureText, CountsAnEqualsSignWhereverItStands) {
    // 45 bytes less 3.
    EXPECT_TRUE(accepts(longText + "A==="));
    EXPECT_TRUE(accepts(longText + "=A=="));
    EXPECT_TRUE(accepts(longText + "===A"));
    EXPECT_TRUE(accepts(withFirstA('=') + "AA=="));
    EXPECT_FALSE(accepts(withFirstA('=') + "A==="));
    // One for a character that is no "A" changes the bits.
    std::string text = longText;
    text[text.find_first_not_of('A')] = '=';
    EXPECT_FALSE(accepts(text + "AA=="));
}

TEST_F(SignatureText, IsRefusedWhenItsNumberOfBytesIsBelowZero) {
    for (std::size_t length = 4; length <= 128; length += 4) {
        EXPECT_FALSE(accepts(std::string(length, '='))) << "length " << length;
    }
}

TEST_F(SignatureText, IsRefusedWhenItStandsForZeros) {
    for (const std::string text : {"A===", "AAA=", "AAAA", "A===A===", "AAAA==AA"}) {
        EXPECT_FALSE(accepts(text)) << text;
    }
    for (std::size_t half = 1; half <= 21; ++half) {
        EXPECT_FALSE(accepts(textFromBytes(Bytes(2 * half)))) << "halves of " << half;
    }
}

/// A text and what stands against it.
struct JudgedText {
    std::string text;
    SignatureFault fault;
    std::int64_t bytes;  ///< that it stands for
};

std::string repeated(char character, std::size_t count) {
    std::string text(count, character);
    return text;
}

TEST(ParseSignatureText, TellsTheFirstRuleThatATextBreaks) {
    const std::vector<JudgedText> texts{
        {"", SignatureFault::empty, 0},
        {repeated('B', 128), SignatureFault::tooManyBytes, 96},
        {repeated('B', 72) + repeated('=', 56), SignatureFault::none, 40},
        {repeated('B', 72) + repeated('=', 57), SignatureFault::tooLong, 0},
        {repeated('B', 72) + repeated('=', 60), SignatureFault::tooLong, 0},
        {repeated('=', 132), SignatureFault::tooLong, 0},
        {"B", SignatureFault::groups, 0},
        {"BBB", SignatureFault::groups, 0},
        {repeated('=', 5), SignatureFault::groups, 0},
        {repeated('B', 127), SignatureFault::groups, 0},
        {"====", SignatureFault::padding, -1},
        {repeated('=', 128), SignatureFault::padding, -32},
        {repeated('B', 57) + "===", SignatureFault::none, 42},
        {repeated('B', 58) + "==", SignatureFault::tooManyBytes, 43},
        {repeated('B', 60), SignatureFault::tooManyBytes, 45},
        {"B===", SignatureFault::noBytes, 0},
        {"=B==", SignatureFault::noBytes, 0},
        {"BB==", SignatureFault::odd, 1},
        {repeated('B', 55) + "=", SignatureFault::odd, 41},
        {"BBB=", SignatureFault::none, 2},
        {repeated('B', 56), SignatureFault::none, 42},
        {repeated('\n', 56), SignatureFault::none, 42},
    };
    for (const auto& [text, fault, bytes] : texts) {
        const ParsedSignature parsed = parseSignatureText(text);
        EXPECT_EQ(parsed.fault, fault) << text;
        EXPECT_EQ(parsed.bytes, bytes) << text;
        EXPECT_TRUE(fault == SignatureFault::none ||
                    (parsed.r.lengthAndSign == 0 && parsed.s.lengthAndSign == 0))
            << text;
    }
}

TEST(ParseSignatureText, GivesTheHalvesWithOneZeroLimbLessAtTheMost) {
    for (std::size_t half = 1; half <= 21; ++half) {
        for (std::size_t digits = 1; digits <= half; ++digits) {
            const SignatureNumbers numbers{.r = randomNumber(digits), .s = randomNumber(half)};
            const ParsedSignature parsed = parseSignatureText(signatureText(numbers, half));
            const auto limbsOf = [](std::size_t bytes) {
                return static_cast<std::uint32_t>((bytes + 7) / 8);
            };
            EXPECT_EQ(parsed.bytes, static_cast<std::int64_t>(2 * half));
            EXPECT_EQ(parsed.r.lengthAndSign, std::max(limbsOf(digits), limbsOf(half) - 1));
            EXPECT_EQ(BigNumber::fromInteger(parsed.r), BigNumber::fromHexadecimal(numbers.r));
            EXPECT_EQ(BigNumber::fromInteger(parsed.s), BigNumber::fromHexadecimal(numbers.s));
        }
    }
}

TEST(WriteSignatureText, WritesTheShortestHalvesAndNothingBehindThem) {
    for (const auto& [r, s] :
         std::vector<std::pair<std::string, std::string>>{{"1", "0"},
                                                          {"0", "1"},
                                                          {randomNumber(21), "5"},
                                                          {"FF", randomNumber(20)},
                                                          {randomNumber(19), randomNumber(19)},
                                                          {randomNumber(24), randomNumber(24)}}) {
        const SignatureNumbers numbers{.r = r, .s = s};
        SignatureBuffer buffer;
        buffer.fill('~');
        const std::size_t length = writeSignatureText(
            BigNumber::fromHexadecimal(r).toInteger(signatureLimbs),
            BigNumber::fromHexadecimal(s).toInteger(signatureLimbs), buffer.data());
        EXPECT_EQ(std::string(buffer.data(), length), signatureText(numbers));
        EXPECT_TRUE(std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(length), buffer.end(),
                                [](char c) { return c == '~'; }));
    }
}

TEST(WriteSignatureText, WritesNothingForAPairOfZeros) {
    const core::CoreInteger zero{.capacity = signatureLimbs};
    char untouched = '~';
    EXPECT_EQ(writeSignatureText(zero, zero, &untouched), 0U);
    EXPECT_EQ(untouched, '~');
}

}  // namespace
