#include "core/state.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

#include "core/memory.h"
#include "tests/support/leak_check.h"
#include "tests/support/stopped_core.h"

namespace {

using core::coreStart;
using core::coreStop;

// Taken while the program's static data is set up, before anything starts the core.
const auto spreadTableBeforeStart = core::squareSpreadTable;

bool isEmpty(const core::BlockTable& table) {
    return std::ranges::all_of(
        table, [](const core::CoreBlock& b) { return b.address == nullptr && b.size == 0; });
}

class StoppedCoreTest : StoppedCore, public LeakCheckedTest {};

using CoreStart = StoppedCoreTest;
using CoreStop = StoppedCoreTest;
using SquareSpreadTable = StoppedCoreTest;

TEST_F(CoreStart, ObtainsOneZeroedBlockForTheArena) {
    const std::uint64_t before = testHostAllocations();
    coreStart();
    EXPECT_EQ(testHostAllocations(), before + 1);
    EXPECT_EQ(testHostLastSize(), 131072U);
    ASSERT_NE(core::coreArena, nullptr);
    EXPECT_TRUE(std::all_of(core::coreArena, core::coreArena + 131072,
                            [](std::byte byte) { return byte == std::byte{0}; }));
    coreStop();
}

TEST_F(CoreStart, EntersTheArenaAsFreeWithSizeZero) {
    coreStart();
    EXPECT_EQ(core::freeBlocks[0].address, core::coreArena);
    core::freeBlocks[0].address = nullptr;
    EXPECT_TRUE(isEmpty(core::freeBlocks));
    EXPECT_TRUE(isEmpty(core::usedBlocks));
    coreStop();
}

TEST_F(CoreStart, ClearsBothCounts) {
    core::usedCount = 3;
    core::releaseCount = 5;
    coreStart();
    EXPECT_EQ(core::usedCount, 0U);
    EXPECT_EQ(core::releaseCount, 0U);
    coreStop();
}

TEST_F(CoreStart, WorksAgainAfterAStop) {
    for (int run = 0; run < 3; ++run) {
        coreStart();
        ASSERT_NE(core::coreArena, nullptr);
        EXPECT_EQ(core::freeBlocks[0].address, core::coreArena);
        EXPECT_EQ(core::freeBlocks[0].size, 0U);
        EXPECT_EQ(core::squareSpreadTable[0xFF], 0x5555);

        // A carved block that is never freed must not outlive its run.
        core::freeBlocks[0].size = core::coreArenaSize;
        EXPECT_EQ(core::coreAlloc(24, 0), core::coreArena);
        EXPECT_EQ(core::usedCount, 1U);
        EXPECT_EQ(core::usedBlocks[1].size, 24U);
        EXPECT_EQ(core::usedBlocks[2].address, nullptr);
        coreStop();
    }
}

TEST_F(CoreStop, GivesTheArenaBackAndEmptiesTheTables) {
    coreStart();
    core::freeBlocks[0].size = core::coreArenaSize;
    core::coreAlloc(8, 0);
    core::usedBlocks[127] = {core::coreArena, 8};
    core::freeBlocks[127] = {core::coreArena, 8};
    const std::int64_t before = testHostLiveBlocks();
    coreStop();
    EXPECT_EQ(testHostLiveBlocks(), before - 1);
    EXPECT_EQ(core::coreArena, nullptr);
    EXPECT_EQ(core::usedCount, 0U);
    EXPECT_TRUE(isEmpty(core::usedBlocks));
    EXPECT_TRUE(isEmpty(core::freeBlocks));
}

TEST_F(CoreStop, LeavesTheReleaseCountToTheNextStart) {
    coreStart();
    core::releaseCount = 9;
    coreStop();
    EXPECT_EQ(core::releaseCount, 9U);
    coreStart();
    EXPECT_EQ(core::releaseCount, 0U);
    coreStop();
}

TEST_F(CoreStop, LeavesTheSpreadTable) {
    coreStart();
    coreStop();
    EXPECT_EQ(core::squareSpreadTable[0xFF], 0x5555);
}

TEST_F(CoreStop, IsHarmlessWhenStopped) {
    coreStop();
    const std::int64_t before = testHostLiveBlocks();
    coreStop();
    EXPECT_EQ(testHostLiveBlocks(), before);
    EXPECT_EQ(core::coreArena, nullptr);
}

TEST_F(SquareSpreadTable, IsZeroBeforeTheFirstStart) {
    EXPECT_TRUE(std::ranges::all_of(spreadTableBeforeStart,
                                    [](std::uint16_t entry) { return entry == 0; }));
}

TEST_F(SquareSpreadTable, HoldsTheSquareOfEachBytePolynomial) {
    core::squareSpreadTable.fill(0xFFFF);
    coreStart();
    for (std::uint32_t byte = 0; byte < 256; ++byte) {
        // Over GF(2) the square of a sum of powers z^i is the sum of the powers z^2i.
        std::uint32_t square = 0;
        for (unsigned i = 0; i < 8; ++i) {
            if ((byte >> i & 1) != 0) {
                square ^= byte << i;
            }
        }
        EXPECT_EQ(core::squareSpreadTable[byte], square) << "byte " << byte;
    }
    EXPECT_EQ(core::squareSpreadTable[0], 0);
    EXPECT_EQ(core::squareSpreadTable[1], 1);
    EXPECT_EQ(core::squareSpreadTable[3], 5);
    EXPECT_EQ(core::squareSpreadTable[0x80], 0x4000);
    EXPECT_EQ(core::squareSpreadTable[0xFF], 0x5555);
    coreStop();
}

}  // namespace
