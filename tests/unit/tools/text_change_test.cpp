#include "tools/files/text_change.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

namespace {

using namespace std::string_literals;

/// What each change makes of the text; those that change nothing are left out.
std::map<std::string, std::string> changesOf(const std::string& text) {
    std::map<std::string, std::string> changes;
    for (const TextChange& change : textChanges()) {
        if (const auto changed = change.apply(text)) {
            changes[change.code] = *changed;
        }
    }
    return changes;
}

TEST(TextChanges, ExchangeLineEndsAndAddOrRemoveOnesAtTheEnd) {
    using Changes = std::map<std::string, std::string>;
    const auto always = [](const std::string& text, Changes others) {
        others["lf-added"] = text + "\n";
        others["crlf-added"] = text + "\r\n";
        others["bom-added"] = "\xEF\xBB\xBF" + text;
        return others;
    };
    const std::vector<std::pair<std::string, Changes>> texts = {
        {"a", {}},
        {"\n", {{"crlf", "\r\n"}, {"line-end-removed", ""}}},
        {"\r\n", {{"lf", "\n"}, {"line-end-removed", ""}}},
        {"a\nb", {{"crlf", "a\r\nb"}}},
        {"a\nb\n", {{"crlf", "a\r\nb\r\n"}, {"line-end-removed", "a\nb"}}},
        {"a\r\nb\r\n", {{"lf", "a\nb\n"}, {"line-end-removed", "a\r\nb"}}},
        {"a\r\nb\n", {{"lf", "a\nb\n"}, {"crlf", "a\r\nb\r\n"}, {"line-end-removed", "a\r\nb"}}},
        {"a\n\n", {{"crlf", "a\r\n\r\n"}, {"line-end-removed", "a\n"}}},
        {"a\rb\r", {}},
        {"\r\r\n", {{"lf", "\r\n"}, {"line-end-removed", "\r"}}},
        {"\0\n\0"s, {{"crlf", "\0\r\n\0"s}}},
        {"\xEF\xBB\xBF"
         "a",
         {{"bom-removed", "a"}}},
        {"\xEF\xBB", {}},
        {"a\xEF\xBB\xBF", {}},
    };
    for (const auto& [text, changes] : texts) {
        EXPECT_EQ(changesOf(text), always(text, changes)) << testing::PrintToString(text);
    }
}

}  // namespace
