#include <gtest/gtest.h>

#include "core/host.h"
#include "tests/unit/core/arena.h"

namespace {

using core::coreAlloc;
using core::coreCompact;
using core::coreFree;

using CoreFree = ArenaTest;
using CoreCompact = ArenaTest;

TEST_F(CoreFree, AcceptsANullBlock) {
    coreFree(nullptr);
    EXPECT_EQ(freeStretches(), (Stretches{{0, 0}}));
    setUsed({{0, 8}});
    setFree({{8, 8}});
    coreFree(nullptr);
    EXPECT_EQ(usedStretches(), (Stretches{{0, 8}}));
    EXPECT_EQ(freeStretches(), (Stretches{{8, 8}}));
    EXPECT_EQ(core::usedCount, 1U);
    EXPECT_EQ(core::releaseCount, 0U);
}

TEST_F(CoreFree, GivesABlockToTheHostWhileNothingIsCarved) {
    const std::int64_t before = testHostLiveBlocks();
    void* block = core::hostAlloc(16);
    coreFree(block);
    EXPECT_EQ(testHostLiveBlocks(), before);
    EXPECT_EQ(core::releaseCount, 0U);
    EXPECT_EQ(freeStretches(), (Stretches{{0, 0}}));
}

TEST_F(CoreFree, GivesABlockThatIsNotCarvedToTheHost) {
    setUsed({{0, 8}, {16, 8}});
    setFree({});
    const std::int64_t before = testHostLiveBlocks();
    coreFree(core::hostAlloc(16));
    EXPECT_EQ(testHostLiveBlocks(), before);
    EXPECT_EQ(usedStretches(), (Stretches{{0, 8}, {16, 8}}));
    EXPECT_TRUE(freeStretches().empty());
    EXPECT_EQ(core::usedCount, 2U);
    EXPECT_EQ(core::releaseCount, 0U);
}

TEST_F(CoreFree, FillsThePlaceOfACarvedBlockWithTheLastOne) {
    setUsed({{0, 8}, {16, 16}, {64, 24}, {128, 32}});
    setFree({});
    coreFree(at(16));
    EXPECT_EQ(usedStretches(), (Stretches{{0, 8}, {128, 32}, {64, 24}}));
    EXPECT_EQ(core::usedCount, 3U);
    EXPECT_EQ(core::releaseCount, 1U);
    coreFree(at(64));
    EXPECT_EQ(usedStretches(), (Stretches{{0, 8}, {128, 32}}));
    EXPECT_EQ(core::usedCount, 2U);
    EXPECT_EQ(core::releaseCount, 2U);
}

TEST_F(CoreFree, FindsABlockAtTheEndOfAFullTable) {
    Stretches used;
    for (std::uint64_t i = 0; i < core::blockTableSize - 1; ++i) {
        used.push_back({16 * i, 8});
    }
    setUsed(used);
    setFree({});
    coreFree(at(used.back().offset));
    EXPECT_EQ(freeStretches(), (Stretches{used.back()}));
    used.pop_back();
    EXPECT_EQ(usedStretches(), used);
}

TEST_F(CoreFree, MakesAStretchWithoutNeighboursANewLastEntry) {
    setUsed({{64, 24}});
    setFree({{0, 8}, {256, 8}});
    coreFree(at(64));
    EXPECT_EQ(freeStretches(), (Stretches{{0, 8}, {256, 8}, {64, 24}}));
}

TEST_F(CoreFree, JoinsTheStretchAboveWhateverItsSize) {
    setUsed({{64, 16}});
    setFree({{0, 8}, {80, 256}});
    coreFree(at(64));
    EXPECT_EQ(freeStretches(), (Stretches{{0, 8}, {64, 272}}));
}

TEST_F(CoreFree, JoinsTheStretchBelowWhenItHasTheSameLength) {
    setUsed({{64, 16}});
    setFree({{0, 8}, {48, 16}});
    coreFree(at(64));
    EXPECT_EQ(freeStretches(), (Stretches{{0, 8}, {48, 32}}));
}

TEST_F(CoreFree, LeavesAStretchBelowOfAnotherLengthApart) {
    setUsed({{64, 16}});
    setFree({{32, 32}});
    coreFree(at(64));
    EXPECT_EQ(freeStretches(), (Stretches{{32, 32}, {64, 16}}));
}

TEST_F(CoreFree, JoinsWhateverBeginsItsOwnSizeBelow) {
    setUsed({{64, 16}});
    setFree({{48, 8}});
    coreFree(at(64));
    EXPECT_EQ(freeStretches(), (Stretches{{48, 24}}));
}

TEST_F(CoreFree, JoinsTheFirstMatchOnly) {
    setUsed({{64, 16}});
    setFree({{80, 8}, {48, 16}});
    coreFree(at(64));
    EXPECT_EQ(freeStretches(), (Stretches{{64, 24}, {48, 16}}));

    setUsed({{64, 16}});
    setFree({{48, 16}, {80, 8}});
    coreFree(at(64));
    EXPECT_EQ(freeStretches(), (Stretches{{48, 32}, {80, 8}}));
}

TEST_F(CoreFree, FillsTheTableToItsLastEntry) {
    Stretches stretches;
    for (std::uint64_t i = 0; i < core::blockTableSize - 1; ++i) {
        stretches.push_back({1024 + 16 * i, 8});
    }
    setUsed({{0, 8}});
    setFree(stretches);
    coreFree(at(0));
    stretches.push_back({0, 8});
    EXPECT_EQ(freeStretches(), stretches);
}

TEST_F(CoreFree, DropsAStretchThatAFullTableHasNoRoomFor) {
    Stretches stretches;
    for (std::uint64_t i = 0; i < core::blockTableSize; ++i) {
        stretches.push_back({1024 + 16 * i, 8});
    }
    setUsed({{0, 8}});
    setFree(stretches);
    coreFree(at(0));
    EXPECT_EQ(freeStretches(), stretches);
    EXPECT_TRUE(usedStretches().empty());
    EXPECT_EQ(core::usedCount, 0U);
    EXPECT_EQ(core::releaseCount, 1U);
}

TEST_F(CoreFree, CompactsFromTheSeventeenthReleaseOn) {
    // Two neighbours that no release touches show whether a compaction ran.
    const Stretches apart = {{4096, 8}, {4104, 8}};
    const Stretches joined = {{4096, 16}};
    for (std::uint32_t release = 1; release <= 19; ++release) {
        setFree(apart);
        setUsed({{64, 16}});
        coreFree(at(64));
        ASSERT_EQ(core::releaseCount, release);
        Stretches expected = release <= 16 ? apart : joined;
        expected.push_back({64, 16});
        EXPECT_EQ(freeStretches(), expected) << "release " << release;
    }
}

TEST_F(CoreFree, GivesBackAllThatWasCarved) {
    freeWholeArena();
    std::vector<void*> blocks;
    for (std::uint64_t i = 0; i < 100; ++i) {
        blocks.push_back(coreAlloc(8 * (1 + i % 5), 0));
    }
    while (!blocks.empty()) {
        coreFree(blocks.back());
        blocks.pop_back();
    }
    // The last block always stood right below the free rest.
    EXPECT_EQ(freeStretches(), (Stretches{{0, core::coreArenaSize}}));
    EXPECT_TRUE(usedStretches().empty());
    EXPECT_EQ(core::usedCount, 0U);
    EXPECT_EQ(core::releaseCount, 100U);
}

TEST_F(CoreCompact, LeavesAnEmptyTable) {
    setFree({});
    coreCompact();
    EXPECT_TRUE(freeStretches().empty());
}

TEST_F(CoreCompact, LeavesStretchesThatDoNotTouch) {
    const Stretches apart = {{0, 8}, {64, 16}, {32, 8}, {16, 8}};
    setFree(apart);
    coreCompact();
    EXPECT_EQ(freeStretches(), apart);
}

TEST_F(CoreCompact, JoinsTheStretchAboveAnEntry) {
    setFree({{16, 8}, {256, 8}, {24, 32}, {512, 8}});
    coreCompact();
    EXPECT_EQ(freeStretches(), (Stretches{{16, 40}, {256, 8}, {512, 8}}));
}

TEST_F(CoreCompact, JoinsTheStretchBelowAnEntry) {
    setFree({{24, 32}, {256, 8}, {16, 8}, {512, 8}});
    coreCompact();
    EXPECT_EQ(freeStretches(), (Stretches{{16, 40}, {256, 8}, {512, 8}}));
}

TEST_F(CoreCompact, JoinsStretchesOfAnySizes) {
    setFree({{0, 64}, {64, 8}});
    coreCompact();
    EXPECT_EQ(freeStretches(), (Stretches{{0, 72}}));
}

TEST_F(CoreCompact, JoinsOneNeighbourAtMostToEachEntry) {
    // The first entry takes in [16, 32) and must leave [32, 48), which the second then takes in.
    setFree({{0, 16}, {48, 16}, {16, 16}, {32, 16}});
    coreCompact();
    EXPECT_EQ(freeStretches(), (Stretches{{0, 32}, {32, 32}}));
    coreCompact();
    EXPECT_EQ(freeStretches(), (Stretches{{0, 64}}));
}

TEST_F(CoreCompact, FillsThePlaceOfTheJoinedEntryWithTheLast) {
    setFree({{0, 16}, {16, 16}, {256, 8}, {512, 8}});
    coreCompact();
    EXPECT_EQ(freeStretches(), (Stretches{{0, 32}, {512, 8}, {256, 8}}));
}

TEST_F(CoreCompact, GoesOnWhenTheJoiningEntryIsTheLast) {
    setFree({{32, 16}, {0, 16}, {16, 16}});
    coreCompact();
    EXPECT_EQ(freeStretches(), (Stretches{{0, 48}}));
}

TEST_F(CoreCompact, EndsAtTheFirstEmptyEntry) {
    setFree({{0, 16}});
    core::freeBlocks[2] = {at(16), 16};
    coreCompact();
    EXPECT_EQ(core::freeBlocks[0].size, 16U);
    EXPECT_EQ(core::freeBlocks[2].address, at(16));
    EXPECT_EQ(core::freeBlocks[2].size, 16U);
}

TEST_F(CoreCompact, ReachesTheEndOfAFullTable) {
    Stretches stretches;
    for (std::uint64_t i = 0; i < core::blockTableSize; ++i) {
        stretches.push_back({16 * i, 8});
    }
    setFree(stretches);
    coreCompact();
    EXPECT_EQ(freeStretches(), stretches);

    stretches.back() = {stretches[126].offset + 8, 8};
    setFree(stretches);
    coreCompact();
    stretches.pop_back();
    stretches.back().size = 16;
    EXPECT_EQ(freeStretches(), stretches);
}

}  // namespace
