#include "tools/files/random_device.h"

#include <gtest/gtest.h>

namespace {

const std::string advice = "; make the kernel's device there (mknod -m 666 /dev/urandom c 1 9)";

TEST(RandomDeviceRefusal, IsNothingOnThisMachineAndWithoutAFault) {
    EXPECT_EQ(randomDeviceRefusal(), std::nullopt);
    EXPECT_EQ(randomDeviceRemark(), std::nullopt);
    EXPECT_EQ(randomDeviceRefusal(RandomDeviceFault::none), std::nullopt);
}

TEST(RandomDeviceRefusal, NamesEachFaultAndWhatToDo) {
    const std::string either = "/dev/urandom, or /dev/random if that cannot be opened: ";
    for (const auto& [fault, words] :
         {std::pair<RandomDeviceFault, std::string>{
              RandomDeviceFault::missing,
              "/dev/urandom and /dev/random: neither can be opened, and the clock alone makes no "
              "secret"},
          {RandomDeviceFault::foreign,
           either + "not the kernel's random device, and what is made from another can be guessed"},
          {RandomDeviceFault::unreadable,
           either + "gives less than a seed takes, and known bytes would stand in"}}) {
        EXPECT_EQ(randomDeviceRefusal(fault), words + advice);
        EXPECT_EQ(randomDeviceRemark(fault),
                  "signing here would give the private scalar away: " + words + advice);
    }
}

}  // namespace
