#include "core/core_base64.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/random_operands.h"

namespace {

// RFC 4648, section 4, table 1.
const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

bool bitOf(const std::uint8_t* bytes, std::size_t bit) {
    return (bytes[bit / 8] >> bit % 8 & 1) != 0;
}

/// Characters made bit by bit: bit i of the bytes is bit i mod 6 of character i / 6.
std::string charactersOf(const std::uint8_t* bytes, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t value = 0;
        for (std::size_t bit = 0; bit < 6; ++bit) {
            value += bitOf(bytes, 6 * i + bit) ? std::size_t{1} << bit : 0;
        }
        text += alphabet[value];
    }
    return text;
}

/// The text of the first bytes of `input`; it is followed by at least three bytes.
std::string encode(const Bytes& input, std::size_t length) {
    std::string text((length + 2) / 3 * 4 + 4, '?');
    const std::uint64_t written = core::coreBase64Encode(input.data(), length, text.data());
    EXPECT_EQ(written, (length + 2) / 3 * 4);
    EXPECT_EQ(text.substr(written), "????") << "a terminator, or more";
    return text.substr(0, written);
}

std::string encode(Bytes input) {
    const std::size_t length = input.size();
    input.resize(length + 3);
    return encode(input, length);
}

struct Decoded {
    std::uint64_t count;
    Bytes bytes;  ///< all that the groups give, whatever the count says

