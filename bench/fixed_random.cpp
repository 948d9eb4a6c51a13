#include <cstdio>
#include <ctime>

#include "random/random_device.h"

// The device and the clock of counted_request, which seeds its generator as the program does, with
// the same bytes in each run: so each run takes the same instructions.

RandomDevice openRandomDevice() {
    return {std::fopen("/dev/zero", "rb"), &std::fclose};
}

std::time_t time(std::time_t* /*now*/) noexcept {
    return 0;
}
