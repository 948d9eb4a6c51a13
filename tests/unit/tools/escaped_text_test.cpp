#include "tools/escaped_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <sstream>
#include <string>

namespace {

/// The bytes of a character as UTF-8 has them, and as it would have them where it has none.
std::string sequence(std::uint32_t character, unsigned size) {
    if (size == 1) {
        return {static_cast<char>(character)};
    }
    std::string bytes;
    for (unsigned i = 1; i < size; ++i) {
        bytes.insert(bytes.begin(), static_cast<char>(0x80U | (character & 0x3FU)));
        character >>= 6;
    }
    bytes.insert(bytes.begin(), static_cast<char>((0xF00U >> size) | character));
    return bytes;
}

std::string escapes(const std::string& bytes) {
    std::ostringstream text;
    for (const char byte : bytes) {
        text << "\\x" << std::uppercase << std::hex << (byte >> 4 & 15) << (byte & 15);
    }
    return text.str();
}

/// The bytes of the shortest form.
unsigned sizeOf(std::uint32_t character) {
    return character < 0x80 ? 1 : character < 0x800 ? 2 : character < 0x10000 ? 3 : 4;
}

bool isControl(std::uint32_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

bool isSurrogate(std::uint32_t character) {
    return character >= 0xD800 && character < 0xE000;
}

TEST(Escaped, KeepsEveryCharacterButControlCharacters) {
    for (std::uint32_t character = 0; character < 0x110000; ++character) {
        const std::string bytes = sequence(character, sizeOf(character));
        const bool keeps = !isControl(character) && !isSurrogate(character);
        ASSERT_EQ(escaped(bytes), keeps ? bytes : escapes(bytes)) << character;
    }
}

TEST(Escaped, EscapesLongerFormsAndNumbersThatAreNone) {
    for (std::uint32_t character = 0; character < 0x10000; ++character) {
        for (unsigned size = sizeOf(character) + 1; size <= 4; ++size) {
            const std::string bytes = sequence(character, size);
            ASSERT_EQ(escaped(bytes), escapes(bytes)) << character << " in " << size;
        }
    }
    for (std::uint32_t character = 0x110000; character < 0x200000; character += 0x3FF) {
        const std::string bytes = sequence(character, 4);
        ASSERT_EQ(escaped(bytes), escapes(bytes)) << character;
    }
}

TEST(Escaped, EscapesBytesThatMakeNoCharacterAndNothingElse) {
    for (const auto& [text, expected] : {std::pair<std::string, std::string>{"", ""},
                                         {"my.project", "my.project"},
                                         {"a\\b", "a\\b"},
                                         {std::string("\0", 1), "\\x00"},
                                         {"\x1b[31m", "\\x1B[31m"},
                                         {"a\nb\r\tc", "a\\x0Ab\\x0D\\x09c"},
                                         {"\xff", "\\xFF"},
                                         {"\x80z", "\\x80z"},
                                         {"\xc3", "\\xC3"},
                                         {"\xc3z", "\\xC3z"},
                                         {"\xc3\xa9\xa9", "\xc3\xa9\\xA9"},
                                         {"\xc3\xc3\xa9", "\\xC3\xc3\xa9"},
                                         {"\xe2\x82", "\\xE2\\x82"},
                                         {"\xe2\x82z", "\\xE2\\x82z"},
                                         {"\xe2\x82\xac", "\xe2\x82\xac"},
                                         {"\xf0\x9f\x98z", "\\xF0\\x9F\\x98z"},
                                         {"\xf0\x9fz\x80", "\\xF0\\x9Fz\\x80"}}) {
        EXPECT_EQ(escaped(text), expected);
    }
}

}  // namespace
