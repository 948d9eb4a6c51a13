#pragma once

#include <cstdint>

#include "core/core_integer.h"
#include "fuzz/input_reader.h"
#include "tests/support/big_number.h"

// Integers out of fuzz inputs, each as the core and as libcrypto holds it.

struct FuzzInteger {
    core::CoreInteger value;
    BigNumber number;
};

/// Two operands of the bytes of an input: of at most `limbs` limbs each, normal or under a length
/// of up to three zero limbs more.
struct FuzzOperands {
    FuzzInteger a;
    FuzzInteger b;

    /// Whether a is below b as `integerCompare` has it: lengths count as they stand.
    bool below() const;

    /// The first byte tells the zero limbs of both and whether a is made a multiple of b, with
    /// something near zero added; the second, how many of the other bytes are a's.
    FuzzOperands(InputReader& input, std::uint32_t limbs);
};

/// A result before its operation: some old value, and a capacity for the whole room.
core::CoreInteger usedInteger();

/// Whether word and limbs are those of the normal integer of this value, zero limbs above included.
bool isNormal(const core::CoreInteger& value, const BigNumber& expected);

/// Whether word, capacity and limbs agree.
bool isUnchanged(const core::CoreInteger& value, const core::CoreInteger& before);
