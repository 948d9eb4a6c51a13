// Numbers and escapes of form text, judged by the standard stream's own extraction.

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "frontend/form_input.h"
#include "tests/support/random_operands.h"

namespace {

constexpr std::uint64_t largest = std::numeric_limits<std::uint64_t>::max();

/// The byte that stream extraction reads from the bytes behind a "%".
char extractedByte(const std::string& text) {
    std::istringstream stream(text);
    int value = 0;
    stream >> std::hex >> value;
    return static_cast<char>(value);
}

/// The number that stream extraction reads; out of range, what it stores beside its failure.
std::uint64_t extractedLength(const std::string& text) {
    std::istringstream stream(text);
    std::uint64_t value = 0;
    stream >> value;
    return value;
}

std::string randomText(std::string_view alphabet, std::size_t length) {
    std::string text(length, ' ');
    for (char& character : text) {
        character = alphabet[randomBelow(alphabet.size())];
    }
    return text;
}

}  // namespace

TEST(FormDecode, AgreesWithStreamExtractionOnAllBytePairs) {
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const std::string pair{static_cast<char>(first), static_cast<char>(second)};
            const std::string expected(1, extractedByte(pair));
            ASSERT_EQ(formDecode("%" + pair), expected) << first << ' ' << second;
            // The bytes around the escape are left alone, however many of the two were used.
            ASSERT_EQ(formDecode("x%" + pair + "5"), "x" + expected + "5")
                << first << ' ' << second;
        }
    }
}

TEST(FormDecode, AgreesWithStreamExtractionOnOneByteAtTheEnd) {
    for (int only = 0; only < 256; ++only) {
        const std::string digits(1, static_cast<char>(only));
        const std::string expected(1, extractedByte(digits));
        ASSERT_EQ(formDecode("a%" + digits), "a" + expected) << only;
    }
}

TEST(FormDecode, GivesAZeroByteForAnEscapeAtTheVeryEnd) {
    EXPECT_EQ(formDecode("%"), std::string(1, '\0'));
    EXPECT_EQ(formDecode("ab%"), std::string("ab\0", 3));
}

TEST(FormDecode, ReadsOddEscapesAsNumbers) {
    EXPECT_EQ(formDecode("%41%4a%4A"), "AJJ");
    EXPECT_EQ(formDecode("%zz"), std::string(1, '\0'));
    EXPECT_EQ(formDecode("%4g"), "\x04");
    EXPECT_EQ(formDecode("%-1"), "\xFF");
    EXPECT_EQ(formDecode("%-f"), "\xF1");
    EXPECT_EQ(formDecode("%+9"), "\t");
    EXPECT_EQ(formDecode("% 7"), "\x07");
    EXPECT_EQ(formDecode("%0x"), std::string(1, '\0'));
    EXPECT_EQ(formDecode("%fF"), "\xFF");
}

TEST(FormDecode, TakesAnEscapeInsideAnEscapeForItsDigits) {
    // "%4" is no number, and the position moves on behind it.
    EXPECT_EQ(formDecode("%%41"), std::string("\0"
                                              "1",
                                              2));
    EXPECT_EQ(formDecode("%+41"),
              "\x04"
              "1");
}

TEST(FormDecode, TurnsPlusIntoASpaceAndCopiesTheRest) {
    EXPECT_EQ(formDecode("a+b++c"), "a b  c");
    EXPECT_EQ(formDecode(""), "");
    for (int byte = 0; byte < 256; ++byte) {
        if (byte != '+' && byte != '%') {
            const std::string text(3, static_cast<char>(byte));
            ASSERT_EQ(formDecode(text), text) << byte;
        }
    }
}

TEST(ParseContentLength, ReadsEdgesAsStreamExtractionDoes) {
    for (const char* text : {"",
                             "0",
                             "5",
                             "12x",
                             "abc",
                             "x12",
                             "-1",
                             "-5",
                             "-0",
                             "+7",
                             "++7",
                             "+-7",
                             "-+7",
                             "- 7",
                             "-",
                             "+",
                             " ",
                             " 12",
                             "\t\n\v\f\r 12",
                             "12 13",
                             "007",
                             "0x10",
                             "1.5",
                             "1e3",
                             "1,000",
                             "18446744073709551614",
                             "18446744073709551615",
                             "18446744073709551616",
                             "-18446744073709551614",
                             "-18446744073709551615",
                             "-18446744073709551616",
                             "18446744073709551620",
                             "184467440737095516150",
                             "00018446744073709551615",
                             "99999999999999999999999999x",
                             "-99999999999999999999999999",
                             "9223372036854775808",
                             "\xA0"
                             "12"}) {
        EXPECT_EQ(parseContentLength(text), extractedLength(text)) << '"' << text << '"';
    }
}

TEST(ParseContentLength, GivesTheNumbersThatItsContractNames) {
    EXPECT_EQ(parseContentLength("12x"), 12U);
    EXPECT_EQ(parseContentLength("abc"), 0U);
    EXPECT_EQ(parseContentLength("-1"), largest);
    EXPECT_EQ(parseContentLength("-5"), largest - 4);
    EXPECT_EQ(parseContentLength("18446744073709551616"), largest);
    EXPECT_EQ(parseContentLength(" +9"), 9U);
}

TEST(ParseContentLength, AgreesWithStreamExtractionOnRandomTexts) {
    for (int i = 0; i < 100000; ++i) {
        const std::string text = randomText(" \t+-0123456789x", randomBelow(10));
        ASSERT_EQ(parseContentLength(text), extractedLength(text)) << '"' << text << '"';
    }
}

TEST(ParseContentLength, AgreesWithStreamExtractionOnNumbersAroundTheRange) {
    for (int i = 0; i < 100000; ++i) {
        const std::string sign = randomText("+- ", randomBelow(2));
        const std::string text = sign + randomText("0123456789", 18 + randomBelow(4)) +
                                 randomText("x 5", randomBelow(2));
        ASSERT_EQ(parseContentLength(text), extractedLength(text)) << '"' << text << '"';
    }
}

TEST(ParseContentLength, AgreesWithStreamExtractionOnAllPairsOfBytes) {
    for (int first = 1; first < 256; ++first) {
        for (int second = 1; second < 256; ++second) {
            const std::string text{static_cast<char>(first), static_cast<char>(second), '4'};
            ASSERT_EQ(parseContentLength(text), extractedLength(text)) << first << ' ' << second;
        }
    }
}
