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

TEST(NearestName, CountsInsertionsDeletionsReplacementsAndExchangesAsOneEach) {
    const std::string name = "abcdef";
    // Six characters may have two changes, and no third.
    for (const std::string word : {"xabcdefx", "bcdexf", "xxcdef", "badcef", "acbxdef", "xabcef"}) {
        EXPECT_EQ(nearestName(word, std::vector{name}), name) << word;
    }
    for (const std::string word : {"xxxdef", "xabcdexx", "badcfe", "cbaxef", "bcadex"}) {
        EXPECT_EQ(nearestName(word, std::vector{name}), std::nullopt) << word;
    }
}

TEST(NearestName, TakesOneChangeOfAShortWord) {
    EXPECT_EQ(nearestName("ax", std::vector<std::string>{"ab"}), "ab");
    EXPECT_EQ(nearestName("xy", std::vector<std::string>{"ab"}), std::nullopt);
    EXPECT_EQ(nearestName("x", std::vector<std::string>{"ab"}), std::nullopt);
}

TEST(NearestName, IsTheFirstOfSeveralThatAreAsNear) {
    EXPECT_EQ(nearestName("bat", std::vector<std::string>{"cat", "bar"}), "cat");
    EXPECT_EQ(nearestName("bat", std::vector<std::string>{"cat", "bat"}), "bat");
}

}  // namespace
