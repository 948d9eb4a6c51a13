#include "tools/rules.h"

#include <gtest/gtest.h>

#include <set>
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

TEST(RulesDeathTest, EndTheProgramForACauseThatHasNone) {
    EXPECT_DEATH(ruleOf(RequestFault::dataBase64), "");
    EXPECT_DEATH(ruleOf(RequestFault::generation), "");
}

}  // namespace
