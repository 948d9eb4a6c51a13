#include "random/random_device.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"
#include "tests/unit/random/system_calls.h"

namespace {

using Fault = RandomDeviceFault;

Fault faultOf(const std::deque<std::string>& files) {
    ScopedSystemCalls calls;
    calls.files = files;
    return randomDeviceFault();
}

TEST(RandomDevice, OfTheSystemHasNoFault) {
    EXPECT_EQ(randomDeviceFault(), Fault::none);
}

TEST(RandomDevice, IsTheKernelsUnderEitherNumber) {
    EXPECT_EQ(faultOf({"/dev/urandom"}), Fault::none);
    EXPECT_EQ(faultOf({"/dev/random"}), Fault::none);
}

TEST(RandomDevice, IsTheOneThatSeedingReads) {
    EXPECT_EQ(faultOf({"", "/dev/urandom"}), Fault::none);
    EXPECT_EQ(faultOf({"", "/dev/zero"}), Fault::foreign);
    EXPECT_EQ(faultOf({"/dev/zero", "/dev/urandom"}), Fault::foreign);

    ScopedSystemCalls calls;
    randomDeviceFault();
    EXPECT_EQ(calls.opened, (std::vector<std::string>{"/dev/urandom rb", "/dev/random rb"}));
}

TEST(RandomDevice, IsMissingWhenNeitherCanBeOpened) {
    EXPECT_EQ(faultOf({}), Fault::missing);
}

TEST(RandomDevice, IsForeignWhereAnotherDeviceOrAFileStands) {
    const TemporaryFolder folder;
    const std::string file = folder.write("constant", std::vector<std::uint8_t>(4096, 120));
    for (const std::string& other : {std::string("/dev/null"), std::string("/dev/zero"), file}) {
        EXPECT_EQ(faultOf({other}), Fault::foreign) << other;
    }
}

TEST(RandomDevice, IsUnreadableWithAByteLessThanSeedingReads) {
    ScopedSystemCalls calls;
    calls.files = {"/dev/urandom", "/dev/urandom"};
    calls.readable = 128;
    EXPECT_EQ(randomDeviceFault(), Fault::none);
    calls.readable = 127;
    EXPECT_EQ(randomDeviceFault(), Fault::unreadable);
}

}  // namespace
