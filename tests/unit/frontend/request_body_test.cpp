#include "frontend/request_body.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <limits>
#include <new>
#include <stdexcept>
#include <string>

#include "tests/support/standard_streams.h"

TEST(ReadRequestBody, TakesTheAnnouncedBytesAndLeavesTheRest) {
    const ScopedInput input("abcdefgh");
    const RequestBody body = readRequestBody(5);
    EXPECT_EQ(body.length, 5U);
    EXPECT_EQ(body.received, 5U);
    EXPECT_EQ(std::string(body.bytes.get(), 6), std::string("abcde\0", 6));
    EXPECT_EQ(input.left(), 3U);
}

TEST(ReadRequestBody, FillsWithZerosWhatDoesNotArrive) {
    const ScopedInput input("abc");
    const RequestBody body = readRequestBody(6);
    EXPECT_EQ(body.length, 6U);
    EXPECT_EQ(body.received, 3U);
    EXPECT_EQ(std::string(body.bytes.get(), 7), std::string("abc\0\0\0\0", 7));
}

TEST(ReadRequestBody, ReceivesNothingFromAnEmptyInput) {
    const ScopedInput input("");
    EXPECT_EQ(readRequestBody(4).received, 0U);
}

TEST(ReadRequestBody, RaisesLengthErrorFromTheLargestSignedNumberOn) {
    constexpr std::uint64_t longest = std::numeric_limits<std::int64_t>::max();
    const ScopedInput input("abc");
    EXPECT_THROW(readRequestBody(longest), std::length_error);
    EXPECT_THROW(readRequestBody(longest + 1), std::length_error);
    EXPECT_THROW(readRequestBody(std::numeric_limits<std::uint64_t>::max()), std::length_error);
    EXPECT_EQ(input.left(), 3U);
}

TEST(ReadRequestBody, RaisesBadAllocWhenThereIsNoMemory) {
    constexpr std::uint64_t longest = std::numeric_limits<std::int64_t>::max();
    const ScopedInput input("abc");
    EXPECT_THROW(readRequestBody(longest - 1), std::bad_alloc);
    EXPECT_THROW(readRequestBody(longest / 2), std::bad_alloc);
    EXPECT_EQ(input.left(), 3U);
}

TEST(RequestBody, GivesItsMemoryBack) {
    // So long a block is mapped for itself.
    constexpr std::uint64_t length = std::uint64_t{64} << 20;
    const ScopedInput input("abc");
    const std::size_t mappedBefore = ::mallinfo2().hblkhd;
    EXPECT_EQ(readRequestBody(length).received, 3U);
    EXPECT_EQ(::mallinfo2().hblkhd, mappedBefore);
}
