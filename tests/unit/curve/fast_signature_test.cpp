// Signatures and verdicts on both routes, with the same random bytes.

#include "curve/fast/fast_signature.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "core/host.h"
#include "curve/point.h"
#include "curve/signature_primitive.h"
#include "tests/support/curve_keys.h"
#include "tests/support/fast_routes.h"
#include "tests/support/leak_check.h"
#include "tests/support/long_run.h"
#include "tests/support/random_operands.h"
#include "tests/unit/curve/chosen_route.h"

namespace {

/// Random bytes for so many draws of a nonce that one is taken.
Bytes manyDraws() {
    return randomBytes(std::size_t{24} * 100);
}

AffinePoint pointOf(const std::string& x, const std::string& y) {
    return {BigNumber::fromHexadecimal(x), BigNumber::fromHexadecimal(y)};
}

void forgetRandomLeft() {
    Bytes left(testHostRandomLeft());
    core::hostRandomBytes(left.data(), static_cast<std::uint32_t>(left.size()));
}

class FastSignature : public LeakCheckedTest, public testing::WithParamInterface<NamedRoute> {
protected:
    /// The signature by the route of the parameter, or by the defining one.
    static SignatureNumbers fast(const KeyRecords& key, const Bytes& digest) {
        const ChosenRoute chosen(&GetParam().route);
        return signDigestWith(key, digest);
    }
    static SignatureNumbers defining(const KeyRecords& key, const Bytes& digest) {
        const ChosenRoute chosen(nullptr);
        return signDigestWith(key, digest);
    }

    /// Both must be the same of the same random bytes, of which both take as many.
    static void expectSameSignature(const KeyRecords& key, const Bytes& digest,
                                    const Bytes& draws = manyDraws()) {
        testHostPlayRandom(draws);
        const SignatureNumbers expected = defining(key, digest);
        const std::size_t left = testHostRandomLeft();
        forgetRandomLeft();
        testHostPlayRandom(draws);
        EXPECT_EQ(fast(key, digest), expected);
        EXPECT_EQ(testHostRandomLeft(), left);
        forgetRandomLeft();
    }

    static bool verdictOf(const core::FastRoute* route, const KeyRecords& key, const Bytes& digest,
                          const SignatureNumbers& signature) {
        const ChosenRoute chosen(route);
        return verifiesDigestWith(key, digest, signature);
    }

