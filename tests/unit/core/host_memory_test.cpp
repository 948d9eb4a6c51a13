#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "core/host.h"
#include "core/memory.h"

// The program's own memory services, on the C library's allocator or without one.

// The linker's names for the allocator and for what replaces it.
void* systemCalloc(std::size_t count, std::size_t size) asm("__real_calloc");
void* replacedCalloc(std::size_t count, std::size_t size) asm("__wrap_calloc");

namespace {

bool isExhausted = false;
std::size_t lastRequest = 0;

/// While it lives, the allocator has nothing to give.
struct ScopedExhaustion {
    ScopedExhaustion() { isExhausted = true; }
    ScopedExhaustion(const ScopedExhaustion&) = delete;
    ScopedExhaustion& operator=(const ScopedExhaustion&) = delete;
    ~ScopedExhaustion() { isExhausted = false; }
};

bool isZero(const void* block, std::size_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(block);
    return std::all_of(bytes, bytes + size, [](std::uint8_t byte) { return byte == 0; });
}

}  // namespace

void* replacedCalloc(std::size_t count, std::size_t size) {
    lastRequest = count * size;
    return isExhausted ? nullptr : systemCalloc(count, size);
}

namespace {

TEST(HostAlloc, ZeroesBlocksThatWereInUse) {
    for (int round = 0; round < 50; ++round) {
        for (const std::uint32_t size : {1U, 24U, 2056U, 131072U}) {
            void* block = core::hostAlloc(size);
            EXPECT_TRUE(isZero(block, size));
            std::memset(block, 0xAA, size);
            core::hostFree(block);
        }
    }
}

TEST(HostAlloc, AlignsForAnyWord) {
    std::vector<void*> blocks;
    for (std::uint32_t size = 1; size <= 100; ++size) {
        blocks.push_back(core::hostAlloc(size));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(blocks.back()) % alignof(std::uint64_t), 0U);
    }
    std::ranges::for_each(blocks, core::hostFree);
}

TEST(HostAlloc, RaisesBadAllocWhenMemoryIsExhausted) {
    const ScopedExhaustion exhaustion;
    EXPECT_THROW(core::hostAlloc(1), std::bad_alloc);
    EXPECT_THROW(core::hostAlloc(0xFFFFFFFF), std::bad_alloc);
}

TEST(HostAlloc, OfNothingMayGiveNoBlock) {
    void* block = core::hostAlloc(0);
    core::hostFree(block);
    const ScopedExhaustion exhaustion;
    EXPECT_EQ(core::hostAlloc(0), nullptr);
}

TEST(HostFree, IgnoresNull) {
    core::hostFree(nullptr);
}

TEST(CoreAllocOnTheHost, GivesZeroBlocksWhateverTheFlags) {
    for (int round = 0; round < 50; ++round) {
        for (const std::uint64_t flags : {std::uint64_t{0}, core::coreAllocZero}) {
            void* block = core::coreAlloc(100, flags);
            EXPECT_TRUE(isZero(block, 100));
            std::memset(block, 0xAA, 100);
            core::coreFree(block);
        }
    }
}

TEST(CoreAllocOnTheHost, AsksForTheSizeUnrounded) {
    for (const std::uint32_t size : {0U, 1U, 13U, 2057U}) {
        void* block = core::coreAlloc(size, 0);
        EXPECT_EQ(lastRequest, size);
        core::coreFree(block);
    }
}

TEST(CoreAllocOnTheHost, OfNothingGivesWhatTheHostGives) {
    const ScopedExhaustion exhaustion;
    EXPECT_EQ(core::coreAlloc(0, 0), core::hostAlloc(0));
    EXPECT_THROW(core::coreAlloc(1, 0), std::bad_alloc);
}

}  // namespace
