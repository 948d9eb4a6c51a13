#include "random/random_device.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <array>

#include "random/system_entropy.h"

namespace {

bool isFifo(const char* path) {
    struct stat status {};  // of no kind when there is nothing
    ::stat(path, &status);
    return S_ISFIFO(status.st_mode);
}

bool isKernelGenerator(std::FILE* device) {
    struct stat status {};
    ::fstat(::fileno(device), &status);
    return S_ISCHR(status.st_mode) &&
           (status.st_rdev == ::makedev(1, 8) || status.st_rdev == ::makedev(1, 9));
}

/// In the order in which they are tried.
constexpr std::array devicePaths{"/dev/urandom", "/dev/random"};

RandomDevice openDevice(const char* path) {
    return {std::fopen(path, "rb"), &std::fclose};
}

RandomDeviceFault faultOf(std::FILE* device) {
    if (!isKernelGenerator(device)) {
        return RandomDeviceFault::foreign;
    }
    std::array<std::uint8_t, seedRounds * seedItemSize> bytes;
    return std::fread(bytes.data(), bytes.size(), 1, device) == 1 ? RandomDeviceFault::none
                                                                  : RandomDeviceFault::unreadable;
}

}  // namespace

RandomDevice openRandomDevice() {
    RandomDevice device = openDevice(devicePaths.front());
    if (device == nullptr) {
        device = openDevice(devicePaths.back());
    }
    return device;
}

RandomDeviceFault randomDeviceFault() {
    for (const char* path : devicePaths) {
        if (isFifo(path)) {
            return RandomDeviceFault::fifo;
        }
        if (const RandomDevice device = openDevice(path); device != nullptr) {
            return faultOf(device.get());
        }
    }
    return RandomDeviceFault::missing;
}
