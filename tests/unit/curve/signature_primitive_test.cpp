#include "curve/signature_primitive.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/montgomery.h"
#include "tests/support/curve_keys.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"

namespace {

using CurveSign = LeakCheckedTest;
using CurveVerify = LeakCheckedTest;

constexpr std::size_t drawSize = 24;
constexpr std::size_t attemptLimit = 32;

/// The number that both directions take a digest for.
BigNumber digestNumber(const Bytes& digest) {
    return BigNumber::fromBytes(digest);
}

/// Signs with these nonces to be drawn one after the other.
SignatureNumbers signDrawing(const KeyRecords& key, const Bytes& data,
                             const std::vector<BigNumber>& nonces) {
    for (const BigNumber& nonce : nonces) {
        testHostPlayRandom(nonceDraw(nonce));
    }
    const SignatureNumbers signature = signWith(key, data);
    EXPECT_EQ(testHostRandomLeft(), 0U) << "not every nonce was drawn";
    return signature;
}

SignatureNumbers bothZero() {
    return {.r = "0", .s = "0"};
}

TEST_F(CurveSign, GivesTheSignatureOfTheDrawnNonce) {
    for (int i = 0; i < 200; ++i) {
        const ProjectKey key = randomProjectKey();
        const BigNumber nonce = CurveJudge().randomScalar();
        const Bytes data = randomBytes(randomBelow(300));
        EXPECT_EQ(signDrawing(KeyRecords(key), data, {nonce}),
                  signWithNonce(key, nonce.toHexadecimal(), data));
    }
}

TEST_F(CurveSign, WorksForTheEdgesOfNonceAndScalar) {
    const BigNumber n = curveOrder();
    const ProjectKey base = randomProjectKey();
    const std::vector<BigNumber> edges = {
        1, 2, 3, n - 1, n - 2, BigNumber::powerOfTwo(64), BigNumber::powerOfTwo(162), n >> 1};
    for (const BigNumber& scalar : edges) {
        const ProjectKey key = keyWithScalar(scalar.toHexadecimal(), base.baseX, base.baseY);
        for (const BigNumber& nonce : edges) {
            const Bytes data = randomBytes(10);
            const SignatureNumbers signature = signDrawing(KeyRecords(key), data, {nonce});
            EXPECT_EQ(signature, signWithNonce(key, nonce.toHexadecimal(), data));
            EXPECT_TRUE(verifiesWith(KeyRecords(key), data, signature)) << scalar << " " << nonce;
        }
    }
}

TEST_F(CurveSign, DrawsAgainForANonceOfZeroOrNotBelowTheOrder) {
    const ProjectKey key = randomProjectKey();
    const Bytes data = randomBytes(10);
    const BigNumber n = curveOrder();
    const BigNumber nonce = CurveJudge().randomScalar();
    const BigNumber largest = BigNumber::powerOfTwo(163) - 1;
    EXPECT_EQ(signDrawing(KeyRecords(key), data, {0, n, n + 1, largest, 0, nonce}),
              signWithNonce(key, nonce.toHexadecimal(), data));
}

TEST_F(CurveSign, TakesTheDigestAsALittleEndianNumber) {
    const ProjectKey key = randomProjectKey();
    const BigNumber n = curveOrder();
    for (const Bytes& digest :
         {Bytes(digestSize, 0x00), Bytes(digestSize, 0xFF), BigNumber(1).toBytes(digestSize),
          BigNumber::powerOfTwo(159).toBytes(digestSize), randomBytes(digestSize)}) {
        const BigNumber nonce = CurveJudge().randomScalar();
        testHostPlayRandom(nonceDraw(nonce));
        const SignatureNumbers signature = signDigestWith(KeyRecords(key), digest);
        // s * k = e + d * r.
        const BigNumber d = BigNumber::fromHexadecimal(key.scalar);
        const BigNumber r = BigNumber::fromHexadecimal(signature.r);
        const BigNumber s = BigNumber::fromHexadecimal(signature.s);
        EXPECT_EQ(s * nonce % n, (digestNumber(digest) + d * r) % n);
        EXPECT_TRUE(verifiesDigestWith(KeyRecords(key), digest, signature));
        EXPECT_TRUE(judgeAcceptsDigest(key, digest, signature));
    }
}

TEST_F(CurveSign, TakesTheScalarModuloTheOrder) {
    ProjectKey key = randomProjectKey();
    const Bytes data = randomBytes(10);
    const BigNumber nonce = CurveJudge().randomScalar();
    const SignatureNumbers expected = signWithNonce(key, nonce.toHexadecimal(), data);
    key.scalar = (BigNumber::fromHexadecimal(key.scalar) + curveOrder()).toHexadecimal();
    EXPECT_EQ(signDrawing(KeyRecords(key), data, {nonce}), expected);
}

TEST_F(CurveSign, DrawsAgainForAnRThatReducesToZero) {
    // A base point whose x is n as a number; its multiple by the nonce 1 is itself.
    const AffinePoint base{.x = curveOrder(), .y = randomPolynomial(163)};
    const KeyRecords key(base, 7);
    const SignatureNumbers signature = signDrawing(key, randomBytes(10), {1, 1, 2});

    const FieldJudge judge(curvePolynomial());
    const BigNumber slope = polynomialSum(judge.divide(base.y, base.x), base.x);
    const BigNumber doubledX =
        polynomialSum(polynomialSum(judge.square(slope), slope), BigNumber(1));
    EXPECT_EQ(signature.r, (doubledX % curveOrder()).toHexadecimal());
    EXPECT_NE(signature.s, "0");
}

TEST_F(CurveSign, DrawsAgainForAnSOfZero) {
    const Bytes data = randomBytes(10);
    const BigNumber first = CurveJudge().randomScalar();
    const BigNumber second = CurveJudge().randomScalar();
    const ArrangedKey arranged = arrangeSignature(data, first.toHexadecimal(), 21, "0");
    const SignatureNumbers passedOver = signWithNonce(arranged.key, first.toHexadecimal(), data);
    ASSERT_EQ(passedOver.s, "0");
    const SignatureNumbers signature =
        signDrawing(KeyRecords(arranged.key), data, {first, first, second});
    EXPECT_EQ(signature, signWithNonce(arranged.key, second.toHexadecimal(), data));
    EXPECT_NE(signature.r, passedOver.r);
}

TEST_F(CurveSign, GivesUpWithTwoZerosWhenEverySIsZero) {
    // Every multiple of these points has an x of 1, and e + d * 1 = n.
    const Bytes digest = randomBytes(digestSize);
    for (const BigNumber& y : {BigNumber(0), BigNumber(1)}) {
        const KeyRecords key({.x = 1, .y = y}, curveOrder() - digestNumber(digest));
        testHostPlayRandom(Bytes(drawSize * attemptLimit, 0x10));
        testHostPlayRandom({0xEE});
        EXPECT_EQ(signDigestWith(key, digest), bothZero());
        EXPECT_EQ(testHostRandomLeft(), 1U) << "attempts counted in nonces";
        testHostPlayRandom(randomBytes(drawSize - 1));
        signDigestWith(KeyRecords(randomProjectKey()), digest);
    }
}

TEST_F(CurveSign, GivesUpWithTwoZerosWhenEveryRIsZero) {
    const KeyRecords key({.x = curveOrder(), .y = 5}, 7);
    const std::vector<BigNumber> ones(attemptLimit, 1);
    EXPECT_EQ(signDrawing(key, randomBytes(10), ones), bothZero());
}

TEST_F(CurveSign, SucceedsAtTheLastAttempt) {
    const Bytes data = randomBytes(10);
    const BigNumber zeroing = CurveJudge().randomScalar();
    const BigNumber last = CurveJudge().randomScalar();
    const ArrangedKey arranged = arrangeSignature(data, zeroing.toHexadecimal(), 21, "0");
    std::vector<BigNumber> nonces(attemptLimit - 1, zeroing);
    nonces.push_back(last);
    EXPECT_EQ(signDrawing(KeyRecords(arranged.key), data, nonces),
              signWithNonce(arranged.key, last.toHexadecimal(), data));
}

TEST_F(CurveSign, CountsNoDrawThatIsNoNonceAsAnAttempt) {
    const ProjectKey key = randomProjectKey();
    const Bytes data = randomBytes(10);
    std::vector<BigNumber> nonces(attemptLimit * 3, 0);
    nonces.emplace_back(77);
    EXPECT_EQ(signDrawing(KeyRecords(key), data, nonces), signWithNonce(key, "4D", data));
}

TEST_F(CurveSign, OverwritesWhatThePairHeld) {
    const ProjectKey key = randomProjectKey();
    const KeyRecords records(key);
    const Bytes data = randomBytes(10);
    core::CoreInteger r = (BigNumber::powerOfTwo(192) - 1).toInteger(3);
    core::CoreInteger s = r;
    testHostPlayRandom(nonceDraw(77));
    core::curveSign(records.domain(), records.scalar(), data.data(), data.size(), {.r = r, .s = s});
    const SignatureNumbers expected = signWithNonce(key, "4D", data);
    EXPECT_EQ(BigNumber::fromInteger(r).toHexadecimal(), expected.r);
    EXPECT_EQ(BigNumber::fromInteger(s).toHexadecimal(), expected.s);
}

TEST_F(CurveSign, ReadsNeitherCoefficientBNorTheCofactor) {
    const ProjectKey key = randomProjectKey();
    const KeyRecords records(key);
    const Bytes data = randomBytes(10);
    const core::FieldElement unread = usedElement();
    const core::CurveDomain whole = records.domain();
    const core::CurveDomain domain{.degree = whole.degree,
                                   .reductionPolynomial = whole.reductionPolynomial,
                                   .coefficientA = whole.coefficientA,
                                   .coefficientB = unread,
                                   .basePoint = whole.basePoint,
                                   .order = whole.order,
                                   .cofactor = unread};
    core::CoreInteger r = signatureHalf();
    core::CoreInteger s = signatureHalf();
    testHostPlayRandom(nonceDraw(77));
    core::curveSign(domain, records.scalar(), data.data(), data.size(), {.r = r, .s = s});
    EXPECT_EQ(BigNumber::fromInteger(s).toHexadecimal(), signWithNonce(key, "4D", data).s);
    EXPECT_EQ(core::curveVerify(domain, records.publicPoint(), data.data(), data.size(),
                                {.r = r, .s = s}),
              1);
}

TEST_F(CurveSign, LeavesNoMontgomeryContext) {
    const KeyRecords key(randomProjectKey());
    signWith(key, randomBytes(10));
    EXPECT_EQ(core::montgomeryContext.montgomeryRadix, nullptr);
    EXPECT_EQ(core::montgomeryContext.montgomeryFactor, nullptr);
}

TEST_F(CurveVerify, AcceptsAnXBetweenTheOrderAndTheFieldsSize) {
    // x(R) = n + r for an r of at most two limbs: the reduction makes it a normal number.
    const CurveJudge judge;
    std::optional<AffinePoint> base;
    while (!base.has_value() || !judge.multiply(curveOrder(), *base).infinity) {
        base = judge.pointWithX(curveOrder() + randomPolynomial(120) + 1);
    }
    const ProjectKey key = keyWithScalar(CurveJudge().randomScalar().toHexadecimal(),
                                         base->x.toHexadecimal(), base->y.toHexadecimal());
    const Bytes data = randomBytes(10);
    const SignatureNumbers signature = signDrawing(KeyRecords(key), data, {1});
    EXPECT_EQ(signature.r, (base->x - curveOrder()).toHexadecimal());
    EXPECT_TRUE(judgeAccepts(key, data, signature));
    EXPECT_TRUE(verifiesWith(KeyRecords(key), data, signature));
}

TEST_F(CurveVerify, AcceptsAShortSOfAnyLength) {
    for (const std::size_t bytes : {1U, 7U, 8U, 9U, 16U}) {
        const Bytes data = randomBytes(10);
        const BigNumber nonce = CurveJudge().randomScalar();
        const std::string s = randomNumber(bytes);
        const ArrangedKey arranged = arrangeSignature(data, nonce.toHexadecimal(), 21, s);
        const KeyRecords key(arranged.key);
        EXPECT_EQ(signDrawing(key, data, {nonce}), arranged.signature);
        core::CoreInteger r = BigNumber::fromHexadecimal(arranged.signature.r).toInteger(3);
        core::CoreInteger value = BigNumber::fromHexadecimal(s).toInteger(3);
        // Zero limbs at the top may count into the length.
        for (std::uint32_t length = value.lengthAndSign; length <= 3; ++length) {
            value.lengthAndSign = length;
            EXPECT_EQ(core::curveVerify(key.domain(), key.publicPoint(), data.data(), data.size(),
                                        {.r = r, .s = value}),
                      1)
                << bytes << " bytes in " << length << " limbs";
        }
    }
}

TEST_F(CurveVerify, LeavesThePairAndNoMontgomeryContext) {
    const KeyRecords key(randomProjectKey());
    const Bytes data = randomBytes(10);
    const SignatureNumbers signature = signWith(key, data);
    core::CoreInteger r = BigNumber::fromHexadecimal(signature.r).toInteger(3);
    core::CoreInteger s = BigNumber::fromHexadecimal(signature.s).toInteger(3);
    EXPECT_EQ(core::curveVerify(key.domain(), key.publicPoint(), data.data(), data.size(),
                                {.r = r, .s = s}),
              1);
    EXPECT_EQ(BigNumber::fromInteger(r).toHexadecimal(), signature.r);
    EXPECT_EQ(BigNumber::fromInteger(s).toHexadecimal(), signature.s);
    EXPECT_EQ(core::montgomeryContext.montgomeryRadix, nullptr);
    EXPECT_EQ(core::montgomeryContext.montgomeryFactor, nullptr);
}

}  // namespace
