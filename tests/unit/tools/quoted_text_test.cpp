#include "tools/request/quoted_text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Quotation, IsCutBehind60Bytes) {
    const std::string longest(60, 'a');
    EXPECT_EQ(quotation(""), "\"\"");
    EXPECT_EQ(quotation(longest), "\"" + longest + "\"");
    EXPECT_EQ(quotation(longest + "b"), "\"" + longest + "...\"");
    EXPECT_EQ(quotation(longest.substr(1) + "\xFF"), "\"" + longest.substr(1) + "\\xFF\"");
}

TEST(Quotation, EscapesAllButPrintableAscii) {
    EXPECT_EQ(quotation(" ~\""), "\" ~\"\"");
    EXPECT_EQ(quotation("\x1F\x7F\x80\n"), "\"\\x1F\\x7F\\x80\\x0A\"");
}

}  // namespace
