#pragma once

#include <cstdint>
#include <random>

#include "tests/support/bytes.h"

/// The seed of this run: SIGN_TEST_SEED of the environment, or a fresh one. It is printed when a
/// test of the executable fails and stands in the report of every test, so that a run can be
/// repeated.
std::uint64_t testSeed();

/// The generator that the random operands of a test come from, seeded afresh with `testSeed` at the
/// start of each test.
std::mt19937_64& testRandom();

/// A number in [0, bound).
std::uint64_t randomBelow(std::uint64_t bound);

Bytes randomBytes(std::size_t length);
