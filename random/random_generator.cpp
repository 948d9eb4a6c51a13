#include "random/random_generator.h"

#include <algorithm>
#include <cstring>
#include <mutex>

#include "core/entry.h"
#include "random/system_entropy.h"

namespace {

using Lock = std::lock_guard<RecursiveMutex>;

constexpr std::size_t digestSeedOffset = 8;
constexpr std::size_t secondSeedOffset = 28;
constexpr std::size_t ripemd160Words = 5;

RandomGenerator* processGenerator = nullptr;

}  // namespace

RandomGenerator::RandomGenerator() {
    clearState();
    seedFromSystem();
}

RandomGenerator& RandomGenerator::instance() {
    if (processGenerator == nullptr) {
        processGenerator = new RandomGenerator;
    }
    return *processGenerator;
}

std::uint32_t RandomGenerator::nextWord() {
    const Lock lock(stateLock);
    std::uint64_t counter = 0;
    std::memcpy(&counter, stateBlock.data(), sizeof counter);
    ++counter;
    std::memcpy(stateBlock.data(), &counter, sizeof counter);

    std::array<std::uint32_t, ripemd160Words> digest;
    std::array<std::uint8_t, sizeof digest> digestBytes;
    coreEntry::ripemd160Digest(stateBlock.data(), stateBlock.size(), digestBytes.data());
    std::memcpy(digest.data(), digestBytes.data(), sizeof digest);

    const std::size_t start = digestSeedOffset + sizeof(std::uint32_t) * (counter & 7);
    for (std::size_t i = 0; i < digestBytes.size(); ++i) {
        stateBlock[start + i] ^= digestBytes[i];
    }
    return digest[0] ^ digest[2] ^ digest[4];
}

void RandomGenerator::fillBytes(void* buffer, std::uint64_t length) {
    auto* bytes = static_cast<std::uint8_t*>(buffer);
    while (length > 0) {
        const std::uint32_t word = nextWord();
        const std::uint64_t taken = std::min<std::uint64_t>(length, sizeof word);
        std::memcpy(bytes, &word, taken);
        bytes += taken;
        length -= taken;
    }
}

std::uint32_t RandomGenerator::next32() {
    return nextWord();
}

std::uint64_t RandomGenerator::next64() {
    const std::uint64_t high = nextWord();
    return high << 32 | nextWord();
}

std::uint32_t RandomGenerator::next32Below(std::uint32_t bound) {
    const std::uint32_t limit = std::max(bound, ~bound);
    std::uint32_t candidate = next32();
    while (candidate >= limit) {
        candidate = next32();
    }
    return candidate % bound;
}

std::uint64_t RandomGenerator::next64Below(std::uint64_t bound) {
    const std::uint64_t limit = std::max(bound, ~bound);
    std::uint64_t candidate = next64();
    while (candidate >= limit) {
        candidate = next64();
    }
    return candidate % bound;
}

void RandomGenerator::seedFromSystem() {
    const Lock poolLock(entropyLock);
    const Lock lock(stateLock);
    clearState();
    collectSystemEntropy(entropyPool);
    seedState(entropyPool.data(), entropyPool.size());
}

void RandomGenerator::seedFromWord(std::uint32_t value) {
    const Lock poolLock(entropyLock);
    const Lock lock(stateLock);
    clearState();
    std::array<std::uint8_t, sizeof value> bytes;
    std::memcpy(bytes.data(), &value, sizeof value);
    seedState(bytes.data(), bytes.size());
}

void RandomGenerator::mixPool() {
    const Lock poolLock(entropyLock);
    const Lock lock(stateLock);
    clearState();
    seedState(entropyPool.data(), entropyPool.size());
}

void RandomGenerator::addEntropyByte(std::uint8_t byte) {
    addEntropy(&byte, 1);
}

void RandomGenerator::addEntropy(const void* data, std::uint64_t length) {
    const Lock poolLock(entropyLock);
    if (entropyPool.size() >= poolLimit) {
        return;
    }
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    const std::uint64_t taken = std::min<std::uint64_t>(length, poolLimit - entropyPool.size());
    entropyPool.insert(entropyPool.end(), bytes, bytes + taken);
}

void RandomGenerator::clearState() {
    const Lock lock(stateLock);
    stateBlock.fill(0);
}

/// Puts the two digests of the seed into the cleared state and empties the pool.
void RandomGenerator::seedState(const std::uint8_t* seed, std::size_t length) {
    coreEntry::ripemd160Digest(seed, length, stateBlock.data() + digestSeedOffset);
    coreEntry::sha256Digest(seed, length, stateBlock.data() + secondSeedOffset);
    entropyPool.clear();
}
