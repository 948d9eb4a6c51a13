#pragma once

#include <cstdint>
#include <memory>

#include "core/core_integer.h"

namespace core {

// Arithmetic of CoreInteger. Room is the caller's care, for results too: nothing looks at
// `capacity` but integerClear, and nothing may outgrow integerLimbRoom. Where an operation has a
// result of its own, no operand may be that object. Time depends on the values, and none is wiped.

/// A new zero value whose `capacity` is the number of limbs that hold `bits` bits, 16384 at the
/// most; to be given back with `integerRelease`.
CoreInteger* integerAlloc(std::uint64_t bits);

void integerRelease(CoreInteger* value);

struct IntegerReleaser {
    void operator()(CoreInteger* value) const { integerRelease(value); }
};

/// A value of `integerAlloc` held by a scope.
using IntegerTemporary = std::unique_ptr<CoreInteger, IntegerReleaser>;

/// Sets the length word and all `capacity` limbs to zero.
void integerClear(CoreInteger& value);

/// destination := source, sign included; a zero source clears the destination. `capacity` of the
/// destination stays.
void integerCopy(const CoreInteger& source, CoreInteger& destination);

/// Whether the whole word `lengthAndSign` is 0. A value with zero limbs but a length is not zero
/// here.
bool integerIsZero(const CoreInteger& value);

/// -1, 0 or 1 as a is below, equal to or above b.
///
/// Non-negative values are compared by their lengths as they stand, zero top limbs included, and
/// limb by limb only when these agree. Of two negative values only the limbs within a's length are
/// looked at: -5 against -(2^64) gives -1.
std::int64_t integerCompare(const CoreInteger& a, const CoreInteger& b);

/// Position of the highest set bit, counted from 1; 0 for zero. The sign does not count. A zero top
/// limb gives 64 bits for each limb below it.
std::uint64_t integerBitLength(const CoreInteger& value);

/// Bytes up to the highest non-zero one of the top limb; 0 for zero. A zero top limb counts as one
/// byte.
std::uint64_t integerByteLength(const CoreInteger& value);

/// Address of limb 0: the magnitude as a little-endian byte string.
std::uint64_t* integerLimbs(CoreInteger& value);

/// Reads the stored form: a 32-bit bit count, whose top bit is ignored, and the magnitude's bytes,
/// least significant first. A bit count of 0 leaves `value` as it is; otherwise only the length
/// word and the bytes given are written, so `value` must be zero before.
void integerImport(const std::uint8_t* stored, CoreInteger& value);

/// Drops the zero limbs at the top, and the sign with them.
void integerNormalise(CoreInteger& value);

/// result := a + b. The sum of two magnitudes is as long as the longer one, zero top limbs
/// included, or longer by a carry.
void integerAdd(const CoreInteger& a, const CoreInteger& b, CoreInteger& result);

/// result := a - b. The longer magnitude counts as the greater, zero top limbs included; where its
/// value is the smaller, the difference wraps modulo 2^(64 L), L being its length. The difference
/// drops zero top limbs, unless nothing was subtracted.
void integerSubtract(const CoreInteger& a, const CoreInteger& b, CoreInteger& result);

/// result := a * b, schoolbook. Accepts operands with zero top limbs; the result is normal.
void integerMultiply(const CoreInteger& a, const CoreInteger& b, CoreInteger& result);

/// quotient := a / b, truncated, for non-negative values, as `integerCompare` has them: 0 when a is
/// below b, 1 when they are equal, 0 / 0 included; any other division by zero gives 0.
///
/// So a longer b gives 0 whatever its top limbs hold; a longer a is divided by the value. A
/// negative a by a non-negative b gives 0.
void integerDivide(const CoreInteger& a, const CoreInteger& b, CoreInteger& quotient);

/// result := a mod modulus, for a non-negative `a`; a null `result` means `a` itself.
///
/// An `a` above the modulus, but of the same bit length, is itself reduced: afterwards it holds the
/// remainder as `result` does. Any other `a` survives. An `a` below the modulus, by
/// `integerCompare`, is copied as it stands, with its zero top limbs; so is a negative `a`. Any
/// other remainder is normal. A zero modulus leaves `result` as it was.
void integerModulo(CoreInteger& a, const CoreInteger& modulus, CoreInteger* result);

/// value := value * 2^count, in place; zero top limbs fall away. The sign stays.
void integerShiftLeft(CoreInteger& value, std::uint64_t count);

/// value := value / 2^count, truncated, in place. The sign stays. The length follows from
/// `integerBitLength`: one zero top limb falls away, and a second one stays.
void integerShiftRight(CoreInteger& value, std::uint64_t count);

/// Keeps the low `count` bits, in place, and drops the sign.
///
/// Zero stays zero. Any other value gets the length of `count` bits, though it may have had fewer
/// limbs, less one limb when the count is no multiple of 64 and the top limb is zero: 5 truncated
/// to 192 bits has length 3. Such a result may go into additions and multiplications.
void integerTruncate(CoreInteger& value, std::uint64_t count);

/// result := the inverse of a modulo modulus, and true; zero and false when there is none. Zero top
/// limbs of a are ignored.
bool integerModularInverse(const CoreInteger& a, const CoreInteger& modulus, CoreInteger& result);

}  // namespace core
