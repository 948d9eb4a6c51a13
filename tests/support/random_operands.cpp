#include "tests/support/random_operands.h"

#include <cstdlib>

std::uint64_t testSeed() {
    static const std::uint64_t seed = [] {
        const char* given = std::getenv("SIGN_TEST_SEED");
        return given != nullptr ? std::strtoull(given, nullptr, 0) : std::random_device()();
    }();
    return seed;
}

std::mt19937_64& testRandom() {
    static std::mt19937_64 generator(testSeed());
    return generator;
}

std::uint64_t randomBelow(std::uint64_t bound) {
    return std::uniform_int_distribution<std::uint64_t>(0, bound - 1)(testRandom());
}

std::vector<std::uint8_t> randomBytes(std::size_t length) {
    std::vector<std::uint8_t> bytes(length);
    for (std::uint8_t& byte : bytes) {
        byte = static_cast<std::uint8_t>(testRandom()());
    }
    return bytes;
}