    bool operator==(const Decoded&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Decoded& decoded) {
    stream << decoded.count << ":";
    for (const std::uint8_t byte : decoded.bytes) {
        stream << " " << int{byte};
    }
    return stream;
}

Decoded decode(const std::string& text) {
    constexpr std::uint8_t filler = 0xEE;
    const std::size_t size = text.size() / 4 * 3;
    Decoded decoded{0, Bytes(size + 4, filler)};
    decoded.count = core::coreBase64Decode(text.data(), text.size(), decoded.bytes.data());
    EXPECT_EQ(decoded.bytes[size], 0) << "the byte behind the last group";
    EXPECT_EQ(std::count(decoded.bytes.end() - 3, decoded.bytes.end(), filler), 3);
    decoded.bytes.resize(size);
    return decoded;
}

/// The 65536 groups whose third byte is `top`, one after the other, and three bytes to be read.
Bytes groupsWithTop(std::uint8_t top) {
    Bytes groups;
    for (std::uint32_t low = 0; low < 0x10000; ++low) {
        groups.push_back(static_cast<std::uint8_t>(low));
        groups.push_back(static_cast<std::uint8_t>(low >> 8));
        groups.push_back(top);
    }
    groups.insert(groups.end(), 3, 0xFF);
    return groups;
}

TEST(CoreBase64, AllGroupsGoBothWays) {
    constexpr std::size_t groupCount = 0x10000;
    std::string text(4 * groupCount, '?');
    Bytes back(3 * groupCount + 1);
    std::size_t encodedWrong = 0;
    std::size_t decodedWrong = 0;
    for (unsigned top = 0; top < 256; ++top) {
        const Bytes groups = groupsWithTop(static_cast<std::uint8_t>(top));
        ASSERT_EQ(core::coreBase64Encode(groups.data(), 3 * groupCount, text.data()), text.size());
        std::string expected;
        expected.reserve(text.size());
        for (std::size_t group = 0; group < groupCount; ++group) {
            expected += charactersOf(groups.data() + 3 * group, 4);
        }
        for (std::size_t i = 0; i < text.size(); ++i) {
            encodedWrong += text[i] != expected[i] ? 1 : 0;
        }
        // The texts of all groups are all texts of four characters of the alphabet.
        ASSERT_EQ(core::coreBase64Decode(expected.data(), expected.size(), back.data()),
                  3 * groupCount);
        for (std::size_t i = 0; i < 3 * groupCount; ++i) {
            decodedWrong += back[i] != groups[i] ? 1 : 0;
        }
    }
    EXPECT_EQ(encodedWrong, 0U);
    EXPECT_EQ(decodedWrong, 0U);
}

TEST(CoreBase64, AllLengthsGoBothWays) {
    for (std::size_t length = 1; length <= 200; ++length) {
        const Bytes input = randomBytes(length + 3);
        const std::string text = encode(input, length);
        const std::size_t characters = length / 3 * 4 + (length % 3 == 0 ? 0 : length % 3 + 1);
        const std::string padding(text.size() - characters, '=');
        EXPECT_EQ(text, charactersOf(input.data(), characters) + padding);

        const Decoded decoded = decode(text);
        ASSERT_EQ(decoded.count, length);
        EXPECT_TRUE(std::equal(input.begin(), input.begin() + static_cast<int>(length),
                               decoded.bytes.begin()));
    }
}

TEST(CoreBase64Encode, TakesTheBitsOfAGroupLeastSignificantFirst) {
    EXPECT_EQ(encode({0x61, 0x62, 0x63}), "hJ2Y");
    EXPECT_EQ(encode({1, 2, 3, 4, 5, 6}), "BIwAEUgB");
}

TEST(CoreBase64Encode, TakesHighBitsFromTheByteBehindTheInput) {
    EXPECT_EQ(encode({0x61, 0x62, 0x63, 0x64, 0xFF, 0, 0}, 4), "hJ2Yk9==");
    EXPECT_EQ(encode({0x61, 0x62, 0x63, 0x64, 0x00, 0, 0}, 4), "hJ2YkB==");
    EXPECT_EQ(decode("hJ2Yk9=="), (Decoded{4, {0x61, 0x62, 0x63, 0x64, 0x0F, 0}}));
    EXPECT_EQ(decode("hJ2YkB=="), (Decoded{4, {0x61, 0x62, 0x63, 0x64, 0, 0}}));
    for (std::size_t left = 1; left <= 2; ++left) {
        for (unsigned behind = 0; behind < 256; ++behind) {
            Bytes input = randomBytes(left + 3);
            input[left] = static_cast<std::uint8_t>(behind);
            const std::string text = encode(input, left);
            EXPECT_EQ(text, charactersOf(input.data(), left + 1) + std::string(3 - left, '='));
            const Decoded decoded = decode(text);
            EXPECT_EQ(decoded.count, left);
            EXPECT_TRUE(std::equal(input.begin(), input.begin() + static_cast<int>(left),
                                   decoded.bytes.begin()));
        }
    }
}

TEST(CoreBase64Encode, DependsOnNoByteFurtherBehindTheInput) {
    EXPECT_EQ(encode({0x61, 0x62, 0xFF, 0xFF}, 1), encode({0x61, 0x62, 0, 0}, 1));
    EXPECT_EQ(encode({0x61, 0x62, 0x63, 0xFF, 0xFF}, 2), encode({0x61, 0x62, 0x63, 0, 0}, 2));
    EXPECT_EQ(encode({0x61, 0x62, 0x63, 0xFF, 0xFF, 0xFF}, 3), "hJ2Y");
}

TEST(CoreBase64Decode, ReadsTheGroupsOfTheEncoder) {
    EXPECT_EQ(decode("hJ2Y"), (Decoded{3, {0x61, 0x62, 0x63}}));
    EXPECT_EQ(decode("BIwAEUgB"), (Decoded{6, {1, 2, 3, 4, 5, 6}}));
}

TEST(CoreBase64Decode, RefusesALengthThatIsNoMultipleOfFour) {
    const std::string text = "hJ2YhJ2YhJ2Y";
    for (std::size_t length = 1; length <= text.size(); ++length) {
        Bytes output(16, 0xEE);
        const std::uint64_t count = core::coreBase64Decode(text.data(), length, output.data());
        if (length % 4 == 0) {
            EXPECT_EQ(count, length / 4 * 3);
        } else {
            EXPECT_EQ(count, 0U) << "length " << length;
            EXPECT_EQ(output, Bytes(16, 0xEE)) << "length " << length;
        }
    }
}

TEST(CoreBase64Decode, CountsAnyByteOutsideTheAlphabetAsZero) {
    for (unsigned byte = 0; byte < 256; ++byte) {
        const char character = static_cast<char>(byte);
        const std::size_t index = alphabet.find(character);
        const std::uint32_t value = index == std::string::npos ? 0 : static_cast<unsigned>(index);
        for (std::size_t place = 0; place < 4; ++place) {
            std::string text = "////";
            text[place] = character;
            const auto shift = static_cast<unsigned>(6 * place);
            const std::uint32_t group = 0xFFFFFF ^ (std::uint32_t{63} ^ value) << shift;
            const Decoded expected{
                character == '=' ? 2U : 3U,
                {static_cast<std::uint8_t>(group), static_cast<std::uint8_t>(group >> 8),
                 static_cast<std::uint8_t>(group >> 16)}};
            EXPECT_EQ(decode(text), expected) << "byte " << byte << " at " << place;
        }
    }
}

TEST(CoreBase64Decode, TakesOneOffForEachEqualsSignAnywhere) {
    EXPECT_EQ(decode("=J2Y"), (Decoded{2, {0x40, 0x62, 0x63}}));
    EXPECT_EQ(decode("h=2Y").count, 2U);
    EXPECT_EQ(decode("h==Y").count, 1U);
    EXPECT_EQ(decode("===Y").count, 0U);
    EXPECT_EQ(decode("==2YhJ=Y=J2Y").count, 5U);
    EXPECT_EQ(decode("hJ2Y====").count, 2U);
    EXPECT_EQ(decode("====hJ2Y"), (Decoded{2, {0, 0, 0, 0x61, 0x62, 0x63}}));
}

TEST(CoreBase64Decode, WrapsACountBelowZero) {
    EXPECT_EQ(decode("===="), (Decoded{0xFFFFFFFFFFFFFFFF, {0, 0, 0}}));
    EXPECT_EQ(decode("========").count, 0xFFFFFFFFFFFFFFFE);
    EXPECT_EQ(decode("====AAAA====").count, 1U);
}

}  // namespace
