#include "frontend/base64_decoder.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "tests/support/hexadecimal.h"
#include "tests/support/random_operands.h"

namespace {

using namespace std::string_literals;

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The decoded bytes in hexadecimal digits, or "refused".
std::string decoded(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    return base64Decode(text, bytes) ? hexadecimalFromBytes(bytes.data(), bytes.size()) : "refused";
}

std::string randomText(std::size_t length) {
    std::string text(length, ' ');
    for (char& character : text) {
        character = alphabet[randomBelow(alphabet.size())];
    }
    return text;
}

/// A character of a final group: what it is written as and what it means.
struct Symbol {
    char character;
    std::uint32_t value;
    enum class Kind { digit, filler, foreign } kind;
};

/// The alphabet, the zero byte, "=" and one byte that belongs to neither.
std::vector<Symbol> finalGroupSymbols() {
    std::vector<Symbol> symbols;
    for (const char character : alphabet) {
        symbols.push_back(
            {character, static_cast<std::uint32_t>(symbols.size()), Symbol::Kind::digit});
    }
    symbols.push_back({'\0', 0, Symbol::Kind::digit});
    symbols.push_back({'=', 0, Symbol::Kind::filler});
    symbols.push_back({'-', 0, Symbol::Kind::foreign});
    return symbols;
}

/// The bytes of a final group, worked out on one 24-bit number; nothing for a group to be refused.
struct GroupBytes {
    bool accepted = true;
    std::size_t count = 0;
    std::array<std::uint8_t, 3> bytes{};
};

GroupBytes referenceGroup(const std::array<const Symbol*, 4>& group) {
    GroupBytes result;
    std::uint32_t number = 0;
    std::size_t digits = 0;
    bool filled = false;
    for (const Symbol* symbol : group) {
        filled = filled || symbol->kind == Symbol::Kind::filler;
        if (symbol->kind == Symbol::Kind::foreign ||
            (filled && symbol->kind != Symbol::Kind::filler)) {
            result.accepted = false;
            return result;
        }
        number = number * 64 + symbol->value;
        digits += filled ? 0 : 1;
    }
    constexpr std::array<std::size_t, 5> bytesOfDigits{0, 0, 1, 2, 3};
    result.count = bytesOfDigits.at(digits);
    result.bytes = {static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 8),
                    static_cast<std::uint8_t>(number)};
    return result;
}

/// Whether decoding prefix and group gives the prefix's bytes and then those of the reference.
bool agrees(const std::string& text, const std::vector<std::uint8_t>& prefixBytes,
            const GroupBytes& expected) {
    std::vector<std::uint8_t> bytes;
    if (base64Decode(text, bytes) != expected.accepted) {
        return false;
    }
    return !expected.accepted ||
           (bytes.size() == prefixBytes.size() + expected.count &&
            std::equal(prefixBytes.begin(), prefixBytes.end(), bytes.begin()) &&
            std::equal(bytes.begin() + static_cast<std::ptrdiff_t>(prefixBytes.size()), bytes.end(),
                       expected.bytes.begin()));
}

/// Numbers of final groups that were tried, and that differ from the reference.
struct Comparison {
    std::uint64_t tried = 0;
    std::uint64_t differing = 0;
};

/// Every final group, one of `step` behind the leading text.
Comparison compareFinalGroups(const std::string& leading,
                              const std::vector<std::uint8_t>& leadingBytes, std::uint64_t step) {
    const std::vector<Symbol> symbols = finalGroupSymbols();
    const std::uint64_t count = symbols.size();
    std::string text = leading + "    ";
    std::array<const Symbol*, 4> group{};
    Comparison comparison;
    for (std::uint64_t number = 0; number < count * count * count * count; number += step) {
        std::uint64_t rest = number;
        for (std::size_t i = 0; i < group.size(); ++i) {
            group[i] = &symbols[rest % count];
            rest /= count;
            text[leading.size() + i] = group[i]->character;
        }
        ++comparison.tried;
        comparison.differing += agrees(text, leadingBytes, referenceGroup(group)) ? 0 : 1;
    }
    return comparison;
}

/// Standard decoding by libcrypto of a text without an "=".
std::vector<std::uint8_t> judgeDecode(const std::string& text) {
    std::vector<std::uint8_t> bytes(text.size() / 4 * 3);
    EXPECT_EQ(EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(text.data()),
                              static_cast<int>(text.size())),
              static_cast<int>(bytes.size()));
    return bytes;
}

}  // namespace

TEST(Base64Decode, DecodesOneGroupToExactlyItsBytes) {
    EXPECT_EQ(decoded("QUJD"), "414243");
    EXPECT_EQ(decoded("QUI="), "4142");
    EXPECT_EQ(decoded("QQ=="), "41");
    EXPECT_EQ(decoded("////"), "ffffff");
    EXPECT_EQ(decoded("++++"), "fbefbe");
}

TEST(Base64Decode, PutsAZeroByteInFrontOfTheLastOfSeveralGroups) {
    EXPECT_EQ(decoded("QUJDREVG"), "41424300444546");
    EXPECT_EQ(decoded("QUJDRA=="), "4142430044");
    EXPECT_EQ(decoded("QUJDREU="), "414243004445");
    EXPECT_EQ(decoded("QUJDREVGR0hJ"), "41424344454600474849");
    EXPECT_EQ(decoded("////////"), "ffffff00ffffff");
}

