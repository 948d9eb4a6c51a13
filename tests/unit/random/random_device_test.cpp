#include "random/random_device.h"

#include <gtest/gtest.h>
#include <sys/sysmacros.h>

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

TEST(RandomDevice, IsForeignWhereABlockDeviceHasItsNumbers) {
    ScopedSystemCalls calls;
    for (const mode_t kind : {mode_t{S_IFCHR}, mode_t{S_IFBLK}}) {
        for (const unsigned minor : {8U, 9U}) {
            calls.files = {"/dev/urandom"};
            calls.openStatus.emplace();
            calls.openStatus->st_mode = kind | 0666;
            calls.openStatus->st_rdev = ::makedev(1, minor);
            EXPECT_EQ(randomDeviceFault(), kind == S_IFCHR ? Fault::none : Fault::foreign) << minor;
        }
    }
}

TEST(RandomDevice, IsNotOpenedWhereAFifoStandsThatSeedingWouldOpen) {
    ScopedSystemCalls calls;
    calls.status["/dev/random"].st_mode = S_IFIFO | 0666;
    calls.files = {"/dev/urandom", ""};
    EXPECT_EQ(randomDeviceFault(), Fault::none);
    EXPECT_EQ(randomDeviceFault(), Fault::fifo);
    calls.status["/dev/urandom"].st_mode = S_IFIFO | 0666;
    EXPECT_EQ(randomDeviceFault(), Fault::fifo);
    EXPECT_EQ(calls.opened, (std::vector<std::string>{"/dev/urandom rb", "/dev/urandom rb"}));
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
