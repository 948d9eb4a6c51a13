#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "core/integer.h"
#include "core/montgomery.h"
#include "curve/field.h"
#include "curve/point.h"
#include "curve/sect163r2.h"
#include "curve/signature_primitive.h"
#include "tests/support/curve_keys.h"
#include "tests/support/hexadecimal.h"
#include "tests/support/leak_check.h"
#include "tests/support/vector_file.h"

namespace {

using PublishedVectors = LeakCheckedTest;

constexpr const char* keyPairs = "fips186-2_KeyPair_B-163.rsp";
constexpr const char* publicKeys = "fips186-2_PKV_B-163.rsp";
constexpr const char* signatures = "fips186-3_SigGen_B-163_SHA-1.txt";
constexpr const char* verdicts = "fips186-2_SigVer_B-163.rsp";
constexpr const char* deterministic = "rfc6979_B-163.txt";

Bytes hashOf(const std::string& name, const Bytes& message) {
    Bytes digest(EVP_MAX_MD_SIZE);
    unsigned size = 0;
    std::string algorithm = name;
    algorithm.erase(std::remove(algorithm.begin(), algorithm.end(), '-'), algorithm.end());
    if (EVP_Digest(message.data(), message.size(), digest.data(), &size,
                   EVP_get_digestbyname(algorithm.c_str()), nullptr) != 1) {
        throw std::runtime_error("no hash " + name);
    }
    digest.resize(size);
    return digest;
}

/// A SHA-1 digest in the order in which the core reads one.
Bytes sha1ForCore(const Bytes& message) {
    Bytes digest = hashOf("SHA-1", message);
    std::reverse(digest.begin(), digest.end());
    return digest;
}

BigNumber numberAt(const VectorCase& vector, const std::string& name) {
    return BigNumber::fromHexadecimal(vector.at(name));
}

AffinePoint publicPointOf(const VectorCase& vector) {
    return {.x = numberAt(vector, "Qx"), .y = numberAt(vector, "Qy")};
}

/// The published base point with a scalar.
KeyRecords keyOf(const BigNumber& scalar) {
    return {CurveJudge().basePoint(), scalar};
}

/// y^2 + xy = x^3 + a*x^2 + b, by the core's field operations.
bool isOnCurve(const AffinePoint& point) {
    const core::CurveDomain& domain = core::sect163r2.domain;
    const core::FieldElement x = elementFrom(point.x);
    const core::FieldElement y = elementFrom(point.y);
    const auto product = [&](const core::FieldElement& a, const core::FieldElement& b) {
        core::FieldElement out = usedElement();
        core::fieldMultiply(a, b, out);
        core::fieldReduce(out, domain.reductionPolynomial);
        return out;
    };
    core::FieldElement left = product(y, y);
    core::fieldAddTo(left, product(x, y));
    core::FieldElement right = x;
    core::fieldAddTo(right, domain.coefficientA);
    right = product(product(x, x), right);
    core::fieldAddTo(right, domain.coefficientB);
    return core::fieldCompare(left, right) == 0;
}

TEST_F(PublishedVectors, KeyPairsMultiplyTheBasePoint) {
    for (const VectorCase& vector : readVectorFile(keyPairs)) {
        EXPECT_EQ(multiple(numberAt(vector, "d"), CurveJudge().basePoint()), publicPointOf(vector));
    }
}

TEST_F(PublishedVectors, PublicKeysAreJudgedByEquationAndOrder) {
    for (const VectorCase& vector : readVectorFile(publicKeys)) {
        const AffinePoint point = publicPointOf(vector);
        const bool onCurve = isOnCurve(point);
        EXPECT_EQ(onCurve, CurveJudge().isOnCurve(point));
        const bool ofOrder = multiple(curveOrder(), point).infinity;
        EXPECT_EQ(onCurve && ofOrder, vector.at("Result")[0] == 'P') << vector.at("Result");
    }
}

TEST_F(PublishedVectors, SignaturesComeOutOfTheGivenNonces) {
    for (const VectorCase& vector : readVectorFile(signatures)) {
        const Bytes digest = sha1ForCore(bytesFromHexadecimal(vector.at("Msg")));
        const BigNumber d = numberAt(vector, "d");
        EXPECT_EQ(multiple(d, CurveJudge().basePoint()), publicPointOf(vector));
        testHostPlayRandom(nonceDraw(numberAt(vector, "k")));
        const SignatureNumbers signature = signDigestWith(keyOf(d), digest);
        EXPECT_EQ(signature.r, numberAt(vector, "R").toHexadecimal());
        EXPECT_EQ(signature.s, numberAt(vector, "S").toHexadecimal());
    }
}

TEST_F(PublishedVectors, SignaturesHaveTheGivenVerdicts) {
    std::vector<VectorCase> cases = readVectorFile(verdicts);
    for (VectorCase& signature : readVectorFile(signatures)) {
        signature["Result"] = "P";
        cases.push_back(signature);
    }
    for (const VectorCase& vector : cases) {
        const Bytes digest = sha1ForCore(bytesFromHexadecimal(vector.at("Msg")));
        core::CoreInteger r = numberAt(vector, "R").toInteger(3);
        core::CoreInteger s = numberAt(vector, "S").toInteger(3);
        EXPECT_EQ(
            core::curveVerifyDigest(core::sect163r2.domain, PointRecord(publicPointOf(vector)),
                                    digest.data(), {.r = r, .s = s}),
            vector.at("Result")[0] == 'P' ? 1 : 0)
            << vector.at("Result");
    }
}

/// The keys and cases of RFC 6979: the first case of the file is the key pair.
struct DeterministicCases {
    BigNumber d;
    AffinePoint publicPoint;
    std::vector<VectorCase> cases;
};

DeterministicCases deterministicCases() {
    std::vector<VectorCase> cases = readVectorFile(deterministic);
    const VectorCase key = cases.front();
    cases.erase(cases.begin());
    return {.d = numberAt(key, "x"),
            .publicPoint = {.x = numberAt(key, "Ux"), .y = numberAt(key, "Uy")},
            .cases = std::move(cases)};
}

Bytes messageOf(const VectorCase& vector) {
    const std::string& text = vector.at("Msg");
    return {text.begin(), text.end()};
}

TEST_F(PublishedVectors, DeterministicSignaturesOfSha1ComeOutOfTheirNonces) {
    const DeterministicCases given = deterministicCases();
    int signatureCount = 0;
    for (const VectorCase& vector : given.cases) {
        if (vector.at("Hash") != "SHA-1") {
            continue;
        }
        ++signatureCount;
        const Bytes digest = sha1ForCore(messageOf(vector));
        testHostPlayRandom(nonceDraw(numberAt(vector, "k")));
        const SignatureNumbers signature = signDigestWith(keyOf(given.d), digest);
        EXPECT_EQ(signature.r, numberAt(vector, "r").toHexadecimal());
        EXPECT_EQ(signature.s, numberAt(vector, "s").toHexadecimal());
        core::CoreInteger r = numberAt(vector, "r").toInteger(3);
        core::CoreInteger s = numberAt(vector, "s").toInteger(3);
        EXPECT_EQ(core::curveVerifyDigest(core::sect163r2.domain, PointRecord(given.publicPoint),
                                          digest.data(), {.r = r, .s = s}),
                  1);
    }
    EXPECT_EQ(signatureCount, 2);
}

/// ECDSA put together from the core's points and integers, for digests of any length.
class SteppedEcdsa {
public:
    SteppedEcdsa() { core::montgomerySetup(order_); }
    ~SteppedEcdsa() { core::montgomeryTeardown(); }
    SteppedEcdsa(const SteppedEcdsa&) = delete;
    SteppedEcdsa& operator=(const SteppedEcdsa&) = delete;

