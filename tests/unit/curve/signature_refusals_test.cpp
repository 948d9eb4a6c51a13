#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>

#include "core/montgomery.h"
#include "curve/signature_primitive.h"
#include "tests/support/curve_keys.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"
#include "tests/unit/curve/chosen_route.h"

namespace {

/// A key with a digest and its signature.
class VerifyRefuses : public LeakCheckedTest {
protected:
    void SetUp() override {
        key_ = randomProjectKey();
        digest_ = randomBytes(digestSize);
        const SignatureNumbers signature = signDigestWith(KeyRecords(key_), digest_);
        r_ = BigNumber::fromHexadecimal(signature.r);
        s_ = BigNumber::fromHexadecimal(signature.s);
        ASSERT_TRUE(accepts(r_, s_));
    }

    void TearDown() override {
        EXPECT_EQ(core::montgomeryContext.montgomeryRadix, nullptr);
        LeakCheckedTest::TearDown();
    }

    bool accepts(const BigNumber& r, const BigNumber& s) const {
        return verifiesDigestWith(KeyRecords(key_), digest_,
                                  {.r = r.toHexadecimal(), .s = s.toHexadecimal()});
    }

    bool acceptsRecords(core::CoreInteger r, core::CoreInteger s) const {
        const KeyRecords records(key_);
        return core::curveVerifyDigest(records.domain(), records.publicPoint(), digest_.data(),
                                       {.r = r, .s = s}) != 0;
    }

