#pragma once

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <vector>

#include "core/memory.h"
#include "core/state.h"
#include "tests/support/leak_check.h"
#include "tests/support/stopped_core.h"

/// A stretch of memory by its place in the arena.
struct Stretch {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;

    bool operator==(const Stretch&) const = default;
};
using Stretches = std::vector<Stretch>;

inline std::ostream& operator<<(std::ostream& stream, const Stretch& stretch) {
    return stream << stretch.size << " bytes at " << stretch.offset;
}

/// A core of its own of which the arena can be carved, as it never is outside of tests.
class ArenaTest : StoppedCore, public LeakCheckedTest {
protected:
    void SetUp() override { core::coreStart(); }

    void TearDown() override {
        core::coreStop();
        LeakCheckedTest::TearDown();
    }

    static std::byte* at(std::uint64_t offset) { return core::coreArena + offset; }

    static void setFree(const Stretches& stretches) {
        core::freeBlocks = {};
        for (std::size_t i = 0; i < stretches.size(); ++i) {
            core::freeBlocks.at(i) = {at(stretches[i].offset), stretches[i].size};
        }
    }

    /// Enters blocks as carved, from entry 1 on.
    static void setUsed(const Stretches& stretches) {
        core::usedBlocks = {};
        for (std::size_t i = 0; i < stretches.size(); ++i) {
            core::usedBlocks.at(i + 1) = {at(stretches[i].offset), stretches[i].size};
        }
        core::usedCount = static_cast<std::uint32_t>(stretches.size());
    }

    static void freeWholeArena() { setFree({{0, core::coreArenaSize}}); }

    static Stretches freeStretches() { return live(core::freeBlocks, 0); }
    static Stretches usedStretches() { return live(core::usedBlocks, 1); }

private:
    /// The entries up to the first empty one; all behind it have to be empty as well.
    static Stretches live(const core::BlockTable& table, std::size_t first) {
        Stretches found;
        std::size_t i = first;
        for (; i < table.size() && table[i].address != nullptr; ++i) {
            found.push_back(
                {static_cast<std::uint64_t>(table[i].address - core::coreArena), table[i].size});
        }
        for (; i < table.size(); ++i) {
            EXPECT_EQ(table[i].address, nullptr) << "gap before entry " << i;
            EXPECT_EQ(table[i].size, 0U) << "size left in entry " << i;
        }
        return found;
    }
};
