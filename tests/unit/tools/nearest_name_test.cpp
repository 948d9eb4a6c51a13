#include "tools/nearest_name.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

const std::vector<std::string> commands = {"create", "show",    "check",  "strip",   "sign",
                                           "verify", "explain", "export", "convert", "digest"};

TEST(NearestName, IsTheOneThatFewChangesAway) {
    const std::vector<std::pair<std::string, std::string>> mistyped = {
        {"sing", "sign"},     {"sgn", "sign"},        {"signn", "sign"},     {"Sign", "sign"},
        {"shov", "show"},     {"vreify", "verify"},   {"verfy", "verify"},   {"CREATE", "create"},
        {"exprot", "export"}, {"explian", "explain"}, {"covnret", "convert"}};
    for (const auto& [word, name] : mistyped) {
        EXPECT_EQ(nearestName(word, commands), name) << word;
    }
}

TEST(NearestName, IsNoneForAWordThatIsLikeNone) {
    for (const std::string word :
         {"", "s", "xy", "remove", "sgni", "list", "openssl", "-", "signsign", "chk"}) {
        EXPECT_EQ(nearestName(word, commands), std::nullopt) << word;
    }
    EXPECT_EQ(nearestName(std::string(1'000'000, 's'), commands), std::nullopt);
    EXPECT_EQ(nearestName("sign", {}), std::nullopt);
}

TEST(NearestName, IsTheFirstOfSeveralThatAreAsNear) {
    EXPECT_EQ(nearestName("bat", std::vector<std::string>{"cat", "bar"}), "cat");
    EXPECT_EQ(nearestName("bat", std::vector<std::string>{"cat", "bat"}), "bat");
}

}  // namespace
