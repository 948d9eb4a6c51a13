#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "core/core_integer.h"
#include "tests/support/big_number.h"

// Operands of the integer tests and the comparison of what comes out.

/// 0, 1, powers of two and their neighbours, all-ones limbs and limbs that are zero below or
/// between others, of up to `limbs` limbs.
std::vector<BigNumber> edgeNumbers(std::uint32_t limbs);

/// A number of 1 to `limbs` limbs, each of them random, all ones or zero; now and then an edge.
BigNumber randomNumber(std::uint32_t limbs);

/// The number, or its negative for a set lowest bit of `signs`.
BigNumber withSign(const BigNumber& magnitude, unsigned signs);

/// The same value under a length of so many zero limbs more.
core::CoreInteger withZeroTop(core::CoreInteger value, std::uint32_t zeroLimbs);

/// An integer laid out limb by limb, normal or not.
core::CoreInteger rawInteger(const std::vector<std::uint64_t>& limbs);

/// A result before its operation: some old value, and a capacity for the whole room.
core::CoreInteger usedResult();

/// Whether all of `value` is as it must be for a normal integer of value `expected`: word, limbs
/// and zero limbs above.
testing::AssertionResult isNormalValue(const core::CoreInteger& value, const BigNumber& expected);

/// Whether two integers agree in word, capacity and all limbs.
bool isSame(const core::CoreInteger& a, const core::CoreInteger& b);
