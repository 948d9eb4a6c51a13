#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "core/entry.h"
#include "tests/support/random_operands.h"

namespace {

/// Seeds the random operands for each test and names the seed where a test fails.
class SeedReporter : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo& /*test*/) override { testRandom().seed(testSeed()); }

    void OnTestEnd(const testing::TestInfo& test) override {
        if (test.result()->Failed()) {
            std::printf("seed of the random operands: SIGN_TEST_SEED=%llu\n",
                        static_cast<unsigned long long>(testSeed()));
        }
    }
};

}  // namespace

int main(int argumentCount, char** arguments) {
    testing::InitGoogleTest(&argumentCount, arguments);
    testing::Test::RecordProperty("seed", std::to_string(testSeed()));
    testing::UnitTest::GetInstance()->listeners().Append(new SeedReporter);
    coreEntry::coreStart();
    const int status = RUN_ALL_TESTS();
    coreEntry::coreStop();
    return status;
}
