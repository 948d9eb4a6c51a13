#include "engine/sign.h"
#include "engine/verify.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"
#include "tests/unit/engine/engine_test.h"

namespace {

/// A key with its attributes, to be damaged, and a signature of `someData` under the sound key.
class KeyRefusals : public EngineTest {
protected:
    void expectOutcome(bool signs, bool verifiesToo) {
        const std::string path = project(attributes);
        EXPECT_EQ(!signedText(path, someData).empty(), signs);
        EXPECT_EQ(!signedDigestText(path, someData).empty(), signs);
        EXPECT_EQ(verifies(path, someData, text), verifiesToo);
        EXPECT_EQ(digestVerifies(path, someData, text), verifiesToo);
    }

    const ProjectKey key = randomProjectKey();
    const std::string text = signatureText(judgeSign(key, someData));
    AttributeValues attributes = keyAttributes(key);
};

TEST_F(KeyRefusals, MeetNoCompleteKey) {
    expectOutcome(true, true);
}

TEST_F(KeyRefusals, MeetNoKeyAmongOtherAttributes) {
    attributes[1] = {1};
    attributes[0xFFFFFFFF] = Bytes(10000, 7);
    expectOutcome(true, true);
}

TEST_F(KeyRefusals, MeetAProjectWithoutKeyAttributes) {
    attributes = {{1, {1}}};
    expectOutcome(false, false);
    attributes = {};
    expectOutcome(false, false);
}

TEST_F(KeyRefusals, LetAProjectWithoutScalarVerify) {
    attributes.erase(74);
    expectOutcome(false, true);
}

TEST_F(KeyRefusals, LetAProjectWithAnUnusableScalarVerify) {
    for (const Bytes& scalar :
         {integerValue(0, {}), integerValue(64, Bytes(8)), integerValue(321, Bytes(41, 1)),
          integerValue(163, Bytes(293, 1))}) {
        attributes[74] = scalar;
        expectOutcome(false, true);
    }
}

TEST_F(KeyRefusals, MeetAMissingCoordinate) {
    for (const std::uint32_t id : {72U, 73U, 75U, 76U}) {
        attributes = keyAttributes(key);
        attributes.erase(id);
        expectOutcome(false, false);
    }
}

TEST_F(KeyRefusals, MeetACoordinateThatIsTooLong) {
    for (const std::uint32_t id : {72U, 73U, 75U, 76U}) {
        attributes = keyAttributes(key);
        attributes[id].resize(296, 0xEE);
        expectOutcome(true, true);
        attributes[id].resize(297, 0xEE);
        expectOutcome(false, false);
    }
}

/// Changes the bit count at the start of a stored value.
void setBits(Bytes& value, std::uint32_t bits) {
    for (std::size_t i = 0; i < 4; ++i) {
        value[i] = static_cast<std::uint8_t>(bits >> 8 * i);
    }
}

constexpr std::array<std::uint32_t, 9> otherDegrees = {0,   1,   32,  162,       164,
                                                       192, 512, 513, 0xFFFFFFFF};

TEST_F(KeyRefusals, MeetAnotherDegreeOfOneCoordinate) {
    for (const std::uint32_t id : {72U, 73U, 75U, 76U}) {
        for (const std::uint32_t degree : otherDegrees) {
            attributes = keyAttributes(key);
            setBits(attributes[id], degree);
            expectOutcome(false, false);
        }
    }
}

TEST_F(KeyRefusals, MeetAnotherDegreeOfTheWholeBasePoint) {
    for (const std::uint32_t degree : otherDegrees) {
        setBits(attributes[72], degree);
        setBits(attributes[73], degree);
        expectOutcome(false, false);
    }
}

TEST_F(KeyRefusals, LetAPublicPointOfAnotherDegreeSign) {
    for (const std::uint32_t degree : {1U, 32U, 162U, 164U, 192U, 512U}) {
        setBits(attributes[75], degree);
        setBits(attributes[76], degree);
        expectOutcome(true, false);
    }
    setBits(attributes[75], 513);
    setBits(attributes[76], 513);
    expectOutcome(false, false);
}

TEST_F(KeyRefusals, MeetEveryPairOfPointsOfAnotherDegree) {
    for (const std::uint32_t id : {72U, 73U, 75U, 76U}) {
        setBits(attributes[id], 162);
    }
    expectOutcome(false, false);
}

TEST_F(KeyRefusals, MeetAProjectThatDoesNotLoad) {
    Bytes bytes = projectBytes(attributes);
    bytes.back() ^= 1;
    const std::string damaged = folder.write("damaged", bytes);
    for (const std::string& path : {damaged, folder.file("missing"), folder.path()}) {
        EXPECT_EQ(signedText(path, someData), "") << path;
        EXPECT_FALSE(verifies(path, someData, text)) << path;
    }
}

TEST_F(KeyRefusals, MeetAStoreWithoutKey) {
    const ProjectFile empty;
    SignatureBuffer buffer{};
    KeyReport key;
    EXPECT_FALSE(signWithRecord(empty, someData.data(), 9, buffer.data(), key));
    EXPECT_EQ(buffer, SignatureBuffer{});
    EXPECT_EQ(key.attribute, privateScalarAttribute);
    EXPECT_FALSE(verifyWithRecord(empty, someData.data(), 9, text.c_str(), key));
    EXPECT_EQ(key.attribute, publicPointXAttribute);
}

}  // namespace
