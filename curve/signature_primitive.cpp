#include "curve/signature_primitive.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include "core/hash.h"
#include "core/integer.h"
#include "core/integer_magnitude.h"
#include "core/montgomery.h"
#include "curve/fast/fast_signature.h"
#include "curve/field.h"
#include "curve/point.h"
#include "curve/random_scalar.h"

namespace core {

namespace {

using Digest = std::array<std::uint8_t, ripemd160DigestSize>;

/// An integer with room for the products of two below the order.
IntegerTemporary workingInteger(const CurveDomain& domain) {
    return IntegerTemporary(integerAlloc(16 * domain.degree));
}

/// The group order as an integer.
IntegerTemporary orderOf(const CurveDomain& domain) {
    IntegerTemporary order = workingInteger(domain);
    fieldToInteger(domain.order, *order);
    return order;
}

/// The MontgomeryContext set up on a modulus for the scope's life.
class MontgomeryScope {
public:
    explicit MontgomeryScope(const CoreInteger& modulus) { montgomerySetup(modulus); }
    ~MontgomeryScope() { montgomeryTeardown(); }
    MontgomeryScope(const MontgomeryScope&) = delete;
    MontgomeryScope& operator=(const MontgomeryScope&) = delete;
};

/// Reads the digest as a little-endian number. Its limbs are not trimmed.
void digestToInteger(const CurveDomain& domain, const std::uint8_t* digest, CoreInteger& e) {
    constexpr std::uint64_t digestBits = 8 * ripemd160DigestSize;
    std::memcpy(e.limbs.data(), digest, ripemd160DigestSize);
    e.lengthAndSign =
        static_cast<std::uint32_t>(fieldWords(std::min(domain.degree - 1, digestBits)));
}

bool allLimbsZero(const CoreInteger& value) {
    return std::all_of(value.limbs.begin(), value.limbs.begin() + integerLimbCount(value),
                       [](std::uint64_t limb) { return limb == 0; });
}

/// r := x(R) mod n, as `integerModulo` leaves it: a value below n keeps its zero top limbs.
void reduceX(const CurvePoint& R, const CoreInteger& order, CoreInteger& r) {
    fieldToInteger(*R.x, r);
    integerModulo(r, order, nullptr);
}

/// Signs with one nonce after the other until `attempt` says that neither half is zero.
template <typename Attempt>
void signInAttempts(const CurveDomain& domain, const SignaturePair& pair, const Attempt& attempt) {
    const FieldTemporary k(fieldNew(domain.degree));
    for (int i = 0; i < signatureAttemptLimit; ++i) {
        drawScalar(*k, domain.order);
        if (attempt(*k)) {
            return;
        }
    }
    integerClear(pair.r);
    integerClear(pair.s);
}

}  // namespace

void curveSignDigest(const CurveDomain& domain, const CoreInteger& privateScalar,
                     const std::uint8_t* digest, const SignaturePair& pair) {
    if (const std::optional<FastSigningKey> key = fastSigningKey(domain, privateScalar)) {
        signInAttempts(domain, pair,
                       [&](const FieldElement& k) { return signFast(*key, k, digest, pair); });
        return;
    }
    const IntegerTemporary order = orderOf(domain);
    const MontgomeryScope montgomery(*order);
    PointTemporary R(domain.degree);
    const IntegerTemporary r = workingInteger(domain);
    const IntegerTemporary e = workingInteger(domain);
    const IntegerTemporary nonce = workingInteger(domain);
    const IntegerTemporary inverse = workingInteger(domain);
    const IntegerTemporary product = workingInteger(domain);
    const IntegerTemporary sum = workingInteger(domain);
    digestToInteger(domain, digest, *e);

    signInAttempts(domain, pair, [&](const FieldElement& k) {
        pointMultiply(k, domain.basePoint, {domain.coefficientA, domain.coefficientB}, *R,
                      domain.reductionPolynomial);
        reduceX(*R, *order, *r);
        if (integerIsZero(*r)) {
            return false;
        }
        integerNormalise(*r);
        integerCopy(*r, pair.r);

        fieldToInteger(k, *nonce);
        integerModularInverse(*nonce, *order, *inverse);
        integerClear(*nonce);
        modularProduct(privateScalar, *r, *order, *product);
        integerAdd(*product, *e, *sum);
        modularProduct(*inverse, *sum, *order, pair.s);
        return !integerIsZero(pair.s);
    });
}

PairFault zeroFault(const CoreInteger& r, const CoreInteger& s) {
    if (allLimbsZero(r)) {
        return PairFault::rZero;
    }
    return allLimbsZero(s) ? PairFault::sZero : PairFault::none;
}

PairFault rangeFault(const CoreInteger& r, const CoreInteger& s, const CoreInteger& order) {
    if (integerCompare(r, order) != -1) {
        return PairFault::rRange;
    }
    return integerCompare(s, order) != -1 ? PairFault::sRange : PairFault::none;
}

namespace {

/// R := e / s * G + r / s * Q.
void recompute(const CurveDomain& domain, const CurvePoint& publicPoint, const std::uint8_t* digest,
               const SignaturePair& pair, const CoreInteger& order, CurvePoint& R) {
    const MontgomeryScope montgomery(order);
    const IntegerTemporary e = workingInteger(domain);
    const IntegerTemporary inverse = workingInteger(domain);
    const IntegerTemporary product = workingInteger(domain);
    const FieldTemporary u1(fieldNew(domain.degree));
    const FieldTemporary u2(fieldNew(domain.degree));

    digestToInteger(domain, digest, *e);
    integerModularInverse(pair.s, order, *inverse);
    modularProduct(*e, *inverse, order, *product);
    fieldFromInteger(*product, *u1);
    modularProduct(pair.r, *inverse, order, *product);
    fieldFromInteger(*product, *u2);
    pointMultiplyTwin(domain.basePoint, publicPoint, *u1, *u2, R,
                      {domain.coefficientA, domain.coefficientB}, domain.reductionPolynomial);
}

}  // namespace

std::uint8_t curveVerifyDigest(const CurveDomain& domain, const CurvePoint& publicPoint,
                               const std::uint8_t* digest, const SignaturePair& pair) {
    if (zeroFault(pair.r, pair.s) != PairFault::none) {
        return 0;
    }
    const IntegerTemporary order = orderOf(domain);
    if (rangeFault(pair.r, pair.s, *order) != PairFault::none) {
        return 0;
    }
    PointTemporary R(domain.degree);
    if (!recomputeFast(domain, publicPoint, digest, pair, *R)) {
        recompute(domain, publicPoint, digest, pair, *order, *R);
    }
    if (pointIsInfinity(*R)) {
        return 0;
    }
    const IntegerTemporary v = workingInteger(domain);
    reduceX(*R, *order, *v);
    return integerCompare(*v, pair.r) == 0 ? 1 : 0;
}

void curveSign(const CurveDomain& domain, const CoreInteger& privateScalar,
               const std::uint8_t* data, std::uint64_t length, const SignaturePair& pair) {
    Digest digest;
    ripemd160Digest(data, length, digest.data());
    curveSignDigest(domain, privateScalar, digest.data(), pair);
}

std::uint8_t curveVerify(const CurveDomain& domain, const CurvePoint& publicPoint,
                         const std::uint8_t* data, std::uint64_t length,
                         const SignaturePair& pair) {
    Digest digest;
    ripemd160Digest(data, length, digest.data());
    return curveVerifyDigest(domain, publicPoint, digest.data(), pair);
}

}  // namespace core
