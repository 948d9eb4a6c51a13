#pragma once

#include <cstdint>

#include "core/core_integer.h"

namespace core {

/// Values of one modulus between `montgomerySetup` and `montgomeryTeardown`; null outside of them.
struct MontgomeryContext {
    CoreInteger* montgomeryRadix = nullptr;   ///< R, a power of 2^64 above the modulus
    CoreInteger* montgomeryFactor = nullptr;  ///< F with modulus * F = -1 modulo R
};

/// The one context of the process, touched without synchronisation.
extern MontgomeryContext montgomeryContext;

/// Fills the context for an odd modulus of n bits: R = 2^(64k) with k = floor(n / 64) + 1.
///
/// An even modulus gives a useless context. A second setup without a teardown between leaks the
/// values of the first.
void montgomerySetup(const CoreInteger& modulus);

/// Releases the values of the context and empties it.
void montgomeryTeardown();

/// result := a * b modulo the modulus of the setup, which is given again; one Montgomery reduction.
///
/// `a` may be any non-negative value and `b` any below R. With t < modulus * b, the reduction's
/// quotient lies below modulus * (b / R + 1), which is 2 * modulus at the most, so that one
/// subtraction ends it. Both operands may have zero top limbs.
void modularProduct(const CoreInteger& a, const CoreInteger& b, const CoreInteger& modulus,
                    CoreInteger& result);

}  // namespace core
