#pragma once

#include <cstddef>

#include "core/core_integer.h"
#include "curve/curve_domain.h"
#include "tests/support/libcrypto_curve.h"
#include "tests/support/project_key.h"

// A project's key as records of the core, and signatures under it by the core's own routines.

class KeyRecords {
public:
    explicit KeyRecords(const ProjectKey& key);
    /// A base point that need not be sound, on a curve with this coefficient a.
    KeyRecords(const AffinePoint& basePoint, const BigNumber& scalar, const BigNumber& a = 1);

    /// sect163r2 with the key's base point.
    core::CurveDomain domain() const;
    const core::CurvePoint& publicPoint() const { return publicPoint_; }
    const core::CoreInteger& scalar() const { return scalar_; }

private:
    core::FieldElement coefficientA_;
    PointRecord basePoint_;
    PointRecord publicPoint_;
    core::CoreInteger scalar_;
};

/// Bytes of a digest to sign.
inline constexpr std::size_t digestSize = 20;

/// k * P on sect163r2, by `core::pointMultiply`.
AffinePoint multiple(const BigNumber& k, const AffinePoint& P);

/// A zero half with room for n and no more.
core::CoreInteger signatureHalf();

/// `curveSign` and `curveSignDigest`.
SignatureNumbers signWith(const KeyRecords& key, const Bytes& data);
SignatureNumbers signDigestWith(const KeyRecords& key, const Bytes& digest);

/// `curveVerify` and `curveVerifyDigest`, with both halves normal.
bool verifiesWith(const KeyRecords& key, const Bytes& data, const SignatureNumbers& signature);
bool verifiesDigestWith(const KeyRecords& key, const Bytes& digest,
                        const SignatureNumbers& signature);

/// What the random source has to give so that this nonce below 2^163 is drawn.
Bytes nonceDraw(const BigNumber& nonce);

/// The order of the base points.
BigNumber curveOrder();
