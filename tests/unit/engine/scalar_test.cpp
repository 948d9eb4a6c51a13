#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"
#include "tests/support/signature_vectors.h"
#include "tests/unit/engine/engine_test.h"

namespace {

/// Signing with other scalars than those from 1 to n - 1.
class PrivateScalar : public EngineTest {
protected:
    /// The text under the key with this stored scalar, each nonce being a known one.
    void expectSignature(const Bytes& storedScalar, const std::string& value) {
        ProjectKey valued = key;
        valued.scalar = value;
        AttributeValues attributes = keyAttributes(key);
        attributes[74] = storedScalar;
        const std::string path = project(attributes);
        for (const GeneratorCase& generator : generatorCases()) {
            seedNonces(generator.seed);
            EXPECT_EQ(signedText(path, someData),
                      signatureText(signWithNonce(valued, generator.nonce, someData)))
                << "scalar " << value;
        }
    }

    const ProjectKey key = randomProjectKey();
    const std::string n = curveOrderDigits;
};

TEST_F(PrivateScalar, CountsModuloTheOrder) {
    for (const std::size_t multipleBytes : {1U, 3U, 8U, 11U, 19U}) {
        const std::string larger = multiplyAdd(n, randomNumber(multipleBytes), key.scalar);
        expectSignature(integerValue(larger), larger);
        AttributeValues attributes = keyAttributes(key);
        attributes[74] = integerValue(larger);
        const std::string path = project(attributes);
        EXPECT_TRUE(verifies(path, someData, signedText(path, someData)));
    }
}

TEST_F(PrivateScalar, MayHave320Bits) {
    const std::string largest(80, 'F');
    expectSignature(integerValue(largest), largest);
}

TEST_F(PrivateScalar, TakesTheBitsAboveItsLengthAsTheyStand) {
    // 161 bits take 21 bytes; all eight bits of the last count.
    expectSignature(integerValue(161, Bytes(21, 0xFF)), std::string(42, 'F'));
}

TEST_F(PrivateScalar, MayBeOne) {
    expectSignature(integerValue("1"), "1");
}

TEST_F(PrivateScalar, MayHaveZeroLimbsAtItsTop) {
    Bytes magnitude = littleEndianBytes(key.scalar);
    magnitude.resize(40);
    expectSignature(integerValue(320, magnitude), key.scalar);
    expectSignature(integerValue(320, {5}), "5");
}

TEST_F(PrivateScalar, OfValueZeroSignsWhenItHasTwoLimbs) {
    expectSignature(integerValue(65, Bytes(9)), "0");
    expectSignature(integerValue(320, Bytes(40)), "0");
}

TEST_F(PrivateScalar, EqualToTheOrderSignsLikeZero) {
    expectSignature(integerValue(n), "0");
}

TEST_F(PrivateScalar, IgnoresTheTopBitOfItsBitCount) {
    Bytes value = integerValue(key.scalar);
    value[3] |= 0x80;
    expectSignature(value, key.scalar);
}

}  // namespace
