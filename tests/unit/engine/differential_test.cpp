#include "tests/support/hexadecimal.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"
#include "tests/unit/engine/engine_test.h"

namespace {

constexpr int rounds = 300;

using EngineDifferential = EngineTest;

/// The same number with one bit of its low 160 changed.
std::string withBitChanged(const std::string& digits) {
    Bytes bytes = littleEndianBytes(digits);
    bytes.resize(21);
    bytes[randomBelow(20)] ^= static_cast<std::uint8_t>(1U << randomBelow(8));
    std::reverse(bytes.begin(), bytes.end());
    return hexadecimalFromBytes(bytes.data(), bytes.size());
}

TEST_F(EngineDifferential, SignaturesAreAcceptedByLibcrypto) {
    int differ = 0;
    for (int round = 0; round < rounds; ++round) {
        const ProjectKey key = randomProjectKey();
        const Bytes data = randomBytes(1 + randomBelow(300));
        const std::string text = signedText(project(key), data);
        differ += judgeAccepts(key, data, readSignatureText(text)) ? 0 : 1;
    }
    EXPECT_EQ(differ, 0) << "of " << rounds;
}

TEST_F(EngineDifferential, SignaturesOfLibcryptoAreJudgedAsItJudgesThem) {
    int differ = 0;
    int accepted = 0;
    for (int round = 0; round < rounds; ++round) {
        const ProjectKey key = randomProjectKey();
        Bytes data = randomBytes(1 + randomBelow(300));
        SignatureNumbers numbers = judgeSign(key, data);
        switch (round % 6) {
            case 1:
                data[randomBelow(data.size())] ^= static_cast<std::uint8_t>(1U << randomBelow(8));
                break;
            case 3:
                numbers.r = withBitChanged(numbers.r);
                break;
            case 5:
                numbers.s = withBitChanged(numbers.s);
                break;
            default:
                break;
        }
        const bool verdict = verifies(project(key), data, signatureText(numbers));
        accepted += verdict ? 1 : 0;
        differ += verdict == judgeAccepts(key, data, numbers) ? 0 : 1;
    }
    EXPECT_EQ(differ, 0) << "of " << rounds;
    EXPECT_EQ(accepted, rounds / 2);
}

}  // namespace
