#pragma once

#include <gtest/gtest.h>

#include <cstdint>

#include "tests/support/test_host.h"

/// Ends each test by seeing that every block of the host went back to it.
class LeakCheckedTest : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(testHostLiveBlocks(), blocksBefore_); }

private:
    std::int64_t blocksBefore_ = testHostLiveBlocks();
};
