#include "core/hash_message.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <vector>

#include "tests/support/random_operands.h"

namespace {

using core::LengthOrder;

/// What a hash asked of its block function in one call.
struct BlockCall {
    std::uint32_t* state;
    const std::uint8_t* data;
    std::uint64_t blocks;
};

std::vector<BlockCall> calls;
std::vector<std::uint8_t> tail;

/// Notes the call and keeps the blocks of the last one, which are gone when the hash returns.
void noteBlocks(std::uint32_t* state, const std::uint8_t* data, std::uint64_t blocks) {
    calls.push_back({state, data, blocks});
    if (blocks <= 2) {
        tail.assign(data, data + 64 * blocks);
    }
}

std::uint32_t state;

void hash(const std::uint8_t* data, std::uint64_t length, LengthOrder order) {
    calls.clear();
    tail.clear();
    core::hashMessage(&state, data, length, noteBlocks, order);
}

/// The bit count at the end of the tail.
std::uint64_t statedBits(LengthOrder order) {
    std::uint64_t bits = 0;
    for (std::size_t i = 0; i < 8; ++i) {
        const std::size_t place = order == LengthOrder::bigEndian ? i : 7 - i;
        bits = bits << 8 | tail.at(tail.size() - 8 + place);
    }
    return bits;
}

TEST(HashMessage, GivesWholeBlocksInPlaceAndThenTheTail) {
    for (std::size_t length = 0; length <= 300; ++length) {
        const std::vector<std::uint8_t> message = randomBytes(length);
        hash(message.data(), length, LengthOrder::bigEndian);
        const bool hasWhole = length >= 64;
        ASSERT_EQ(calls.size(), hasWhole ? 2U : 1U) << "length " << length;
        if (hasWhole) {
            EXPECT_EQ(calls[0].data, message.data());
            EXPECT_EQ(calls[0].blocks, length / 64);
        }
        EXPECT_EQ(calls[0].state, &state);
        EXPECT_EQ(calls.back().state, &state);
        EXPECT_EQ(calls.back().blocks, length % 64 < 56 ? 1U : 2U) << "length " << length;
    }
}

TEST(HashMessage, FillsTheTailWithTheRemainderAndThePadding) {
    for (const LengthOrder order : {LengthOrder::bigEndian, LengthOrder::littleEndian}) {
        for (std::size_t length = 0; length <= 200; ++length) {
            const std::vector<std::uint8_t> message = randomBytes(length);
            hash(message.data(), length, order);
            std::vector<std::uint8_t> expected(message.end() - static_cast<int>(length % 64),
                                               message.end());
            expected.push_back(0x80);
            expected.resize(tail.size() - 8);
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), tail.begin()))
                << "length " << length;
            EXPECT_EQ(statedBits(order), 8 * length);
        }
    }
}

TEST(HashMessage, CountsWholeBlocksInTheLow32BitsOnly) {
    // Four GiB of address space, of which a few pages are touched.
    constexpr std::uint64_t size = (std::uint64_t{1} << 32) + 4096;
    void* mapped = ::mmap(nullptr, size, PROT_READ | PROT_WRITE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(mapped, MAP_FAILED);
    auto* data = static_cast<std::uint8_t*>(mapped);

    const std::uint64_t longest = 0xFFFFFFFF;
    data[longest - 1] = 0x77;
    hash(data, longest, LengthOrder::littleEndian);
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].blocks, longest / 64);
    EXPECT_EQ(tail[62], 0x77);
    EXPECT_EQ(tail[63], 0x80);
    EXPECT_EQ(statedBits(LengthOrder::littleEndian), 8 * longest);

    hash(data, std::uint64_t{1} << 31, LengthOrder::littleEndian);
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].blocks, std::uint64_t{1} << 25);

    // One byte above, nothing is left of the whole blocks.
    data[0] = 0x11;
    data[std::uint64_t{1} << 32] = 0x22;
    hash(data, longest + 2, LengthOrder::littleEndian);
    ASSERT_EQ(calls.size(), 1U);
    EXPECT_EQ(tail[0], 0x11) << "the remainder follows where the shortened run stops";
    EXPECT_EQ(statedBits(LengthOrder::littleEndian), 8 * (longest + 2));

    data[128] = 0x33;
    hash(data, longest + 1 + 130, LengthOrder::littleEndian);
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].blocks, 2U);
    EXPECT_EQ(tail[0], 0x33);
    ::munmap(mapped, size);
}

}  // namespace
