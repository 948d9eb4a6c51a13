#include "curve/fast/fast_signature.h"

#include <algorithm>
#include <cstring>

#include "core/hash.h"
#include "core/integer.h"
#include "core/integer_magnitude.h"
#include "curve/declassify.h"
#include "curve/fast/fast_field.h"
#include "curve/fast/order.h"
#include "curve/field.h"
#include "curve/sect163r2_values.h"

namespace core {

namespace {

/// Whether all that points are computed with is that of sect163r2. Of the curve's coefficients, the
/// group law has a alone.
bool isSect163r2(const CurveDomain& domain) {
    return domain.degree == degree163 && isPolynomial163(domain.reductionPolynomial) &&
           fieldCompare(domain.order, sect163r2Values::order) == 0 &&
           fieldCompare(domain.coefficientA, sect163r2Values::coefficientA) == 0;
}

Words163 wordsOf(const CoreInteger& value) {
    Words163 words{};
    std::copy_n(value.limbs.begin(), std::min<std::size_t>(integerLimbCount(value), words163),
                words.begin());
    return words;
}

Words163 wordsOfDigest(const std::uint8_t* digest) {
    Words163 e{};
    std::memcpy(e.data(), digest, ripemd160DigestSize);
    return e;
}

/// value := words, as a normal integer.
void store(const Words163& words, CoreInteger& value) {
    integerClear(value);
    std::copy(words.begin(), words.end(), value.limbs.begin());
    integerTrim(value, words163);
}

}  // namespace

std::optional<FastSigningKey> fastSigningKey(const CurveDomain& domain,
                                             const CoreInteger& privateScalar) {
    const FastRoute* route = fastRoute();
    if (route == nullptr || !isSect163r2(domain) || !route->isSound(domain.basePoint) ||
        integerIsNegative(privateScalar)) {
        return std::nullopt;
    }
    const Words163 scalar = wordsOf(privateScalar);
    // Of a scalar that states more bits than it has, the limbs on top are zero.
    std::uint64_t excess = ~belowOrder(scalar);
    for (std::size_t i = words163; i < integerLimbCount(privateScalar); ++i) {
        excess |= privateScalar.limbs[i];
    }
    declassify(&excess, sizeof excess);
    if (excess != 0) {
        return std::nullopt;
    }
    return FastSigningKey{.route = *route, .baseX = load163(*domain.basePoint.x), .scalar = scalar};
}

bool signFast(const FastSigningKey& key, const FieldElement& k, const std::uint8_t* digest,
              const SignaturePair& pair) {
    // x is below 2^163, and that is below 2n; so is e below n.
    const Words163 nonce = load163(k);
    const Words163 r = reduceOnce(key.route.multipleX(nonce, key.baseX));
    const Words163 product = orderProduct(toOrderForm(key.scalar), r);
    const Words163 s = orderProduct(orderInverse(nonce), orderSum(product, wordsOfDigest(digest)));
    declassify(&r, sizeof r);
    declassify(&s, sizeof s);
    if (isZero163(r) || isZero163(s)) {
        return false;
    }
    store(r, pair.r);
    store(s, pair.s);
    return true;
}

bool recomputeFast(const CurveDomain& domain, const CurvePoint& publicPoint,
                   const std::uint8_t* digest, const SignaturePair& pair, CurvePoint& R) {
    const FastRoute* route = fastRoute();
    if (route == nullptr || !isSect163r2(domain) || !route->isSound(domain.basePoint) ||
        !route->isSound(publicPoint)) {
        return false;
    }
    const Words163 inverse = orderInverse(wordsOf(pair.s));
    const Words163 u1 = orderProduct(inverse, wordsOfDigest(digest));
    const Words163 u2 = orderProduct(inverse, wordsOf(pair.r));
    Words163 x;
    if (!route->twinMultipleX(load163(domain.basePoint), load163(publicPoint), u1, u2, x)) {
        return false;
    }
    std::copy(x.begin(), x.end(), R.x->words.begin());
    return true;
}

}  // namespace core
