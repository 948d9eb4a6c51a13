#include "frontend/request_body.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <cstdio>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>

#include "tools/request/raw_request.h"

namespace {

std::FILE* streamOf(const RequestSource& source) {
    return source.body;
}

}  // namespace

TEST(ReadRequestBody, TakesTheAnnouncedBytesAndLeavesTheRest) {
    const RawRequest request{.body = "abcdefgh"};
    const RawRequestSource input(request);
    const RequestBody body = readRequestBody(streamOf(input), 5);
    EXPECT_EQ(body.length, 5U);
    EXPECT_EQ(body.received, 5U);
    EXPECT_EQ(std::string(body.bytes.get(), 6), std::string("abcde\0", 6));
    EXPECT_EQ(std::ftell(streamOf(input)), 5);
}

TEST(ReadRequestBody, FillsWithZerosWhatDoesNotArrive) {
    const RawRequest request{.body = "abc"};
    const RawRequestSource input(request);
    const RequestBody body = readRequestBody(streamOf(input), 6);
    EXPECT_EQ(body.length, 6U);
    EXPECT_EQ(body.received, 3U);
    EXPECT_EQ(std::string(body.bytes.get(), 7), std::string("abc\0\0\0\0", 7));
}

TEST(ReadRequestBody, ReceivesNothingFromAnEmptyInput) {
    const RawRequest request{.body = ""};
    const RawRequestSource input(request);
    EXPECT_EQ(readRequestBody(streamOf(input), 4).received, 0U);
}

TEST(ReadRequestBody, RaisesLengthErrorFromTheLargestSignedNumberOn) {
    constexpr std::uint64_t longest = std::numeric_limits<std::int64_t>::max();
    const RawRequest request{.body = "abc"};
    const RawRequestSource input(request);
    EXPECT_THROW(readRequestBody(streamOf(input), longest), std::length_error);
    EXPECT_THROW(readRequestBody(streamOf(input), longest + 1), std::length_error);
    EXPECT_THROW(readRequestBody(streamOf(input), std::numeric_limits<std::uint64_t>::max()),
                 std::length_error);
    EXPECT_EQ(std::ftell(streamOf(input)), 0);
}

TEST(ReadRequestBody, RaisesBadAllocWhenThereIsNoMemory) {
    constexpr std::uint64_t longest = std::numeric_limits<std::int64_t>::max();
    const RawRequest request{.body = "abc"};
    const RawRequestSource input(request);
    EXPECT_THROW(readRequestBody(streamOf(input), longest - 1), std::bad_alloc);
    EXPECT_THROW(readRequestBody(streamOf(input), longest / 2), std::bad_alloc);
    EXPECT_EQ(std::ftell(streamOf(input)), 0);
}

TEST(RequestBody, GivesItsMemoryBack) {
    // So long a block is mapped for itself.
    constexpr std::uint64_t length = std::uint64_t{64} << 20;
    const RawRequest request{.body = "abc"};
    const RawRequestSource input(request);
    const std::size_t mappedBefore = ::mallinfo2().hblkhd;
    EXPECT_EQ(readRequestBody(streamOf(input), length).received, 3U);
    EXPECT_EQ(::mallinfo2().hblkhd, mappedBefore);
}
