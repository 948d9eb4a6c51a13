#pragma once

#include <cstdint>

#include "curve/field_163.h"

namespace core {

// Numbers modulo n, the order of sect163r2's base points, in three limbs by value, least
// significant first. Nothing has a branch or an address that depends on an operand.
//
// The Montgomery form of a number a is a * R mod n, with R = 2^192.

/// All ones when a is below n, zero otherwise.
std::uint64_t belowOrder(const Words163& a);

/// a mod n, for an a below 2n.
Words163 reduceOnce(const Words163& a);

/// a + b mod n, for operands below n.
Words163 orderSum(const Words163& a, const Words163& b);

/// a * b / R mod n, for operands below n: with one of them in Montgomery form, their product.
Words163 orderProduct(const Words163& a, const Words163& b);

/// The Montgomery form of a number below n.
Words163 toOrderForm(const Words163& a);

/// The Montgomery form of 1 / a, for an a below n that is not zero; zero for zero.
Words163 orderInverse(const Words163& a);

}  // namespace core