    ProjectKey key_;
    Bytes digest_;
    BigNumber r_;
    BigNumber s_;
};

/// The number with one bit changed.
BigNumber flipped(const BigNumber& value, std::uint64_t bit) {
    return polynomialSum(value, BigNumber::powerOfTwo(bit));
}

/// Zero under a length of so many limbs.
core::CoreInteger zeroOfLength(std::uint32_t limbs) {
    core::CoreInteger zero = signatureHalf();
    zero.lengthAndSign = limbs;
    return zero;
}

TEST_F(VerifyRefuses, EveryBitOfRChanged) {
    for (std::uint64_t bit = 0; bit < 192; ++bit) {
        EXPECT_FALSE(accepts(flipped(r_, bit), s_)) << bit;
    }
}

TEST_F(VerifyRefuses, EveryBitOfSChanged) {
    for (std::uint64_t bit = 0; bit < 192; ++bit) {
        EXPECT_FALSE(accepts(r_, flipped(s_, bit))) << bit;
    }
}

TEST_F(VerifyRefuses, EveryBitOfTheDigestChanged) {
    for (std::size_t bit = 0; bit < 8 * digestSize; ++bit) {
        digest_[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
        EXPECT_FALSE(accepts(r_, s_)) << bit;
        digest_[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
    }
    EXPECT_TRUE(accepts(r_, s_));
}

TEST_F(VerifyRefuses, AnotherKeysSignature) {
    const ProjectKey other = randomProjectKey();
    EXPECT_FALSE(verifiesDigestWith(KeyRecords(other), digest_,
                                    {.r = r_.toHexadecimal(), .s = s_.toHexadecimal()}));
    // The same public point under another base point.
    ProjectKey mixed = key_;
    mixed.baseX = other.baseX;
    mixed.baseY = other.baseY;
    EXPECT_FALSE(verifiesDigestWith(KeyRecords(mixed), digest_,
                                    {.r = r_.toHexadecimal(), .s = s_.toHexadecimal()}));
}

TEST_F(VerifyRefuses, AnSOfTheOrderOrAbove) {
    const BigNumber n = curveOrder();
    // Of s + n the inverse is the same, so that nothing later would refuse it.
    EXPECT_FALSE(accepts(r_, s_ + n));
    EXPECT_FALSE(accepts(r_, n));
    EXPECT_FALSE(accepts(r_, n + 1));
    EXPECT_FALSE(accepts(r_, BigNumber::powerOfTwo(192) - 1));
}

TEST_F(VerifyRefuses, AnROfTheOrderOrAbove) {
    const BigNumber n = curveOrder();
    EXPECT_FALSE(accepts(r_ + n, s_));
    EXPECT_FALSE(accepts(n, s_));
    EXPECT_FALSE(accepts(n + 1, s_));
    EXPECT_FALSE(accepts(BigNumber::powerOfTwo(192) - 1, s_));
}

TEST_F(VerifyRefuses, AnROrSOutOfRangeBeforeThePoints) {
    const ChosenRoute defining(nullptr);
    const auto allocationsOf = [&](const BigNumber& r, const BigNumber& s) {
        const std::uint64_t before = testHostAllocations();
        EXPECT_EQ(accepts(r, s), r == r_ && s == s_);
        return testHostAllocations() - before;
    };
    const std::uint64_t whole = allocationsOf(r_, s_);
    EXPECT_LT(allocationsOf(curveOrder(), s_), whole / 4);
    EXPECT_LT(allocationsOf(r_, curveOrder()), whole / 4);
}

TEST_F(VerifyRefuses, AnROrSOfZeroAtOnce) {
    const core::CoreInteger r = r_.toInteger(3);
    const core::CoreInteger s = s_.toInteger(3);
    for (std::uint32_t limbs = 0; limbs <= 3; ++limbs) {
        const std::uint64_t before = testHostAllocations();
        const core::CoreInteger zero = zeroOfLength(limbs);
        EXPECT_FALSE(acceptsRecords(zero, s)) << limbs;
        EXPECT_FALSE(acceptsRecords(r, zero)) << limbs;
        EXPECT_FALSE(acceptsRecords(zero, zero)) << limbs;
        EXPECT_EQ(testHostAllocations(), before) << "no arithmetic before the answer";
    }
}

TEST_F(VerifyRefuses, AZeroRThatTheEquationWouldBearOut) {
    // With e = 0 and r = 0, both multiples vanish.
    digest_ = Bytes(digestSize, 0);
    EXPECT_FALSE(accepts(0, s_));
    EXPECT_FALSE(accepts(0, 1));
    EXPECT_FALSE(accepts(1, 0));
}

TEST_F(VerifyRefuses, ALengthAboveThatOfTheOrder) {
    core::CoreInteger r = r_.toInteger(4);
    core::CoreInteger s = s_.toInteger(4);
    ASSERT_TRUE(acceptsRecords(r, s));
    r.lengthAndSign = 4;
    EXPECT_FALSE(acceptsRecords(r, s));
    s.lengthAndSign = 4;
    EXPECT_FALSE(acceptsRecords(r, s));
    r.lengthAndSign = 3;
    EXPECT_FALSE(acceptsRecords(r, s));
}

TEST_F(VerifyRefuses, ASumOfInfinity) {
    // r = -e / d makes u1 * G + u2 * d * G vanish whatever s is.
    const BigNumber n = curveOrder();
    const BigNumber d = BigNumber::fromHexadecimal(key_.scalar);
    const BigNumber e = BigNumber::fromBytes(digest_);
    const BigNumber r = (n - e) * d.inverseModulo(n) % n;
    for (const BigNumber& s : {BigNumber(1), s_, n - 1}) {
        EXPECT_FALSE(accepts(r, s));
    }
}

TEST_F(VerifyRefuses, AnXBelowTwoLimbsUnlessRHasTheLengthOfTheField) {
    // The recomputed value keeps three limbs, zero ones at the top included; r as it is signed has
    // fewer, and lengths are compared too.
    for (const std::size_t bytes : {7U, 8U, 12U, 16U}) {
        const Bytes data = randomBytes(10);
        const BigNumber nonce = CurveJudge().randomScalar();
        const ArrangedKey arranged =
            arrangeSignature(data, nonce.toHexadecimal(), bytes, randomNumber(20));
        const KeyRecords key(arranged.key);
        testHostPlayRandom(nonceDraw(nonce));
        const SignatureNumbers signature = signWith(key, data);
        EXPECT_EQ(signature, arranged.signature);
        EXPECT_TRUE(judgeAccepts(arranged.key, data, signature));
        EXPECT_FALSE(verifiesWith(key, data, signature)) << bytes;

        core::CoreInteger r = BigNumber::fromHexadecimal(signature.r).toInteger(3);
        core::CoreInteger s = BigNumber::fromHexadecimal(signature.s).toInteger(3);
        for (std::uint32_t length = r.lengthAndSign; length <= 3; ++length) {
            r.lengthAndSign = length;
            EXPECT_EQ(core::curveVerify(key.domain(), key.publicPoint(), data.data(), data.size(),
                                        {.r = r, .s = s}),
                      length == 3 ? 1 : 0)
                << bytes << " bytes in " << length << " limbs";
        }
    }
}

TEST_F(VerifyRefuses, UnderPublicPointsThatAreNotSound) {
    const KeyRecords records(key_);
    core::CoreInteger r = r_.toInteger(3);
    core::CoreInteger s = s_.toInteger(3);
    const BigNumber f = curvePolynomial();
    for (const AffinePoint& point :
         {AffinePoint{.x = 0, .y = 0}, AffinePoint{.x = 0, .y = 1}, AffinePoint{.x = 1, .y = 0},
          AffinePoint{.x = 1, .y = 1}, AffinePoint{.x = f, .y = f},
          AffinePoint{.x = f << 28, .y = randomPolynomial(192)},
          AffinePoint{.x = randomPolynomial(192), .y = randomPolynomial(192)},
          *CurveJudge().pointWithX(0), pointAtInfinity()}) {
        const PointRecord publicPoint(point, 112);
        EXPECT_EQ(core::curveVerifyDigest(records.domain(), publicPoint, digest_.data(),
                                          {.r = r, .s = s}),
                  0)
            << point;
    }
}

TEST_F(VerifyRefuses, AndSigningReturnsUnderBasePointsThatAreNotSound) {
    const BigNumber f = curvePolynomial();
    for (const AffinePoint& base :
         {AffinePoint{.x = 0, .y = 0}, AffinePoint{.x = 0, .y = 1}, AffinePoint{.x = 1, .y = 0},
          AffinePoint{.x = f, .y = f}, AffinePoint{.x = f << 28, .y = randomPolynomial(192)},
          AffinePoint{.x = randomPolynomial(192), .y = randomPolynomial(192)},
          *CurveJudge().pointWithX(0)}) {
        const KeyRecords records(base, 7);
        const SignatureNumbers signature = signDigestWith(records, digest_);
        const BigNumber n = curveOrder();
        EXPECT_LT(BigNumber::fromHexadecimal(signature.r), n) << base;
        EXPECT_LT(BigNumber::fromHexadecimal(signature.s), n) << base;
    }
}

TEST(ZeroFault, NamesTheFirstZeroOfAnyLength) {
    const core::CoreInteger one = BigNumber(1).toInteger(3);
    for (std::uint32_t limbs = 0; limbs <= 3; ++limbs) {
        const core::CoreInteger zero = zeroOfLength(limbs);
        EXPECT_EQ(core::zeroFault(zero, one), core::PairFault::rZero) << limbs;
        EXPECT_EQ(core::zeroFault(one, zero), core::PairFault::sZero) << limbs;
        EXPECT_EQ(core::zeroFault(zero, zero), core::PairFault::rZero) << limbs;
    }
    EXPECT_EQ(core::zeroFault(one, one), core::PairFault::none);
}

TEST(RangeFault, NamesTheFirstNumberThatIsNotBelowTheOrder) {
    const core::CoreInteger order = curveOrder().toInteger(3);
    const core::CoreInteger below = (curveOrder() - BigNumber(1)).toInteger(3);
    const core::CoreInteger above = (curveOrder() + BigNumber(1)).toInteger(3);
    EXPECT_EQ(core::rangeFault(below, below, order), core::PairFault::none);
    for (const core::CoreInteger& large : {order, above}) {
        EXPECT_EQ(core::rangeFault(large, below, order), core::PairFault::rRange);
        EXPECT_EQ(core::rangeFault(below, large, order), core::PairFault::sRange);
        EXPECT_EQ(core::rangeFault(large, large, order), core::PairFault::rRange);
    }
}

}  // namespace
