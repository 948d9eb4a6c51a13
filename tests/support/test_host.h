#pragma once

#include <cstdint>
#include <vector>

// A host for the crypto core that counts blocks and plays recorded random bytes.

/// Blocks of `hostAlloc` that have not gone back to `hostFree`.
std::int64_t testHostLiveBlocks();

/// Calls of `hostAlloc` with a result, since the start of the process.
std::uint64_t testHostAllocations();

/// What the last of them asked for.
std::uint32_t testHostLastSize();

/// Appends bytes to those that `hostRandomBytes` gives out before it turns to the test's own
/// generator, `testRandom`.
void testHostPlayRandom(const std::vector<std::uint8_t>& bytes);

/// Recorded bytes that are not given out yet.
std::size_t testHostRandomLeft();
