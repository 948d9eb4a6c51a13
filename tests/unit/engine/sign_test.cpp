#include "engine/sign.h"

#include <set>

#include "curve/field_element.h"
#include "curve/random_scalar.h"
#include "curve/sect163r2.h"
#include "project/project_key_record.h"
#include "tests/support/attribute_values.h"
#include "tests/support/hexadecimal.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"
#include "tests/support/signature_vectors.h"
#include "tests/unit/engine/engine_test.h"

namespace {

using SignData = EngineTest;

TEST_F(SignData, GivesDifferentTextsThatBothVerify) {
    const std::string path = project(randomProjectKey());
    std::set<std::string> texts;
    for (int i = 0; i < 20; ++i) {
        texts.insert(signedText(path, someData));
    }
    EXPECT_EQ(texts.size(), 20U);
    for (const std::string& text : texts) {
        EXPECT_TRUE(verifies(path, someData, text)) << text;
    }
}

TEST_F(SignData, SignsOneByteAndRefusesNone) {
    const std::string path = project(randomProjectKey());
    const Bytes one = {0};
    const std::string text = signedText(path, one);
    EXPECT_TRUE(verifies(path, one, text));
    EXPECT_EQ(
        textOf([&](char* signature) { return signData(path.c_str(), one.data(), 0, signature); }),
        "");
}

TEST_F(SignData, SignsTheGivenBytesAlone) {
    const ProjectKey key = randomProjectKey();
    const std::string path = project(key);
    const Bytes data = randomBytes(300);
    for (const std::uint32_t length : {1U, 63U, 64U, 65U, 299U}) {
        const std::string text = textOf([&](char* signature) {
            return signData(path.c_str(), data.data(), length, signature);
        });
        EXPECT_TRUE(
            judgeAccepts(key, Bytes(data.begin(), data.begin() + length), readSignatureText(text)))
            << length << " bytes";
    }
}

TEST_F(SignData, RefusesNullPointers) {
    const std::string path = project(randomProjectKey());
    const auto length = static_cast<std::uint32_t>(someData.size());
    SignatureBuffer buffer{};
    EXPECT_FALSE(signData(path.c_str(), nullptr, length, buffer.data()));
    EXPECT_FALSE(signData(path.c_str(), nullptr, 0, buffer.data()));
    EXPECT_FALSE(signData(nullptr, someData.data(), length, buffer.data()));
    EXPECT_FALSE(signData(path.c_str(), someData.data(), length, nullptr));
    EXPECT_FALSE(signData(nullptr, nullptr, 0, nullptr));
    EXPECT_EQ(buffer, SignatureBuffer{});
}

TEST_F(SignData, DoesNotNoticeAScalarThatFitsNotThePublicPoint) {
    ProjectKey key = randomProjectKey();
    key.scalar = randomNumber(20);
    const std::string path = project(key);
    const std::string text = signedText(path, someData);
    EXPECT_FALSE(text.empty());
    EXPECT_FALSE(verifies(path, someData, text));
}

/// Byte lengths of r and s, and what the text must look like.
struct HalfLengths {
    std::size_t r;
    std::size_t s;
    std::size_t textLength;
    const char* padding;
};

class RenderedHalves : public EngineTest, public testing::WithParamInterface<HalfLengths> {};

TEST_P(RenderedHalves, HaveTheLengthOfTheLongerNumber) {
    const HalfLengths& lengths = GetParam();
    for (const GeneratorCase& generator : generatorCases()) {
        const ArrangedKey arranged =
            arrangeSignature(someData, generator.nonce, lengths.r, randomNumber(lengths.s));
        const std::string path = project(arranged.key);
        seedNonces(generator.seed);
        const std::string text = signedText(path, someData);
        EXPECT_EQ(text, signatureText(arranged.signature));
        EXPECT_EQ(text.size(), lengths.textLength);
        EXPECT_EQ(text.substr(std::min(text.find('='), text.size())), lengths.padding);
        EXPECT_TRUE(judgeAccepts(arranged.key, someData, arranged.signature));
        EXPECT_TRUE(verifies(path, someData, text));
    }
}

INSTANTIATE_TEST_SUITE_P(Lengths, RenderedHalves,
                         testing::Values(HalfLengths{21, 21, 56, ""}, HalfLengths{21, 20, 56, ""},
                                         HalfLengths{20, 21, 56, ""}, HalfLengths{21, 19, 56, ""},
                                         HalfLengths{21, 1, 56, ""}, HalfLengths{21, 8, 56, ""},
                                         HalfLengths{17, 21, 56, ""}, HalfLengths{20, 20, 56, "=="},
                                         HalfLengths{19, 20, 56, "=="},
                                         HalfLengths{20, 9, 56, "=="}, HalfLengths{19, 19, 52, "="},
                                         HalfLengths{19, 16, 52, "="}, HalfLengths{18, 18, 48, ""},
                                         HalfLengths{17, 5, 48, "=="}),
                         [](const auto& info) {
                             return "R" + std::to_string(info.param.r) + "S" +
                                    std::to_string(info.param.s);
                         });

TEST_F(SignData, PutsTwoZeroBytesBehindAnSOfNineteenBytes) {
    const GeneratorCase& generator = generatorCases()[3];
    const ArrangedKey arranged = arrangeSignature(someData, generator.nonce, 21, randomNumber(19));
    seedNonces(generator.seed);
    const Bytes bytes = bytesFromText(signedText(project(arranged.key), someData));
    ASSERT_EQ(bytes.size(), 42U);
    EXPECT_NE(bytes[20], 0);
    EXPECT_NE(bytes[39], 0);
    EXPECT_EQ(bytes[40], 0);
    EXPECT_EQ(bytes[41], 0);
}

TEST_F(SignData, DrawsAnotherNonceWhenSIsZero) {
    const GeneratorCase& generator = generatorCases()[5];
    const ArrangedKey arranged = arrangeSignature(someData, generator.nonce, 21, "0");
    seedNonces(generator.seed);
    core::FieldElement nonce{.degree = 163, .capacity = 48};
    core::drawScalar(nonce, core::sect163r2.domain.order);
    core::drawScalar(nonce, core::sect163r2.domain.order);
    Bytes second;
    for (std::size_t i = 24; i-- > 0;) {
        second.push_back(static_cast<std::uint8_t>(nonce.words[i / 8] >> 8 * (i % 8)));
    }
    seedNonces(generator.seed);
    EXPECT_EQ(signedText(project(arranged.key), someData),
              signatureText(signWithNonce(
                  arranged.key, hexadecimalFromBytes(second.data(), second.size()), someData)));
}

TEST_F(SignData, WritesNoTerminator) {
    const ProjectFile file = projectOf(keyAttributes(randomProjectKey()));
    SignatureBuffer buffer;
    buffer.fill('~');
    KeyReport key;
    EXPECT_TRUE(signWithRecord(file, someData.data(), 9, buffer.data(), key));
    const auto end = std::find(buffer.begin(), buffer.end(), '~');
    EXPECT_EQ((end - buffer.begin()) % 4, 0);
    EXPECT_LT(end - buffer.begin(), 57);
    EXPECT_TRUE(std::all_of(end, buffer.end(), [](char c) { return c == '~'; }));
}

}  // namespace
