#include "engine/verify.h"

#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"
#include "tests/support/signature_vectors.h"
#include "tests/unit/engine/engine_test.h"

namespace {

using VerifyData = EngineTest;

TEST_F(VerifyData, RefusesNullPointersAndNoData) {
    const ProjectKey key = randomProjectKey();
    const std::string path = project(key);
    const std::string text = signedText(path, someData);
    const auto length = static_cast<std::uint32_t>(someData.size());
    ASSERT_TRUE(verifyData(path.c_str(), someData.data(), length, text.c_str()));
    const std::string ofNothing = signatureText(judgeSign(key, {}));
    EXPECT_FALSE(verifyData(path.c_str(), someData.data(), 0, ofNothing.c_str()));
    EXPECT_FALSE(verifyData(path.c_str(), nullptr, 0, ofNothing.c_str()));
    EXPECT_FALSE(verifyData(path.c_str(), nullptr, length, text.c_str()));
    EXPECT_FALSE(verifyData(nullptr, someData.data(), length, text.c_str()));
    EXPECT_FALSE(verifyData(path.c_str(), someData.data(), length, nullptr));
    EXPECT_FALSE(verifyData(nullptr, nullptr, 0, nullptr));
}

TEST_F(VerifyData, TakesNoRandomBytes) {
    const std::string path = project(randomProjectKey());
    const std::string text = signedText(path, someData);
    const auto before = RandomGenerator::instance().stateBlock;
    EXPECT_TRUE(verifies(path, someData, text));
    EXPECT_EQ(RandomGenerator::instance().stateBlock, before);
}

/// Whether the engine says the same as libcrypto of these numbers, and both say `expected`.
class VerifiedNumbers : public EngineTest {
protected:
    void expectVerdict(const SignatureNumbers& numbers, bool expected) {
        EXPECT_EQ(judgeAccepts(key, someData, numbers), expected);
        EXPECT_EQ(verifies(path, someData, signatureText(numbers, 21)), expected)
            << "r " << numbers.r << " s " << numbers.s;
    }

    const ProjectKey key = randomProjectKey();
    const std::string path = project(key);
    const SignatureNumbers good = judgeSign(key, someData);
    const std::string n = curveOrderDigits;
};

TEST_F(VerifiedNumbers, AreAcceptedAsLibcryptoSignedThem) {
    expectVerdict(good, true);
}

TEST_F(VerifiedNumbers, AreRefusedWhenOneIsZero) {
    expectVerdict({.r = "0", .s = good.s}, false);
    expectVerdict({.r = good.r, .s = "0"}, false);
    expectVerdict({.r = "0", .s = "0"}, false);
}

TEST_F(VerifiedNumbers, AreRefusedFromTheOrderOn) {
    expectVerdict({.r = n, .s = good.s}, false);
    expectVerdict({.r = good.r, .s = n}, false);
    expectVerdict({.r = multiplyAdd("1", n, good.r), .s = good.s}, false);
    expectVerdict({.r = good.r, .s = multiplyAdd("1", n, good.s)}, false);
    expectVerdict({.r = std::string(42, 'F'), .s = good.s}, false);
    expectVerdict({.r = good.r, .s = std::string(42, 'F')}, false);
}

TEST_F(VerifiedNumbers, AreAcceptedWithTheNegativeOfS) {
    // x(-R) = x(R): n - s goes with r as s does.
    expectVerdict({.r = good.r, .s = multiplyAdd("-1", good.s, n)}, true);
}

TEST_F(VerifiedNumbers, AreRefusedWhenExchanged) {
    expectVerdict({.r = good.s, .s = good.r}, false);
}

/// r and s of these byte lengths, in halves of every length that holds them.
struct NumberLengths {
    std::size_t r;
    std::size_t s;
};

class PaddedHalves : public EngineTest, public testing::WithParamInterface<NumberLengths> {};

TEST_P(PaddedHalves, VerifyUpToTwentyOneBytes) {
    for (int round = 0; round < 8; ++round) {
        const ArrangedKey arranged =
            arrangeSignature(someData, randomNumber(20), GetParam().r, randomNumber(GetParam().s));
        const std::string path = project(arranged.key);
        ASSERT_TRUE(judgeAccepts(arranged.key, someData, arranged.signature));
        for (std::size_t half = std::max(GetParam().r, GetParam().s); half <= 24; ++half) {
            EXPECT_EQ(verifies(path, someData, signatureText(arranged.signature, half)), half <= 21)
                << "halves of " << half;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Lengths, PaddedHalves,
                         testing::Values(NumberLengths{21, 21}, NumberLengths{20, 20},
                                         NumberLengths{20, 8}, NumberLengths{20, 1},
                                         NumberLengths{19, 16}, NumberLengths{19, 17},
                                         NumberLengths{18, 18}, NumberLengths{17, 3}),
                         [](const auto& info) {
                             return "R" + std::to_string(info.param.r) + "S" +
                                    std::to_string(info.param.s);
                         });

TEST_F(VerifyData, AcceptsAnSOfOne) {
    const ArrangedKey arranged = arrangeSignature(someData, randomNumber(20), 21, "1");
    EXPECT_TRUE(verifies(project(arranged.key), someData, signatureText(arranged.signature)));
}

TEST_F(VerifyData, RefusesAnRThatNeedsNoThirdLimb) {
    // The one departure from libcrypto: x(R) keeps three limbs, and lengths are compared too.
    for (const std::size_t rBytes : {8U, 15U, 16U}) {
        const GeneratorCase& generator = generatorCases()[rBytes % 8];
        const ArrangedKey arranged =
            arrangeSignature(someData, generator.nonce, rBytes, randomNumber(21));
        const std::string path = project(arranged.key);
        seedNonces(generator.seed);
        const std::string text = signedText(path, someData);
        EXPECT_EQ(text, signatureText(arranged.signature));
        EXPECT_TRUE(judgeAccepts(arranged.key, someData, arranged.signature));
        EXPECT_FALSE(verifies(path, someData, text)) << "r of " << rBytes << " bytes";
    }
}

TEST_F(VerifyData, AcceptsAnRJustAboveTwoLimbs) {
    const ArrangedKey arranged = arrangeSignature(someData, randomNumber(20), 17, randomNumber(21));
    EXPECT_TRUE(verifies(project(arranged.key), someData, signatureText(arranged.signature)));
}

}  // namespace
