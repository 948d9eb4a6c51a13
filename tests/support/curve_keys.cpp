#include "tests/support/curve_keys.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "curve/point.h"
#include "curve/sect163r2.h"
#include "curve/signature_primitive.h"

namespace {

/// As the program lays out the coordinates of a key.
constexpr std::uint64_t keyCapacity = 112;

constexpr std::uint32_t halfLimbs = 3;
constexpr std::uint32_t scalarLimbs = 5;

AffinePoint pointFromDigits(const std::string& x, const std::string& y) {
    return {.x = BigNumber::fromHexadecimal(x), .y = BigNumber::fromHexadecimal(y)};
}

/// Runs one of the two operations that sign, and takes the numbers out of the pair.
template <typename Signing>
SignatureNumbers signedNumbers(const Signing& sign) {
    core::CoreInteger r = signatureHalf();
    core::CoreInteger s = signatureHalf();
    sign({.r = r, .s = s});
    return {.r = BigNumber::fromInteger(r).toHexadecimal(),
            .s = BigNumber::fromInteger(s).toHexadecimal()};
}

/// Runs one of the two operations that verify on the numbers in a pair.
template <typename Verifying>
bool verdict(const SignatureNumbers& signature, const Verifying& verify) {
    core::CoreInteger r = BigNumber::fromHexadecimal(signature.r).toInteger(halfLimbs);
    core::CoreInteger s = BigNumber::fromHexadecimal(signature.s).toInteger(halfLimbs);
    return verify({.r = r, .s = s}) != 0;
}

}  // namespace

KeyRecords::KeyRecords(const ProjectKey& key)
    : coefficientA_(core::sect163r2.domain.coefficientA),
      basePoint_(pointFromDigits(key.baseX, key.baseY), keyCapacity),
      publicPoint_(pointFromDigits(key.publicX, key.publicY), keyCapacity),
      scalar_(BigNumber::fromHexadecimal(key.scalar).toInteger(scalarLimbs)) {}

KeyRecords::KeyRecords(const AffinePoint& basePoint, const BigNumber& scalar, const BigNumber& a)
    : coefficientA_(elementFrom(a)),
      basePoint_(basePoint, keyCapacity),
      publicPoint_(pointAtInfinity(), keyCapacity),
      scalar_(scalar.toInteger(scalarLimbs)) {}

core::CurveDomain KeyRecords::domain() const {
    const core::CurveDomain& curve = core::sect163r2.domain;
    return {.degree = curve.degree,
            .reductionPolynomial = curve.reductionPolynomial,
            .coefficientA = coefficientA_,
            .coefficientB = curve.coefficientB,
            .basePoint = basePoint_,
            .order = curve.order,
            .cofactor = curve.cofactor};
}

AffinePoint multiple(const BigNumber& k, const AffinePoint& P) {
    PointRecord out(pointAtInfinity());
    core::pointMultiply(elementFrom(k), PointRecord(P), core::sect163r2.coefficients, out,
                        core::sect163r2.domain.reductionPolynomial);
    return affineFrom(out);
}

core::CoreInteger signatureHalf() {
    return {.lengthAndSign = 0, .capacity = halfLimbs, .limbs = {}};
}

SignatureNumbers signWith(const KeyRecords& key, const Bytes& data) {
    return signedNumbers([&](const core::SignaturePair& pair) {
        core::curveSign(key.domain(), key.scalar(), data.data(), data.size(), pair);
    });
}

SignatureNumbers signDigestWith(const KeyRecords& key, const Bytes& digest) {
    return signedNumbers([&](const core::SignaturePair& pair) {
        core::curveSignDigest(key.domain(), key.scalar(), digest.data(), pair);
    });
}

bool verifiesWith(const KeyRecords& key, const Bytes& data, const SignatureNumbers& signature) {
    return verdict(signature, [&](const core::SignaturePair& pair) {
        return core::curveVerify(key.domain(), key.publicPoint(), data.data(), data.size(), pair);
    });
}

bool verifiesDigestWith(const KeyRecords& key, const Bytes& digest,
                        const SignatureNumbers& signature) {
    return verdict(signature, [&](const core::SignaturePair& pair) {
        return core::curveVerifyDigest(key.domain(), key.publicPoint(), digest.data(), pair);
    });
}

Bytes nonceDraw(const BigNumber& nonce) {
    constexpr std::size_t drawSize = 24;
    constexpr std::uint64_t topWord = 160;
    // Drawing shifts the highest 32-bit word right until 3 bits of it are left.
    constexpr std::uint64_t topShift = 29;
    const BigNumber low = nonce % BigNumber::powerOfTwo(topWord);
    return (low + (nonce >> topWord << (topWord + topShift))).toBytes(drawSize);
}

BigNumber curveOrder() {
    return BigNumber::fromHexadecimal(curveOrderDigits);
}
