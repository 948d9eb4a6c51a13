#include "random/random_generator.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <latch>
#include <thread>
#include <vector>

#include "tests/support/generator_model.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_vectors.h"

namespace {

std::uint64_t counterOf(const RandomGenerator& generator) {
    std::uint64_t counter = 0;
    std::memcpy(&counter, generator.stateBlock.data(), sizeof counter);
    return counter;
}

std::uint32_t randomSeed() {
    return static_cast<std::uint32_t>(testRandom()());
}

TEST(RandomGenerator, StreamAfterSeedFromWordMatchesThePublishedOne) {
    ASSERT_EQ(generatorCases().size(), 16U);
    RandomGenerator generator;
    for (const GeneratorCase& expected : generatorCases()) {
        generator.seedFromWord(expected.seed);
        Bytes stream(expected.stream.size());
        generator.fillBytes(stream.data(), stream.size());
        EXPECT_EQ(stream, expected.stream) << "seed " << expected.seed;
    }
}

TEST(RandomGenerator, EveryStepMatchesTheModelInOutputAndState) {
    RandomGenerator generator;
    for (int round = 0; round < 20; ++round) {
        const std::uint32_t seed = randomSeed();
        generator.seedFromWord(seed);
        GeneratorModel model(seed);
        ASSERT_EQ(generator.stateBlock, model.state());
        for (int step = 0; step < 500; ++step) {
            ASSERT_EQ(generator.next32(), model.next()) << "seed " << seed << " step " << step;
            ASSERT_EQ(generator.stateBlock, model.state()) << "seed " << seed << " step " << step;
        }
    }
}

TEST(RandomGenerator, StreamOfAThousandSeedsMatchesTheModel) {
    RandomGenerator generator;
    Bytes stream(500);
    for (int round = 0; round < 1000; ++round) {
        // Every other seed has the length of what the system gives, the rest any.
        const Bytes seed = randomBytes(round % 2 == 0 ? 68 : randomBelow(2049));
        generator.addEntropy(seed.data(), seed.size());
        generator.mixPool();
        generator.fillBytes(stream.data(), stream.size());
        ASSERT_EQ(stream, GeneratorModel(seed).bytes(stream.size()))
            << "round " << round << ", " << seed.size() << " bytes";
    }
}

TEST(RandomGenerator, CounterCarriesIntoItsUpperHalf) {
    RandomGenerator generator;
    generator.seedFromWord(1);
    const std::uint64_t before = 0xFFFFFFFF;
    std::memcpy(generator.stateBlock.data(), &before, sizeof before);
    generator.next32();
    EXPECT_EQ(counterOf(generator), 0x100000000U);
}

TEST(RandomGenerator, StepsNeverChangeTheLastEightBytesOfTheState) {
    RandomGenerator generator;
    generator.seedFromWord(randomSeed());
    const std::vector<std::uint8_t> before(generator.stateBlock.begin() + 56,
                                           generator.stateBlock.end());
    for (int step = 0; step < 2000; ++step) {
        generator.next32();
        ASSERT_TRUE(std::equal(before.begin(), before.end(), generator.stateBlock.begin() + 56))
            << "step " << step;
    }
}

TEST(RandomGenerator, StepXorsTheFiveWordsThatTheCounterSelects) {
    RandomGenerator generator;
    generator.seedFromWord(randomSeed());
    for (std::size_t step = 1; step <= 16; ++step) {
        const std::array<std::uint8_t, 64> before = generator.stateBlock;
        generator.next32();
        const std::size_t first = 8 + 4 * (step % 8);
        for (std::size_t i = 8; i < before.size(); ++i) {
            if (i < first || i >= first + 20) {
                ASSERT_EQ(generator.stateBlock[i], before[i]) << "step " << step << " byte " << i;
            }
        }
        EXPECT_FALSE(std::equal(before.begin() + static_cast<std::ptrdiff_t>(first),
                                before.begin() + static_cast<std::ptrdiff_t>(first) + 20,
                                generator.stateBlock.begin() + static_cast<std::ptrdiff_t>(first)));
    }
}

TEST(RandomGenerator, FillBytesTakesAStepForEachGroupOfFourAndWritesNothingBehind) {
    constexpr std::uint8_t guard = 0x5A;
    RandomGenerator generator;
    for (std::size_t length = 0; length <= 17; ++length) {
        const std::uint32_t seed = randomSeed();
        generator.seedFromWord(seed);
        Bytes buffer(length + 8, guard);
        generator.fillBytes(buffer.data(), length);
        Bytes expected = GeneratorModel(seed).bytes(length);
        expected.resize(length + 8, guard);
        EXPECT_EQ(buffer, expected) << "length " << length;
        EXPECT_EQ(counterOf(generator), (length + 3) / 4) << "length " << length;
    }
}

TEST(RandomGenerator, FillBytesOfNoBytesTakesNoStep) {
    RandomGenerator generator;
    generator.seedFromWord(5);
    const std::array<std::uint8_t, 64> before = generator.stateBlock;
    generator.fillBytes(nullptr, 0);
    EXPECT_EQ(generator.stateBlock, before);
}

TEST(RandomGenerator, FillBytesDropsTheUnusedBytesOfItsLastStep) {
    RandomGenerator inParts;
    const std::uint32_t seed = randomSeed();
    inParts.seedFromWord(seed);
    GeneratorModel model(seed);
    Bytes three(3);
    inParts.fillBytes(three.data(), three.size());
    EXPECT_EQ(three, model.bytes(3));
    EXPECT_EQ(inParts.next32(), model.next());
}

TEST(RandomGenerator, Next64TakesItsHighHalfFromTheFirstStep) {
    RandomGenerator whole;
    RandomGenerator halves;
    const std::uint32_t seed = randomSeed();
    whole.seedFromWord(seed);
    halves.seedFromWord(seed);
    for (int draw = 0; draw < 200; ++draw) {
        const std::uint64_t high = halves.next32();
        const std::uint64_t low = halves.next32();
        ASSERT_EQ(whole.next64(), high << 32 | low);
    }
}

TEST(RandomGenerator, ForkedChildContinuesTheStreamOfItsParent) {
    RandomGenerator generator;
    generator.next32();
    std::array<int, 2> ends;
    ASSERT_EQ(::pipe(ends.data()), 0);
    const pid_t child = ::fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        const std::uint64_t drawn = generator.next64();
        ::_exit(::write(ends[1], &drawn, sizeof drawn) == sizeof drawn ? 0 : 1);
    }
    std::uint64_t drawn = 0;
    EXPECT_EQ(::read(ends[0], &drawn, sizeof drawn), static_cast<ssize_t>(sizeof drawn));
    EXPECT_EQ(drawn, generator.next64());
    EXPECT_EQ(::waitpid(child, nullptr, 0), child);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(RandomGenerator, ThreadsShareOneStreamWithoutLosingAStep) {
    constexpr std::size_t threadCount = 4;
    constexpr std::size_t drawCount = 50000;
    RandomGenerator generator;
    const std::uint32_t seed = randomSeed();
    generator.seedFromWord(seed);

    std::array<std::vector<std::uint32_t>, threadCount> drawn;
    std::vector<std::thread> threads;
    std::latch start(threadCount);
    for (std::vector<std::uint32_t>& words : drawn) {
        threads.emplace_back([&generator, &words, &start] {
            start.arrive_and_wait();
            for (std::size_t i = 0; i < drawCount; ++i) {
                words.push_back(generator.next32());
            }
        });
    }
    std::vector<std::uint32_t> all;
    for (std::size_t i = 0; i < threadCount; ++i) {
        threads[i].join();
        all.insert(all.end(), drawn[i].begin(), drawn[i].end());
    }
    GeneratorModel model(seed);
    std::vector<std::uint32_t> expected(all.size());
    std::generate(expected.begin(), expected.end(), [&model] { return model.next(); });
    std::sort(all.begin(), all.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(all, expected);
}

}  // namespace