    static void expectVerdict(bool expected, const KeyRecords& key, const Bytes& digest,
                              const SignatureNumbers& signature) {
        EXPECT_EQ(verdictOf(&GetParam().route, key, digest, signature), expected);
        EXPECT_EQ(verdictOf(nullptr, key, digest, signature), expected);
    }
};

TEST_P(FastSignature, IsThatOfTheDefinitionAndAcceptedByTheJudge) {
    int differ = 0;
    for (int i = 0; i < roundsOf(200, 10000); ++i) {
        const ProjectKey key = randomProjectKey();
        const KeyRecords records(key);
        const Bytes digest = randomBytes(digestSize);
        expectSameSignature(records, digest);
        const SignatureNumbers signature = fast(records, digest);
        differ += judgeAcceptsDigest(key, digest, signature) ? 0 : 1;
        expectVerdict(true, records, digest, signature);
        const SignatureNumbers changed = {.r = signature.s, .s = signature.r};
        expectVerdict(judgeAcceptsDigest(key, digest, changed), records, digest, changed);
    }
    EXPECT_EQ(differ, 0);
}

TEST_P(FastSignature, IsThatOfTheDefinitionForEdgeScalarsAndDigests) {
    const ProjectKey key = randomProjectKey();
    const BigNumber n = curveOrder();
    const AffinePoint base = pointOf(key.baseX, key.baseY);
    for (const BigNumber& scalar :
         {BigNumber(0), BigNumber(1), BigNumber(2), BigNumber::powerOfTwo(64),
          BigNumber::powerOfTwo(128) - 1, n - 2, n - 1, n, n + 1, BigNumber::powerOfTwo(163),
          BigNumber::powerOfTwo(192) - 1, BigNumber::powerOfTwo(192), BigNumber::powerOfTwo(300)}) {
        for (const Bytes& digest :
             {Bytes(digestSize, 0), Bytes(digestSize, 0xFF), randomBytes(digestSize)}) {
            expectSameSignature(KeyRecords(base, scalar), digest);
        }
    }
}

TEST_P(FastSignature, IsThatOfTheDefinitionForEdgeNonces) {
    const KeyRecords key(randomProjectKey());
    const BigNumber n = curveOrder();
    std::vector<BigNumber> nonces = {1, 2, 3, 4, n - 3, n - 2, n - 1, n >> 1, (n >> 1) + 1};
    for (std::uint64_t bit = 2; bit < 163; ++bit) {
        nonces.push_back(BigNumber::powerOfTwo(bit));
    }
    for (const BigNumber& nonce : nonces) {
        expectSameSignature(key, randomBytes(digestSize), nonceDraw(nonce));
    }
}

TEST_P(FastSignature, LeavesNothingOfWhatItsHalvesHeld) {
    const KeyRecords key(randomProjectKey());
    core::CoreInteger r = (BigNumber::powerOfTwo(320) - 1).toInteger(5);
    core::CoreInteger s = (BigNumber::powerOfTwo(320) - 1).toInteger(5);
    const ChosenRoute chosen(&GetParam().route);
    core::curveSignDigest(key.domain(), key.scalar(), randomBytes(digestSize).data(), {r, s});
    for (const core::CoreInteger& half : {r, s}) {
        EXPECT_LT(BigNumber::fromInteger(half), curveOrder());
        EXPECT_EQ(half.limbs[3], 0U);
        EXPECT_EQ(half.limbs[4], 0U);
    }
}

TEST_P(FastSignature, PassesOverAZeroS) {
    const Bytes digest = randomBytes(digestSize);
    const BigNumber n = curveOrder();
    const AffinePoint base = CurveJudge().randomPoint();
    const BigNumber nonce = CurveJudge().randomScalar();
    const BigNumber r = CurveJudge().multiply(nonce, base).x % n;
    const KeyRecords key(base, (n - BigNumber::fromBytes(digest)) * r.inverseModulo(n) % n);
    Bytes draws = nonceDraw(nonce);
    const Bytes next = nonceDraw(nonce + 1);
    draws.insert(draws.end(), next.begin(), next.end());
    expectSameSignature(key, digest, draws);
    testHostPlayRandom(draws);
    fast(key, digest);
    EXPECT_EQ(testHostRandomLeft(), 0U) << "the first nonce was taken";
}

TEST_P(FastSignature, HasTheVerdictOfTheDefinitionForRelatedKeys) {
    // The walk meets points of one x, gives up, and the definition decides.
    const BigNumber n = curveOrder();
    const ProjectKey some = randomProjectKey();
    for (const BigNumber& scalar : {BigNumber(1), BigNumber(2), BigNumber(3), n - 1, n - 2, n - 3,
                                    (n + 1) >> 1, n - ((n + 1) >> 1)}) {
        const ProjectKey key = keyWithScalar(scalar.toHexadecimal(), some.baseX, some.baseY);
        const KeyRecords records(key);
        for (int i = 0; i < 10; ++i) {
            const Bytes digest = randomBytes(digestSize);
            expectSameSignature(records, digest);
            SignatureNumbers signature = fast(records, digest);
            expectVerdict(true, records, digest, signature);
            signature.s = polynomialSum(BigNumber::fromHexadecimal(signature.s), 1).toHexadecimal();
            expectVerdict(false, records, digest, signature);
        }
    }
}

/// The value with zero limbs on top, as a scalar that states more bits than it has is read.
core::CoreInteger withLimbs(core::CoreInteger value, std::uint32_t limbs) {
    value.lengthAndSign = limbs;
    return value;
}

TEST_P(FastSignature, IsOfferedForSoundKeysAlone) {
    const ProjectKey sound = randomProjectKey();
    const KeyRecords records(sound);
    const ChosenRoute chosen(&GetParam().route);
    const auto offered = [](const core::CurveDomain& domain, const core::CoreInteger& scalar) {
        return core::fastSigningKey(domain, scalar).has_value();
    };
    EXPECT_TRUE(offered(records.domain(), records.scalar()));
    const BigNumber n = curveOrder();
    const std::vector<std::pair<core::CoreInteger, bool>> scalars = {
        {BigNumber(0).toInteger(5), true},
        {(n - 1).toInteger(5), true},
        {n.toInteger(5), false},
        {BigNumber::powerOfTwo(192).toInteger(5), false},
        {(-BigNumber(1)).toInteger(5), false},
        {withLimbs((n - 1).toInteger(5), 4), true},
        {withLimbs((n - 1).toInteger(5), 5), true},
        {withLimbs((n - 1).toInteger(5), core::integerLimbRoom), true},
        {withLimbs(n.toInteger(5), 4), false},
        {withLimbs(BigNumber::powerOfTwo(192).toInteger(5), 5), false},
        {BigNumber::powerOfTwo(256).toInteger(5), false},
    };
    for (const auto& [scalar, expected] : scalars) {
        EXPECT_EQ(offered(records.domain(), scalar), expected) << BigNumber::fromInteger(scalar);
    }

    const AffinePoint base = pointOf(sound.baseX, sound.baseY);
    EXPECT_TRUE(offered(KeyRecords(base, 7).domain(), records.scalar()));
    EXPECT_FALSE(offered(KeyRecords(base, 7, 0).domain(), records.scalar())) << "a = 0";
    EXPECT_FALSE(offered(KeyRecords(*CurveJudge().pointWithX(0), 7).domain(), records.scalar()));
    const core::CurveDomain domain = records.domain();
    const core::FieldElement otherOrder = elementFrom(n - 2);
    EXPECT_FALSE(offered({domain.degree, domain.reductionPolynomial, domain.coefficientA,
                          domain.coefficientB, domain.basePoint, otherOrder, domain.cofactor},
                         records.scalar()));
    const core::FieldElement otherPolynomial = elementFrom(curvePolynomial() + 2);
    EXPECT_FALSE(offered({domain.degree, otherPolynomial, domain.coefficientA, domain.coefficientB,
                          domain.basePoint, domain.order, domain.cofactor},
                         records.scalar()));
    EXPECT_FALSE(offered({domain.degree - 1, domain.reductionPolynomial, domain.coefficientA,
                          domain.coefficientB, domain.basePoint, domain.order, domain.cofactor},
                         records.scalar()));
}

TEST_P(FastSignature, IsRecomputedForSoundKeysOnItsCurveAlone) {
    const CurveJudge judge;
    const ProjectKey key = randomProjectKey();
    // Of order 2n.
    const auto spoil = [&](std::string& x, std::string& y) {
        const AffinePoint point = pointOf(x, y);
        const AffinePoint spoilt = judge.add(point, *judge.pointWithX(0));
        x = spoilt.x.toHexadecimal();
        y = spoilt.y.toHexadecimal();
    };
    ProjectKey unsoundBase = key;
    spoil(unsoundBase.baseX, unsoundBase.baseY);
    ProjectKey unsoundPublic = key;
    spoil(unsoundPublic.publicX, unsoundPublic.publicY);
    const AffinePoint base = pointOf(key.baseX, key.baseY);

    const KeyRecords sound(key);
    const Bytes digest = randomBytes(digestSize);
    core::CoreInteger r = judge.randomScalar().toInteger(3);
    core::CoreInteger s = judge.randomScalar().toInteger(3);
    const ChosenRoute chosen(&GetParam().route);
    const auto isRecomputed = [&](const KeyRecords& domain, const KeyRecords& publicKey) {
        core::PointTemporary R(curveDegree);
        return core::recomputeFast(domain.domain(), publicKey.publicPoint(), digest.data(), {r, s},
                                   *R);
    };
    EXPECT_TRUE(isRecomputed(sound, sound));
    EXPECT_FALSE(isRecomputed(sound, KeyRecords(unsoundPublic)));
    EXPECT_FALSE(isRecomputed(KeyRecords(unsoundBase), sound));
    EXPECT_FALSE(isRecomputed(KeyRecords(base, 1, 0), sound)) << "a = 0";
}

TEST(FastSignatureOfNoRoute, IsNotOffered) {
    const ChosenRoute chosen(nullptr);
    const KeyRecords records(randomProjectKey());
    EXPECT_FALSE(core::fastSigningKey(records.domain(), records.scalar()).has_value());
}

INSTANTIATE_TEST_SUITE_P(By, FastSignature, testing::ValuesIn(fastRoutes()),
                         routeName<testing::TestParamInfo<NamedRoute>>);

}  // namespace
