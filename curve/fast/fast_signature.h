#pragma once

#include <cstdint>
#include <optional>

#include "curve/curve_domain.h"
#include "curve/fast/fast_route.h"

namespace core {

// The numbers of signature_primitive.h by the second route, where that is taken. Between the draw
// of a nonce and the finished pair, nothing but the products of the route has a branch or an
// address that depends on the nonce or the scalar, and with carry-less multiplication nothing has.

/// What the second route signs with.
struct FastSigningKey {
    const FastRoute& route;
    Words163 baseX;   ///< x of a sound base point
    Words163 scalar;  ///< below n
};

/// The key of a domain and a scalar. Nothing when there is no second route, the domain is not that
/// of sect163r2, its base point is not sound, or the scalar is not from 0 to n - 1.
std::optional<FastSigningKey> fastSigningKey(const CurveDomain& domain,
                                             const CoreInteger& privateScalar);

/// One attempt at a signature of a digest of 20 bytes, with a nonce k from 1 to n - 1. False when
/// a half is zero; r and s are then as they were. Otherwise both are normal.
bool signFast(const FastSigningKey& key, const FieldElement& k, const std::uint8_t* digest,
              const SignaturePair& pair);

/// R := e / s * G + r / s * Q for r and s from 1 to n - 1, by its x alone; R is new, and of degree
/// 163. False, with R as it was, when the second route cannot be taken or gives up.
bool recomputeFast(const CurveDomain& domain, const CurvePoint& publicPoint,
                   const std::uint8_t* digest, const SignaturePair& pair, CurvePoint& R);

}  // namespace core
