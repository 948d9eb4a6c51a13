#pragma once

#include <cstddef>
#include <cstdint>

#include "core/core_integer.h"
#include "curve/curve_domain.h"

namespace core {

// ECDSA (ANSI X9.62, FIPS 186-4) with RIPEMD-160 on the domain's curve and base point. It departs
// from the publications in how a digest becomes the number e: its 20 bytes count from the least
// significant one. Public points are used unchecked. The core must have been started, and only one
// operation may run at a time, because of the one MontgomeryContext.

/// Attempts at a signature without a zero half before signing gives up.
inline constexpr int signatureAttemptLimit = 32;

/// Signs `length` bytes: r = x(k * G) mod n and s = (e + d * r) / k mod n with a fresh nonce k.
///
/// r and s need room for n. An attempt that ends in a zero half is followed by another, which with
/// a base point of order n has a chance of about 2^-162: r is never zero then. An unsound base
/// point can make every attempt end so; then r and s are both left zero. It can also make x(k * G)
/// zero: that x is not reduced, so it has limbs and passes, and r is zero.
void curveSign(const CurveDomain& domain, const CoreInteger& privateScalar,
               const std::uint8_t* data, std::uint64_t length, const SignaturePair& pair);

/// Why r and s are no signature, of whatever data and under whatever key: the first reason, in this
/// order.
enum class PairFault : std::uint8_t {
    none,
    rZero,
    sZero,
    rRange,  ///< not below n
    sRange
};

/// The faults of zeros, which need no arithmetic; r and s need not be normal.
PairFault zeroFault(const CoreInteger& r, const CoreInteger& s);

/// The faults behind those, with n as a normal integer. Zero limbs at the top of r or s count.
PairFault rangeFault(const CoreInteger& r, const CoreInteger& s, const CoreInteger& order);

/// Whether r and s are a signature of `length` bytes under the public point; 1 or 0.
///
/// A pair with a fault gives 0. The limb counts of r and of the recomputed value must agree too,
/// and the latter keeps its zero top limbs: with a normal r, a signature whose point has an x below
/// 2^128 gives 0, which meets one signature in 2^35.
std::uint8_t curveVerify(const CurveDomain& domain, const CurvePoint& publicPoint,
                         const std::uint8_t* data, std::uint64_t length, const SignaturePair& pair);

/// `curveSign` of a digest of 20 bytes.
void curveSignDigest(const CurveDomain& domain, const CoreInteger& privateScalar,
                     const std::uint8_t* digest, const SignaturePair& pair);

/// `curveVerify` of a digest of 20 bytes.
std::uint8_t curveVerifyDigest(const CurveDomain& domain, const CurvePoint& publicPoint,
                               const std::uint8_t* digest, const SignaturePair& pair);

}  // namespace core
