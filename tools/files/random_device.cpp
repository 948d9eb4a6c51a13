#include "tools/files/random_device.h"

namespace {

/// What is wrong.
std::string wordsOf(RandomDeviceFault fault) {
    if (fault == RandomDeviceFault::missing) {
        return "/dev/urandom and /dev/random: neither can be opened, and the clock alone is not a "
               "secret";
    }
    return std::string("/dev/urandom, or /dev/random if that cannot be opened: ") +
           (fault == RandomDeviceFault::unreadable
                ? "gives less than a seed takes, and known bytes would stand in"
                : "not the kernel's random device, so keys and nonces could be guessed");
}

}  // namespace

std::optional<std::string> randomDeviceRefusal(RandomDeviceFault fault) {
    if (fault == RandomDeviceFault::none) {
        return std::nullopt;
    }
    return wordsOf(fault) + "; make the kernel's device there (mknod -m 666 /dev/urandom c 1 9)";
}

std::optional<std::string> randomDeviceRemark(RandomDeviceFault fault) {
    const std::optional<std::string> refusal = randomDeviceRefusal(fault);
    return refusal.has_value()
               ? std::optional("signing here would give the private scalar away: " + *refusal)
               : std::nullopt;
}