TEST(Base64Decode, AcceptsFinalGroupsThatHoldNoByte) {
    EXPECT_EQ(decoded("===="), "");
    EXPECT_EQ(decoded("A==="), "");
    EXPECT_EQ(decoded("/==="), "");
    EXPECT_EQ(decoded("AAAA===="), "00000000");
    EXPECT_EQ(decoded("QUJD===="), "41424300");
}

TEST(Base64Decode, DropsLeftOverBitsUnseen) {
    EXPECT_EQ(decoded("AB=="), "00");
    EXPECT_EQ(decoded("AP=="), "00");
    EXPECT_EQ(decoded("AAD="), "0000");
    EXPECT_EQ(decoded("//=="), "ff");
}

TEST(Base64Decode, RefusesLengthsThatAreNoMultipleOfFour) {
    for (const char* text : {"", "Q", "QU", "QUJ", "QUJDR", "QUJDREVGR0", "=", "==", "==="}) {
        EXPECT_EQ(decoded(text), "refused") << text;
    }
}

TEST(Base64Decode, RefusesEqualsAnywhereButAtTheEnd) {
    for (const char* text : {"=AAA", "Q=JD", "QU=D", "==A=", "=A==", "A==A", "A=A=", "QUJD=EVG",
                             "====QUJD", "QUI=QUJD", "QQ==QUJD", "=UJDQUJD", "A===QUJD"}) {
        EXPECT_EQ(decoded(text), "refused") << text;
    }
}

TEST(Base64Decode, RefusesWhiteSpaceAndLineBreaks) {
    for (const char* text : {"QUJ ", " QUJ", "QUJD\r\n==", "QUJD\nQUJ",
                             "QQ =", "QUJDQQ\n=", "QUJ\tQUJD", "QUJDQU \n"}) {
        EXPECT_EQ(decoded(text), "refused") << text;
    }
}

TEST(Base64Decode, CountsAZeroByteAsSixZeroBits) {
    EXPECT_EQ(decoded("QUJD\0==="s), "41424300");
    EXPECT_EQ(decoded("Q\0=="s), "40");
    EXPECT_EQ(decoded("\0\0\0\0"s), "000000");
    EXPECT_EQ(decoded("Q\0\0DQUJD"s), decoded("QAADQUJD"));
    EXPECT_EQ(decoded("/\0//"s), decoded("/A//"));
}

TEST(Base64Decode, KnowsNoByteOutsideItsAlphabetInAnyPlace) {
    for (int byte = 1; byte < 256; ++byte) {
        const char character = static_cast<char>(byte);
        const bool known = alphabet.find(character) != std::string_view::npos;
        for (std::size_t place = 0; place < 12; ++place) {
            std::string text(12, 'A');
            text[place] = character;
            const bool closes = character == '=' && place == 11;
            EXPECT_EQ(decoded(text) != "refused", known || closes) << byte << " at " << place;
        }
    }
}

TEST(Base64Decode, GivesEachCharacterItsIndex) {
    for (std::size_t i = 0; i < alphabet.size(); ++i) {
        const auto index = static_cast<std::uint8_t>(i);
        EXPECT_EQ(decoded("AAA"s + alphabet[i]), "0000" + hexadecimalFromBytes(&index, 1));
        EXPECT_EQ(decoded("AAA"s + alphabet[i] + "===="),
                  "0000" + hexadecimalFromBytes(&index, 1) + "00");
    }
}

TEST(Base64Decode, AgreesWithLibcryptoApartFromTheZeroByte) {
    for (int i = 0; i < 20000; ++i) {
        const std::string text = randomText(4 * (1 + randomBelow(40)));
        std::vector<std::uint8_t> expected = judgeDecode(text);
        if (text.size() > 4) {
            expected.insert(expected.end() - 3, 0);
        }
        std::vector<std::uint8_t> bytes;
        ASSERT_TRUE(base64Decode(text, bytes)) << text;
        ASSERT_EQ(bytes, expected) << text;
    }
}

TEST(Base64Decode, AgreesWithTheReferenceOnEveryFinalGroup) {
    const Comparison comparison = compareFinalGroups("", {}, 1);
    EXPECT_EQ(comparison.tried, 67U * 67U * 67U * 67U);
    EXPECT_EQ(comparison.differing, 0U);
}

TEST(Base64Decode, AgreesWithTheReferenceOnFinalGroupsBehindLeadingOnes) {
    for (const std::size_t groups : {1U, 2U, 3U}) {
        const std::string leading = randomText(4 * groups);
        std::vector<std::uint8_t> leadingBytes = judgeDecode(leading);
        leadingBytes.push_back(0);
        // The step has no factor in common with 67, so all symbols pass through all places.
        const Comparison comparison = compareFinalGroups(leading, leadingBytes, 41);
        EXPECT_GT(comparison.tried, 400000U);
        EXPECT_EQ(comparison.differing, 0U) << leading;
    }
}

TEST(Base64Decode, AgreesWithTheReferenceOnEveryPairOfCharactersOfALeadingGroup) {
    for (const std::size_t first : {0U, 1U, 2U, 5U, 6U}) {
        for (const char a : alphabet) {
            for (const char b : alphabet) {
                std::string text(12, 'K');
                text[first] = a;
                text[first + 1] = b;
                std::vector<std::uint8_t> expected = judgeDecode(text);
                expected.insert(expected.end() - 3, 0);
                std::vector<std::uint8_t> bytes;
                ASSERT_TRUE(base64Decode(text, bytes));
                ASSERT_EQ(bytes, expected) << text;
            }
        }
    }
}
