#include "random/system_entropy.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <deque>
#include <string>
#include <vector>

#include "tests/support/open_files.h"
#include "tests/support/random_operands.h"
#include "tests/support/temporary_folder.h"
#include "tests/unit/random/system_calls.h"

namespace {

constexpr std::time_t someTime = 0x123456789A;
const Bytes someTimeBytes = {0x56, 0x9A, 0x34, 0x78};

/// The pool of a device that delivers these bytes, and how many times what was opened.
struct Collected {
    Bytes pool;
    std::vector<std::string> opened;
};

Collected collectFrom(const std::deque<std::string>& files) {
    ScopedSystemCalls system;
    system.now = someTime;
    system.files = files;
    Collected collected;
    collectSystemEntropy(collected.pool);
    collected.opened = system.opened;
    return collected;
}

/// Four time bytes and a group for each kept byte.
Bytes poolOf(const Bytes& keptBytes) {
    Bytes pool = someTimeBytes;
    for (const std::uint8_t byte : keptBytes) {
        pool.insert(pool.end(), {byte, 0, 0, 0});
    }
    return pool;
}

/// The first byte of each eight.
Bytes everyEighth(const Bytes& data) {
    Bytes kept;
    for (std::size_t i = 0; i < data.size(); i += 8) {
        kept.push_back(data[i]);
    }
    return kept;
}

/// The low bytes of what `rand` gives in a process that never seeds it.
Bytes unseededRand(std::size_t count) {
    std::srand(1);
    Bytes bytes;
    for (std::size_t i = 0; i < count; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(std::rand()));
    }
    std::srand(1);
    return bytes;
}

TEST(CollectSystemEntropy, KeepsTheFirstByteOfSixteenReadsOfEight) {
    const TemporaryFolder folder;
    const Bytes device = randomBytes(256);
    const Collected collected = collectFrom({folder.write("device", device)});
    EXPECT_EQ(collected.pool.size(), 68U);
    EXPECT_EQ(collected.pool, poolOf(everyEighth(Bytes(device.begin(), device.begin() + 128))));
    EXPECT_EQ(collected.opened, std::vector<std::string>{"/dev/urandom rb"});
}

TEST(CollectSystemEntropy, TurnsToTheSecondDeviceWhenTheFirstCannotBeOpened) {
    const TemporaryFolder folder;
    const Bytes device = randomBytes(128);
    const Collected collected = collectFrom({"", folder.write("device", device)});
    EXPECT_EQ(collected.pool, poolOf(everyEighth(device)));
    EXPECT_EQ(collected.opened, (std::vector<std::string>{"/dev/urandom rb", "/dev/random rb"}));
}

TEST(CollectSystemEntropy, EndsBehindTheTimeWithoutAnyDevice) {
    const Collected collected = collectFrom({"", ""});
    EXPECT_EQ(collected.pool, someTimeBytes);
    EXPECT_EQ(collected.opened.size(), 2U);
}

TEST(CollectSystemEntropy, PutsRandInThePlaceOfReadsThatDeliverNothing) {
    const TemporaryFolder folder;
    const std::string empty = folder.write("device", {});
    const Bytes stand = unseededRand(16);
    EXPECT_EQ(collectFrom({empty}).pool, poolOf(stand));
}

TEST(CollectSystemEntropy, TakesNoByteOfAReadThatEndsEarly) {
    const TemporaryFolder folder;
    const Bytes device = randomBytes(8 * 3 + 7);
    Bytes kept = everyEighth(Bytes(device.begin(), device.begin() + 24));
    const std::string path = folder.write("device", device);
    const Bytes stand = unseededRand(13);
    kept.insert(kept.end(), stand.begin(), stand.end());
    EXPECT_EQ(collectFrom({path}).pool, poolOf(kept));
}

TEST(CollectSystemEntropy, AppendsToThePool) {
    ScopedSystemCalls system;
    system.now = someTime;
    Bytes pool(3000, 0xEE);
    collectSystemEntropy(pool);
    ASSERT_EQ(pool.size(), 3004U);
    EXPECT_EQ(Bytes(pool.begin(), pool.begin() + 3000), Bytes(3000, 0xEE));
    EXPECT_EQ(Bytes(pool.begin() + 3000, pool.end()), someTimeBytes);
}

TEST(CollectSystemEntropy, ReadsTheSystemsClockAndDevice) {
    const std::time_t before = std::time(nullptr);
    Bytes pool;
    collectSystemEntropy(pool);
    const std::time_t after = std::time(nullptr);
    ASSERT_EQ(pool.size(), 68U);
    const std::uint32_t seconds = pool[1] | std::uint32_t{pool[3]} << 8 |
                                  std::uint32_t{pool[0]} << 16 | std::uint32_t{pool[2]} << 24;
    EXPECT_GE(seconds, static_cast<std::uint32_t>(before));
    EXPECT_LE(seconds, static_cast<std::uint32_t>(after));
    Bytes kept;
    for (std::size_t i = 4; i < pool.size(); i += 4) {
        kept.push_back(pool[i]);
        EXPECT_TRUE(pool[i + 1] == 0 && pool[i + 2] == 0 && pool[i + 3] == 0) << "byte " << i;
    }
    // Sixteen equal bytes of a random device have a chance of 2^-120.
    EXPECT_NE(kept, Bytes(16, kept[0]));
}

TEST(CollectSystemEntropy, ClosesTheDevice) {
    const auto before = openFiles();
    Bytes pool;
    collectSystemEntropy(pool);
    EXPECT_EQ(openFiles(), before);
}

}  // namespace
