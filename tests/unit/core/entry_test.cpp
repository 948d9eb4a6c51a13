#include "core/entry.h"

#include <gtest/gtest.h>

#include "core/core_base64.h"
#include "core/hash.h"
#include "core/integer.h"
#include "core/state.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"
#include "tests/support/stopped_core.h"
#include "tests/unit/core/integer_operands.h"

namespace {

using core::CoreInteger;

using CoreEntry = LeakCheckedTest;

TEST_F(CoreEntry, StartsAndStopsTheCore) {
    const StoppedCore stopped;
    core::squareSpreadTable = {};
    coreEntry::coreStart();
    EXPECT_NE(core::coreArena, nullptr);
    EXPECT_EQ(core::squareSpreadTable[3], 5);
    coreEntry::coreStop();
    EXPECT_EQ(core::coreArena, nullptr);
}

TEST_F(CoreEntry, HandsHashesOn) {
    using Digest = void (*)(const std::uint8_t*, std::uint64_t, std::uint8_t*);
    const Bytes message = randomBytes(100);
    for (const auto& [entry, body] :
         {std::pair<Digest, Digest>{coreEntry::sha256Digest, core::sha256Digest},
          {coreEntry::ripemd160Digest, core::ripemd160Digest},
          {coreEntry::md5Digest, core::md5Digest}}) {
        Bytes fromEntry(40);
        Bytes fromBody(40);
        entry(message.data(), message.size(), fromEntry.data());
        body(message.data(), message.size(), fromBody.data());
        EXPECT_EQ(fromEntry, fromBody);
        EXPECT_NE(fromEntry, Bytes(40));
        // All 64 bits of the length arrive.
        entry(message.data(), 0x100000005, fromEntry.data());
        body(message.data(), 0x100000005, fromBody.data());
        EXPECT_EQ(fromEntry, fromBody);
    }
}

TEST_F(CoreEntry, HandsIntegersOn) {
    CoreInteger value;
    const Bytes stored = {17, 0, 0, 0, 0x11, 0x22, 0x01};
    coreEntry::integerImport(stored.data(), value);
    EXPECT_TRUE(isNormalValue(value, 0x12211));
    EXPECT_EQ(coreEntry::integerBitLength(value), 17U);
    EXPECT_EQ(coreEntry::integerByteLength(value), 3U);
    EXPECT_EQ(coreEntry::integerLimbs(value), value.limbs.data());

    CoreInteger destination = usedResult();
    coreEntry::integerCopy((-BigNumber(5)).toInteger(), destination);
    EXPECT_TRUE(isNormalValue(destination, -BigNumber(5)));
}

TEST_F(CoreEntry, HandsTheTextOn) {
    const Bytes input = {0x61, 0x62, 0x63, 0x64, 0xFF, 0, 0};
    std::string text(8, '?');
    EXPECT_EQ(coreEntry::coreBase64Encode(input.data(), 4, text.data()), 8U);
    EXPECT_EQ(text, "hJ2Yk9==");
    Bytes output(7);
    EXPECT_EQ(coreEntry::coreBase64Decode(text.data(), 8, output.data()), 4U);
    EXPECT_EQ(output, (Bytes{0x61, 0x62, 0x63, 0x64, 0x0F, 0, 0}));
}

}  // namespace
