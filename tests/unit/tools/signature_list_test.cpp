#include "tools/signature/signature_list.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/random_operands.h"

namespace {

using namespace std::string_literals;

const std::string text = "AAAAQIAA";

/// The only entry of a list of this line; one without a name if it is none.
ListedSignature entryOf(const std::string& line) {
    const SignatureList list = readSignatureList(line);
    EXPECT_EQ(list.entries.size() + list.otherLines, 1U) << line;
    return list.entries.empty() ? ListedSignature{} : list.entries[0];
}

TEST(SignatureListText, WritesNamesAndReadsThem) {
    struct Row {
        std::string name;
        std::string line;
    };
    // As sha256sum(1) writes them; tests/projectctl/ compares with it.
    for (const auto& [name, line] :
         {Row{"letter.txt", text + "  letter.txt"}, Row{"-", text + "  -"},
          Row{"two  spaces ", text + "  two  spaces "}, Row{" first", text + "   first"},
          Row{"\\", "\\" + text + "  \\\\"}, Row{"a\\nb", "\\" + text + "  a\\\\nb"},
          Row{"a\nb", "\\" + text + "  a\\nb"}, Row{"\r", "\\" + text + "  \\r"},
          Row{"\xff\t", text + "  \xff\t"}}) {
        EXPECT_EQ(listLine({.signature = text, .file = name}), line + "\n");
        for (const char* end : {"", "\n", "\r\n"}) {
            EXPECT_EQ(entryOf(line + end), (ListedSignature{.signature = text, .file = name}));
        }
    }
}

TEST(SignatureListText, ReadsBackNamesOfAllBytesThatANameCanHave) {
    std::string content;
    std::vector<ListedSignature> entries;
    for (int round = 0; round < 200; ++round) {
        std::string name;
        for (std::uint64_t i = 0; i <= randomBelow(20); ++i) {
            name += randomBelow(2) == 0 ? "\\\n\rnr  "[randomBelow(7)]
                                        : static_cast<char>(1 + randomBelow(255));
        }
        entries.push_back({.signature = text, .file = name});
        content += listLine(entries.back());
    }
    EXPECT_EQ(readSignatureList(content).entries, entries);
}

TEST(SignatureListText, TakesNoOtherLineForAnEntry) {
    // No signature has so many bytes.
    const std::string digitsOfSha256(64, 'a');
    for (const std::string& line :
         {text, text + " ", text + "  ", text + " name", text + "\tname", text + " *name",
          "  name"s, " " + text + "  name", "\\" + text + "  ", "\\\\" + text + "  name",
          "\\" + text + "  a\\", "\\" + text + "  a\\tb", "\\" + text + "  a\\\\\\",
          text + "  a\0b"s, "AAAA\0AAA  a"s, "AAA  name"s, digitsOfSha256 + "  name"}) {
        EXPECT_EQ(entryOf(line), ListedSignature{}) << line;
    }
}

TEST(SignatureListText, CountsOtherLinesAndPassesOverEmptyOnesAndRemarks) {
    const std::string entry = listLine({.signature = text, .file = "a"});
    const SignatureList list =
        readSignatureList("# remark\n\n\r\n" + entry + "other\n" + entry + "\nother\n#" + entry);
    EXPECT_EQ(list.entries.size(), 2U);
    EXPECT_EQ(list.otherLines, 2U);
    EXPECT_EQ(list.firstOther, 5U);
    const SignatureList empty = readSignatureList("");
    EXPECT_TRUE(empty.entries.empty());
    EXPECT_EQ(empty.otherLines, 0U);
    EXPECT_EQ(empty.firstOther, 0U);
}

TEST(SignatureListText, ReportsNamesWithALineFeedEscaped) {
    EXPECT_EQ(reportedName("a b"), "a b");
    EXPECT_EQ(reportedName("a\\b"), "a\\b");
    EXPECT_EQ(reportedName("a\n\\b"), "\\a\\n\\\\b");
}

}  // namespace
