#include "random/system_entropy.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "random/random_device.h"

void collectSystemEntropy(std::vector<std::uint8_t>& pool) {
    const auto now = static_cast<std::uint64_t>(std::time(nullptr));
    for (const unsigned byte : {2U, 0U, 3U, 1U}) {
        pool.push_back(static_cast<std::uint8_t>(now >> 8 * byte));
    }

    // A buffer for the stream of just one seed, so that it asks the device for no more.
    std::array<char, seedRounds * seedItemSize> buffer;
    const RandomDevice device = openRandomDevice();
    if (device == nullptr) {
        return;
    }
    std::setvbuf(device.get(), buffer.data(), _IOFBF, buffer.size());
    for (std::size_t round = 0; round < seedRounds; ++round) {
        std::array<std::uint8_t, seedItemSize> item;
        const bool delivered = std::fread(item.data(), item.size(), 1, device.get()) == 1;
        // NOLINTNEXTLINE(cert-msc30-c,cert-msc50-cpp): a stand-in for a byte that did not come
        pool.push_back(delivered ? item[0] : static_cast<std::uint8_t>(std::rand()));
        pool.insert(pool.end(), 3, 0);
    }
}
