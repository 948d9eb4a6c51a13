#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "curve/signature_primitive.h"
#include "tests/support/curve_keys.h"
#include "tests/support/leak_check.h"
#include "tests/support/random_operands.h"

namespace {

constexpr int parts = SIGN_SIGNATURE_PARTS;
constexpr int keysInPart = 25;
constexpr int signaturesOfKey = 100;

/// Signatures of the core and of libcrypto under random keys, in parts that can run side by side.
class Signatures : public LeakCheckedTest, public testing::WithParamInterface<int> {
protected:
    void SetUp() override {
        testRandom().seed(testSeed() + static_cast<std::uint64_t>(GetParam()));
    }
};

Bytes randomData() {
    return randomBytes(randomBelow(200) + 1);
}

std::string withBitChanged(const std::string& number) {
    return polynomialSum(BigNumber::fromHexadecimal(number),
                         BigNumber::powerOfTwo(randomBelow(curveDegree)))
        .toHexadecimal();
}

/// The key of a scalar with one bit changed; both sides need a point on the curve.
ProjectKey withBitChanged(const ProjectKey& key) {
    BigNumber scalar;
    while (scalar.isZero() || scalar >= curveOrder()) {
        scalar = BigNumber::fromHexadecimal(withBitChanged(key.scalar));
    }
    return keyWithScalar(scalar.toHexadecimal(), key.baseX, key.baseY);
}

TEST_P(Signatures, OfTheCoreAreAcceptedByTheJudge) {
    int differ = 0;
    for (int i = 0; i < keysInPart; ++i) {
        const ProjectKey key = randomProjectKey();
        const KeyRecords records(key);
        for (int j = 0; j < signaturesOfKey; ++j) {
            const Bytes data = randomData();
            const SignatureNumbers signature = signWith(records, data);
            differ += judgeAccepts(key, data, signature) ? 0 : 1;
        }
    }
    EXPECT_EQ(differ, 0);
}

TEST_P(Signatures, OfTheJudgeHaveTheSameVerdictFromBoth) {
    int differ = 0;
    int accepted = 0;
    for (int i = 0; i < keysInPart; ++i) {
        const ProjectKey key = randomProjectKey();
        const ProjectKey changedKey = withBitChanged(key);
        const KeyRecords records(key);
        const KeyRecords changedRecords(changedKey);
        for (int j = 0; j < signaturesOfKey; ++j) {
            Bytes data = randomData();
            SignatureNumbers signature = judgeSign(key, data);
            // Every second one stays as it is.
            bool keyChanges = false;
            switch (j % 8) {
                case 1:
                    data.at(randomBelow(data.size())) ^=
                        static_cast<std::uint8_t>(1U << randomBelow(8));
                    break;
                case 3:
                    signature.r = withBitChanged(signature.r);
                    break;
                case 5:
                    signature.s = withBitChanged(signature.s);
                    break;
                case 7:
                    keyChanges = true;
                    break;
                default:
                    break;
            }
            const bool verdict =
                verifiesWith(keyChanges ? changedRecords : records, data, signature);
            const bool expected = judgeAccepts(keyChanges ? changedKey : key, data, signature);
            differ += verdict == expected ? 0 : 1;
            accepted += verdict ? 1 : 0;
        }
    }
    EXPECT_EQ(differ, 0);
    EXPECT_EQ(accepted, keysInPart * signaturesOfKey / 2);
}

INSTANTIATE_TEST_SUITE_P(Part, Signatures, testing::Range(0, parts),
                         testing::PrintToStringParamName());

}  // namespace