    BigNumber r(const BigNumber& k) const {
        const core::CurveDomain& domain = core::sect163r2.domain;
        PointRecord R(pointAtInfinity());
        core::pointMultiply(elementFrom(k), domain.basePoint, core::sect163r2.coefficients, R,
                            domain.reductionPolynomial);
        return reducedX(R);
    }

    BigNumber s(const BigNumber& k, const BigNumber& d, const BigNumber& e,
                const BigNumber& r) const {
        core::CoreInteger sum = empty();
        core::integerAdd(product(d, r), e.toInteger(), sum);
        return BigNumber::fromInteger(product(inverse(k), BigNumber::fromInteger(sum)));
    }

    /// The value that has to be r.
    BigNumber v(const AffinePoint& Q, const BigNumber& e, const BigNumber& r,
                const BigNumber& s) const {
        core::FieldElement u1 = usedElement();
        core::FieldElement u2 = usedElement();
        core::fieldFromInteger(product(e, inverse(s)), u1);
        core::fieldFromInteger(product(r, inverse(s)), u2);
        const core::CurveDomain& domain = core::sect163r2.domain;
        PointRecord R(pointAtInfinity());
        core::pointMultiplyTwin(domain.basePoint, PointRecord(Q), u1, u2, R,
                                core::sect163r2.coefficients, domain.reductionPolynomial);
        return reducedX(R);
    }

private:
    static core::CoreInteger empty() { return BigNumber(0).toInteger(); }

    core::CoreInteger product(const BigNumber& a, const BigNumber& b) const {
        core::CoreInteger result = empty();
        core::modularProduct(a.toInteger(), b.toInteger(), order_, result);
        return result;
    }

    BigNumber inverse(const BigNumber& a) const {
        core::CoreInteger result = empty();
        EXPECT_TRUE(core::integerModularInverse(a.toInteger(), order_, result));
        return BigNumber::fromInteger(result);
    }

    BigNumber reducedX(const core::CurvePoint& R) const {
        core::CoreInteger x = empty();
        core::fieldToInteger(*R.x, x);
        core::integerModulo(x, order_, nullptr);
        return BigNumber::fromInteger(x);
    }

    core::CoreInteger order_ = curveOrder().toInteger();
};

TEST_F(PublishedVectors, DeterministicSignaturesOfAllHashesComeOutStepByStep) {
    // The longer hashes have 163 bits and more, of which ECDSA takes the first 163: no digest of 20
    // bytes, which is what signing and verifying take, can stand for these.
    const DeterministicCases given = deterministicCases();
    EXPECT_EQ(given.cases.size(), 10U);
    EXPECT_EQ(multiple(given.d, CurveJudge().basePoint()), given.publicPoint);
    const SteppedEcdsa ecdsa;
    for (const VectorCase& vector : given.cases) {
        Bytes digest = hashOf(vector.at("Hash"), messageOf(vector));
        const std::uint64_t bits = 8 * digest.size();
        std::reverse(digest.begin(), digest.end());
        const BigNumber e =
            BigNumber::fromBytes(digest) >> (bits > curveDegree ? bits - curveDegree : 0);
        const BigNumber r = ecdsa.r(numberAt(vector, "k"));
        EXPECT_EQ(r, numberAt(vector, "r")) << vector.at("Hash");
        const BigNumber s = ecdsa.s(numberAt(vector, "k"), given.d, e, r);
        EXPECT_EQ(s, numberAt(vector, "s")) << vector.at("Hash");
        EXPECT_EQ(ecdsa.v(given.publicPoint, e, r, s), r) << vector.at("Hash");
    }
}

}  // namespace
