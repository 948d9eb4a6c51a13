#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <mutex>
#include <vector>

#include "random/random_generator.h"
#include "tests/support/generator_model.h"
#include "tests/support/random_operands.h"
#include "tests/unit/random/system_calls.h"

namespace {

constexpr std::array<std::uint8_t, 64> zeroState{};

void fillPool(RandomGenerator& generator, std::size_t length) {
    generator.entropyPool.assign(length, 0x11);
}

TEST(SeedFromWord, HashesTheBytesOfTheValueLeastSignificantFirst) {
    RandomGenerator generator;
    generator.seedFromWord(0x04030201);
    EXPECT_EQ(generator.stateBlock, GeneratorModel(Bytes{1, 2, 3, 4}).state());
}

TEST(SeedFromWord, GivesTwoGeneratorsTheSameStream) {
    RandomGenerator first;
    RandomGenerator second;
    first.seedFromWord(77);
    second.next64();
    second.seedFromWord(77);
    Bytes firstStream(4096);
    Bytes secondStream(4096);
    first.fillBytes(firstStream.data(), firstStream.size());
    second.fillBytes(secondStream.data(), secondStream.size());
    EXPECT_EQ(firstStream, secondStream);
}

TEST(SeedFromWord, EmptiesThePoolAndKeepsItsStorage) {
    RandomGenerator generator;
    fillPool(generator, 100);
    const std::uint8_t* storage = generator.entropyPool.data();
    generator.seedFromWord(3);
    EXPECT_TRUE(generator.entropyPool.empty());
    EXPECT_EQ(generator.entropyPool.data(), storage);
    EXPECT_EQ(generator.stateBlock, GeneratorModel(3).state());
}

TEST(MixPool, SeedsFromThePoolAndEmptiesIt) {
    for (const std::size_t length : {0U, 1U, 63U, 64U, 2048U}) {
        const Bytes seed = randomBytes(length);
        RandomGenerator generator;
        generator.addEntropy(seed.data(), seed.size());
        generator.next32();
        generator.mixPool();
        EXPECT_EQ(generator.stateBlock, GeneratorModel(seed).state()) << "length " << length;
        EXPECT_TRUE(generator.entropyPool.empty()) << "length " << length;
    }
}

TEST(AddEntropy, KeepsTheFirst2048BytesOf3000) {
    const Bytes data = randomBytes(3000);
    RandomGenerator generator;
    generator.addEntropy(data.data(), data.size());
    EXPECT_EQ(generator.entropyPool, Bytes(data.begin(), data.begin() + 2048));
}

TEST(AddEntropy, AppendsWhatFitsBehindThePoolsContent) {
    RandomGenerator generator;
    fillPool(generator, 2040);
    const Bytes data = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    generator.addEntropy(data.data(), data.size());
    ASSERT_EQ(generator.entropyPool.size(), 2048U);
    EXPECT_EQ(Bytes(generator.entropyPool.begin() + 2040, generator.entropyPool.end()),
              Bytes(data.begin(), data.begin() + 8));
}

TEST(AddEntropy, AcceptsNoBytes) {
    RandomGenerator generator;
    generator.addEntropy(nullptr, 0);
    EXPECT_TRUE(generator.entropyPool.empty());
}

TEST(AddEntropy, LeavesAPoolAboveTheLimitAsItIs) {
    RandomGenerator generator;
    fillPool(generator, 2100);
    const std::uint8_t byte = 9;
    generator.addEntropy(&byte, 1);
    EXPECT_EQ(generator.entropyPool, Bytes(2100, 0x11));
}

TEST(AddEntropy, LeavesTheStateAsItIs) {
    RandomGenerator generator;
    generator.seedFromWord(8);
    const Bytes data(10);
    generator.addEntropy(data.data(), data.size());
    generator.addEntropyByte(1);
    EXPECT_EQ(generator.stateBlock, GeneratorModel(8).state());
}

TEST(AddEntropyByte, AppendsOneByte) {
    RandomGenerator generator;
    generator.addEntropyByte(0x11);
    EXPECT_EQ(generator.entropyPool, (Bytes{0x11}));
    generator.addEntropyByte(0x22);
    EXPECT_EQ(generator.entropyPool, (Bytes{0x11, 0x22}));
}

TEST(AddEntropyByte, FillsTheLastPlaceAndThenChangesNothing) {
    RandomGenerator generator;
    fillPool(generator, 2047);
    generator.addEntropyByte(0x22);
    ASSERT_EQ(generator.entropyPool.size(), 2048U);
    EXPECT_EQ(generator.entropyPool.back(), 0x22);
    generator.addEntropyByte(0x33);
    EXPECT_EQ(generator.entropyPool.size(), 2048U);
    EXPECT_EQ(generator.entropyPool.back(), 0x22);
}

TEST(ClearState, ZeroesCounterAndSeedsAndKeepsThePool) {
    RandomGenerator generator;
    generator.next64();
    fillPool(generator, 5);
    generator.clearState();
    EXPECT_EQ(generator.stateBlock, zeroState);
    EXPECT_EQ(generator.entropyPool.size(), 5U);
}

TEST(SeedFromSystem, HashesThePoolWithTheCollectedBytesBehindIt) {
    RandomGenerator generator;
    ScopedSystemCalls system;
    system.now = 0x44332211;
    const Bytes waiting = {7, 8, 9};
    generator.next64();
    generator.addEntropy(waiting.data(), waiting.size());
    generator.seedFromSystem();
    EXPECT_EQ(generator.stateBlock, GeneratorModel(Bytes{7, 8, 9, 0x33, 0x11, 0x44, 0x22}).state());
    EXPECT_TRUE(generator.entropyPool.empty());
}

TEST(SeedFromSystem, CollectsBeyondTheLimitOfThePool) {
    RandomGenerator generator;
    ScopedSystemCalls system;
    system.now = 0x44332211;
    fillPool(generator, 2048);
    generator.seedFromSystem();
    Bytes seed(2052, 0x11);
    seed[2048] = 0x33;
    seed[2050] = 0x44;
    seed[2051] = 0x22;
    EXPECT_EQ(generator.stateBlock, GeneratorModel(seed).state());
}

TEST(RandomGeneratorConstruction, SeedsFromTheSystem) {
    ScopedSystemCalls system;
    system.now = 0x01020304;
    const RandomGenerator generator;
    EXPECT_EQ(generator.stateBlock, GeneratorModel(Bytes{2, 4, 1, 3}).state());
    EXPECT_TRUE(generator.entropyPool.empty());
}

TEST(RandomGeneratorConstruction, DiffersFromOneGeneratorToTheNext) {
    const RandomGenerator first;
    const RandomGenerator second;
    EXPECT_NE(first.stateBlock, second.stateBlock);
}

TEST(RandomGeneratorLocks, MayBeHeldByTheCallerOfEveryOperation) {
    RandomGenerator generator;
    const std::lock_guard<RecursiveMutex> poolLock(generator.entropyLock);
    const std::lock_guard<RecursiveMutex> stateLock(generator.stateLock);
    generator.seedFromSystem();
    generator.addEntropyByte(1);
    generator.mixPool();
    generator.clearState();
    generator.seedFromWord(6);
    EXPECT_EQ(generator.next32(), GeneratorModel(6).next());
}

}  // namespace
