#include "core/memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>

#include "core/host.h"
#include "tests/support/leak_check.h"
#include "tests/support/stopped_core.h"
#include "tests/unit/core/arena.h"

namespace {

using core::coreAlloc;
using core::coreAllocZero;
using core::coreFree;

using CoreAlloc = ArenaTest;
class CoreAllocWithoutCore : StoppedCore, public LeakCheckedTest {};

bool isInArena(const void* block) {
    const std::less<> below;
    return core::coreArena != nullptr && !below(block, core::coreArena) &&
           below(block, core::coreArena + core::coreArenaSize);
}

/// Whether the allocation of `size` bytes goes to the host, with `hostSize` as the size asked for.
testing::AssertionResult comesFromHost(std::uint64_t size, std::uint32_t hostSize) {
    const std::uint64_t before = testHostAllocations();
    void* block = coreAlloc(size, 0);
    const bool inArena = isInArena(block);
    coreFree(block);
    if (inArena || testHostAllocations() != before + 1) {
        return testing::AssertionFailure() << size << " bytes do not come from the host";
    }
    if (testHostLastSize() != hostSize) {
        return testing::AssertionFailure() << "the host is asked for " << testHostLastSize();
    }
    return testing::AssertionSuccess();
}

TEST_F(CoreAlloc, NeverCarvesTheArenaAfterStart) {
    for (const std::uint32_t size : {0U, 1U, 7U, 8U, 9U, 100U, 2056U, 131072U, 131073U, 1000000U}) {
        EXPECT_TRUE(comesFromHost(size, size));
        EXPECT_EQ(core::usedCount, 0U);
    }
    EXPECT_EQ(core::releaseCount, 0U);
    EXPECT_EQ(freeStretches(), (Stretches{{0, 0}}));
    EXPECT_TRUE(usedStretches().empty());
}

TEST_F(CoreAllocWithoutCore, WorksWhileTheCoreIsStopped) {
    ASSERT_EQ(core::coreArena, nullptr);
    EXPECT_TRUE(comesFromHost(40, 40));
    EXPECT_EQ(core::usedCount, 0U);
}

TEST_F(CoreAlloc, CutsTheSizeForTheHostTo32Bits) {
    EXPECT_TRUE(comesFromHost(0x100000005, 5));
    EXPECT_TRUE(comesFromHost(0x300000000, 0));
}

TEST_F(CoreAlloc, CarvesFromTheFrontInMultiplesOfEight) {
    freeWholeArena();
    const std::uint64_t before = testHostAllocations();
    EXPECT_EQ(coreAlloc(1, 0), at(0));
    EXPECT_EQ(coreAlloc(8, 0), at(8));
    EXPECT_EQ(coreAlloc(9, 0), at(16));
    EXPECT_EQ(coreAlloc(24, 0), at(32));
    EXPECT_EQ(testHostAllocations(), before);
    EXPECT_EQ(usedStretches(), (Stretches{{0, 8}, {8, 8}, {16, 16}, {32, 24}}));
    EXPECT_EQ(core::usedBlocks[0].address, nullptr);
    EXPECT_EQ(core::usedCount, 4U);
    EXPECT_EQ(freeStretches(), (Stretches{{56, core::coreArenaSize - 56}}));
}

TEST_F(CoreAlloc, TakesTheFirstEntryThatFits) {
    setFree({{0, 16}, {32, 64}, {128, 24}, {256, 512}});
    EXPECT_EQ(coreAlloc(20, 0), at(32));
    EXPECT_EQ(freeStretches(), (Stretches{{0, 16}, {56, 40}, {128, 24}, {256, 512}}));
}

TEST_F(CoreAlloc, RemovesAnEntryOfTheExactSize) {
    setFree({{0, 16}, {32, 64}, {128, 24}, {256, 512}});
    EXPECT_EQ(coreAlloc(64, 0), at(32));
    EXPECT_EQ(freeStretches(), (Stretches{{0, 16}, {256, 512}, {128, 24}}));
}

TEST_F(CoreAlloc, RemovesTheOnlyEntryOfTheExactSize) {
    freeWholeArena();
    EXPECT_EQ(coreAlloc(core::coreArenaSize, 0), at(0));
    EXPECT_TRUE(freeStretches().empty());
    EXPECT_TRUE(comesFromHost(1, 1));
}

TEST_F(CoreAlloc, EndsTheSearchAtAnEntryOfSizeZero) {
    setFree({{0, 16}, {32, 0}, {128, 512}});
    EXPECT_TRUE(comesFromHost(21, 21));
    EXPECT_EQ(coreAlloc(16, 0), at(0));
}

TEST_F(CoreAlloc, TurnsToTheHostWhenNoEntryFits) {
    setFree({{0, 16}, {32, 24}});
    EXPECT_TRUE(comesFromHost(25, 25));
    Stretches small;
    for (std::uint64_t i = 0; i < core::blockTableSize; ++i) {
        small.push_back({i * 16, 8});
    }
    setFree(small);
    EXPECT_TRUE(comesFromHost(9, 9));
    EXPECT_EQ(freeStretches(), small);
}

TEST_F(CoreAlloc, TurnsToTheHostWhenTheTableOfUsedBlocksIsFull) {
    freeWholeArena();
    for (std::uint64_t i = 0; i < core::blockTableSize - 1; ++i) {
        ASSERT_EQ(coreAlloc(8, 0), at(8 * i));
    }
    EXPECT_EQ(core::usedCount, 127U);
    const Stretches used = usedStretches();
    EXPECT_EQ(used.size(), 127U);
    EXPECT_TRUE(comesFromHost(13, 13));
    EXPECT_EQ(usedStretches(), used);
    EXPECT_EQ(core::usedBlocks[0].address, nullptr);

    coreFree(at(0));
    EXPECT_EQ(coreAlloc(13, 0), at(1016));
}

TEST_F(CoreAlloc, TurnsToTheHostAtACountOf128) {
    freeWholeArena();
    core::usedCount = 127;
    EXPECT_EQ(coreAlloc(13, 0), at(0));
    EXPECT_EQ(core::usedCount, 128U);
    EXPECT_TRUE(comesFromHost(13, 13));
    core::usedCount = 0;
}

TEST_F(CoreAlloc, ZeroesACarvedBlockOnlyWhenAsked) {
    constexpr std::byte filler{0xAA};
    const auto filledAgain = [&] {
        std::memset(core::coreArena, 0xAA, 64);
        core::usedBlocks = {};
        core::usedCount = 0;
        freeWholeArena();
    };
    const auto zeroBytes = [&] {
        return std::find(core::coreArena, core::coreArena + 64, filler) - core::coreArena;
    };
    filledAgain();
    coreAlloc(13, 0);
    EXPECT_EQ(zeroBytes(), 0);
    filledAgain();
    coreAlloc(13, ~std::uint64_t{1});
    EXPECT_EQ(zeroBytes(), 0);
    filledAgain();
    coreAlloc(13, 1);
    EXPECT_EQ(coreAllocZero, 1U);
    EXPECT_EQ(zeroBytes(), 16) << "the rounded size, and no more";
    filledAgain();
    coreAlloc(13, ~std::uint64_t{0});
    EXPECT_EQ(zeroBytes(), 16);
    EXPECT_EQ(core::coreArena[16], filler);
}

}  // namespace
