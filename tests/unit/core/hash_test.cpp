#include "core/hash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/support/hexadecimal.h"
#include "tests/support/random_operands.h"
#include "tests/support/vector_file.h"
#include "tests/unit/core/hash_judge.h"

namespace {

class Digest : public testing::TestWithParam<HashCase> {};

INSTANTIATE_TEST_SUITE_P(Hashes, Digest, testing::Values(sha256Case, ripemd160Case, md5Case),
                         [](const testing::TestParamInfo<HashCase>& info) {
                             std::string name = info.param.name;
                             std::erase(name, '-');
                             return name;
                         });

TEST_P(Digest, IsThePublishedOneForAllVectors) {
    std::size_t count = 0;
    for (const VectorCase& vector : readVectorFile(GetParam().vectorFile)) {
        if (!vector.contains("MD")) {
            continue;
        }
        const std::vector<std::uint8_t> message = bytesFromHexadecimal(vector.at("Msg"));
        const std::uint64_t length = std::stoull(vector.at("Len")) / 8;
        ASSERT_LE(length, message.size());
        EXPECT_EQ(coreDigest(GetParam(), message.data(), length), vector.at("MD"))
            << "length " << length;
        ++count;
    }
    EXPECT_GE(count, 7U);
}

TEST_P(Digest, OfNothingReadsNothing) {
    EXPECT_EQ(coreDigest(GetParam(), nullptr, 0), judgeDigest(GetParam(), nullptr, 0));
}

TEST_P(Digest, AgreesWithTheJudgeAtEveryLengthAndAlignment) {
    constexpr std::size_t longest = 4096;
    constexpr std::size_t alignments = 64;
    alignas(alignments) static std::array<std::uint8_t, longest + alignments> room;
    std::size_t differing = 0;
    for (std::size_t length = 0; length <= longest; ++length) {
        const std::vector<std::uint8_t> message = randomBytes(length);
        const std::string expected = judgeDigest(GetParam(), message.data(), length);
        // Beyond a few blocks only the place of a word in its eight bytes can matter.
        const std::size_t tried = length <= 512 ? alignments : 8;
        for (std::size_t alignment = 0; alignment < tried; ++alignment) {
            std::ranges::copy(message, room.data() + alignment);
            if (coreDigest(GetParam(), room.data() + alignment, length) != expected) {
                ++differing;
                ADD_FAILURE() << "length " << length << ", alignment " << alignment;
            }
        }
    }
    EXPECT_EQ(differing, 0U);
}

TEST_P(Digest, LeavesTheMessage) {
    const std::vector<std::uint8_t> message = randomBytes(200);
    const std::vector<std::uint8_t> copy = message;
    coreDigest(GetParam(), message.data(), message.size());
    EXPECT_EQ(message, copy);
}

TEST_P(Digest, MayBeWrittenOverTheMessage) {
    std::vector<std::uint8_t> message = randomBytes(200);
    std::vector<std::uint8_t> apart(GetParam().digestSize);
    GetParam().digest(message.data(), message.size(), apart.data());
    GetParam().digest(message.data(), message.size(), message.data());
    message.resize(apart.size());
    EXPECT_EQ(message, apart);
}

TEST_P(Digest, ReadsNoByteBeyondTheMessage) {
    for (std::size_t length = 1; length <= 130; ++length) {
        std::vector<std::uint8_t> message = randomBytes(length + 64);
        const std::string digest = coreDigest(GetParam(), message.data(), length);
        std::fill(message.begin() + static_cast<std::ptrdiff_t>(length), message.end(),
                  std::uint8_t{0x3C});
        EXPECT_EQ(coreDigest(GetParam(), message.data(), length), digest);
    }
}

/// Lengths of 4 GiB and more, each with so few low bits that only a short message is read.
std::vector<std::uint64_t> longLengths() {
    std::vector<std::uint64_t> lengths;
    for (const std::uint64_t high :
         {std::uint64_t{1} << 32, std::uint64_t{5} << 32, std::uint64_t{1} << 60,
          std::uint64_t{1} << 61, std::uint64_t{0xFFFFFFFF} << 32}) {
        for (const unsigned low : {0U, 1U, 5U, 55U, 56U, 63U, 64U, 65U, 119U, 120U, 128U, 1000U}) {
            lengths.push_back(high + low);
        }
    }
    return lengths;
}

TEST_P(Digest, SkipsTheBlocksAboveTheLow32BitsOfTheLength) {
    const std::vector<std::uint8_t> message = randomBytes(1024);
    for (const std::uint64_t length : longLengths()) {
        EXPECT_EQ(coreDigest(GetParam(), message.data(), length),
                  judgeLongDigest(GetParam(), message.data(), length))
            << "length " << length;
    }
}

TEST_P(Digest, StatesTheTrueBitCountOfALongMessage) {
    // Were the padding to state the shortened length, these would be the same.
    const std::vector<std::uint8_t> message = randomBytes(5);
    const std::string digest = coreDigest(GetParam(), message.data(), 5);
    EXPECT_NE(coreDigest(GetParam(), message.data(), 0x100000005), digest);
    // The bit count has 64 bits, so the top three bits of a length are lost.
    EXPECT_EQ(coreDigest(GetParam(), message.data(), 0x2000000000000005), digest);
    EXPECT_EQ(judgeLongDigest(GetParam(), message.data(), 5), digest);
}

TEST_P(Digest, OfALengthWithoutLowBitsReadsNothing) {
    const std::uint8_t unread = 0;
    EXPECT_EQ(coreDigest(GetParam(), nullptr, 0x300000000),
              judgeLongDigest(GetParam(), &unread, 0x300000000));
}

std::string digits(void (*digest)(const std::uint8_t*, std::uint64_t, std::uint8_t*),
                   std::size_t size, const std::string& text) {
    std::vector<std::uint8_t> out(size);
    digest(reinterpret_cast<const std::uint8_t*>(text.data()), text.size(), out.data());
    return hexadecimalFromBytes(out.data(), out.size());
}

TEST(Sha256Digest, StoresEachWordLittleEndian) {
    EXPECT_EQ(digits(core::sha256Digest, 32, "abc"),
              "bf1678baeacf018fde4041412322ae5da36103b09c7a179661ff10b4ad1500f2");
    EXPECT_EQ(digits(core::sha256Digest, 32, "").substr(0, 16), "42c4b0e3141cfc98");
}

TEST(Ripemd160Digest, OfAbcIsThePublishedOne) {
    EXPECT_EQ(digits(core::ripemd160Digest, 20, "abc"), "8eb208f7e05d987a9b044a8e98c6b087f15a0bfc");
}

TEST(Md5Digest, OfAbcIsThePublishedOne) {
    EXPECT_EQ(digits(core::md5Digest, 16, "abc"), "900150983cd24fb0d6963f7d28e17f72");
}

}  // namespace
