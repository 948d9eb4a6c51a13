#include "tools/rules.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

TEST(Rules, HaveACauseAndACodeOfTheirOwnEach) {
    std::set<Cause> causes;
    std::set<std::string_view> codes;
    for (const Rule& rule : rules()) {
        EXPECT_TRUE(causes.insert(rule.cause).second) << rule.code;
        EXPECT_TRUE(codes.insert(rule.code).second) << rule.code;
        EXPECT_EQ(&ruleOf(rule.cause), &rule) << rule.code;
    }
}

TEST(Rules, StandInTheOrderOfTheirFamilies) {
    const auto family = [](const Rule& rule) {
        const std::string_view code = rule.code;
        return code.substr(0, code.find('.'));
    };
    EXPECT_TRUE(std::is_sorted(
        rules().begin(), rules().end(),
        [&](const Rule& one, const Rule& other) { return family(one) < family(other); }));
}

TEST(Rules, NameThePageThatTellsMore) {
    const std::map<std::string, std::string> pages = {
        {"project.digest", "project-file(5)"},        {"key.absent", "project-file(5)"},
        {"signature.odd", "docs/formats.md"},         {"file.empty", "docs/formats.md"},
        {"json.zero-byte", "docs/http-interface.md"},
    };
    std::map<std::string, std::string> told;
    for (const Rule& rule : rules()) {
        if (pages.contains(rule.code)) {
            told[rule.code] = pageOf(rule);
        }
    }
    EXPECT_EQ(told, pages);
}

TEST(Rules, AreNoneForACauseOfWhichOthersTell) {
    EXPECT_THROW(ruleOf(RequestFault::dataBase64), std::out_of_range);
    EXPECT_THROW(ruleOf(RequestFault::generation), std::out_of_range);
}

}  // namespace
