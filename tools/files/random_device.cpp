#include "tools/files/random_device.h"

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

bool givesBytes(const char* device) {
    const std::unique_ptr<std::FILE, decltype(&std::fclose)> stream(std::fopen(device, "rbe"),
                                                                    &std::fclose);
    return stream != nullptr && std::fgetc(stream.get()) != EOF;
}

}  // namespace

std::optional<std::string> randomDeviceRefusal(const std::vector<const char*>& devices) {
    if (std::any_of(devices.begin(), devices.end(), givesBytes)) {
        return std::nullopt;
    }
    return "there is no random device to make secrets with: /dev/urandom and /dev/random are "
           "missing or give nothing";
}
