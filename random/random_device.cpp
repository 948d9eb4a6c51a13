#include "random/random_device.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <array>

#include "random/system_entropy.h"

namespace {

bool isKernelGenerator(std::FILE* device) {
    struct stat status {};
    return ::fstat(::fileno(device), &status) == 0 && S_ISCHR(status.st_mode) &&
           (status.st_rdev == ::makedev(1, 8) || status.st_rdev == ::makedev(1, 9));
}

}  // namespace

RandomDevice openRandomDevice() {
    RandomDevice device(std::fopen("/dev/urandom", "rb"), &std::fclose);
    if (device == nullptr) {
        device.reset(std::fopen("/dev/random", "rb"));
    }
    return device;
}

RandomDeviceFault randomDeviceFault() {
    const RandomDevice device = openRandomDevice();
    if (device == nullptr) {
        return RandomDeviceFault::missing;
    }
    if (!isKernelGenerator(device.get())) {
        return RandomDeviceFault::foreign;
    }
    std::array<std::uint8_t, seedRounds * seedItemSize> bytes;
    return std::fread(bytes.data(), bytes.size(), 1, device.get()) == 1
               ? RandomDeviceFault::none
               : RandomDeviceFault::unreadable;
}
