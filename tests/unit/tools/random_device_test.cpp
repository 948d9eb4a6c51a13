#include "tools/files/random_device.h"

#include <gtest/gtest.h>

namespace {

TEST(RandomDevice, OfTheSystemGivesBytes) {
    EXPECT_EQ(randomDeviceRefusal(), std::nullopt);
}

TEST(RandomDevice, ThatIsMissingOrEmptyIsRefused) {
    const std::string refusal =
        "there is no random device to make secrets with: /dev/urandom and /dev/random are missing "
        "or give nothing";
    EXPECT_EQ(randomDeviceRefusal({"/nowhere/urandom", "/nowhere/random"}), refusal);
    EXPECT_EQ(randomDeviceRefusal({"/dev/null"}), refusal);
    EXPECT_EQ(randomDeviceRefusal({"/dev/null", "/dev/urandom"}), std::nullopt);
}

}  // namespace
