#include "tests/support/signature_vectors.h"

#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"
#include "tests/unit/engine/engine_test.h"

namespace {

using SignatureVectors = EngineTest;

ProjectKey keyOf(const SignatureCase& signature) {
    return keyFromAttributes(readProjectBytes(fileBytes(signature.project)));
}

TEST_F(SignatureVectors, DataSignsToThePublishedText) {
    ASSERT_EQ(signatureCases().size(), 30U);
    for (const SignatureCase& expected : signatureCases()) {
        seedNonces(expected.seed);
        EXPECT_EQ(signedText(expected.project, expected.message), expected.text)
            << "seed " << expected.seed;
    }
}

TEST_F(SignatureVectors, FilesSignToThePublishedText) {
    for (const SignatureCase& expected : signatureCases()) {
        const std::string file = folder.write("message", expected.message);
        seedNonces(expected.seed);
        EXPECT_EQ(signedFileText(expected.project, file), expected.text)
            << "seed " << expected.seed;
    }
}

TEST_F(SignatureVectors, DigestsSignToThePublishedText) {
    for (const SignatureCase& expected : signatureCases()) {
        seedNonces(expected.seed);
        EXPECT_EQ(signedDigestText(expected.project, expected.message), expected.text)
            << "seed " << expected.seed;
    }
}

TEST_F(SignatureVectors, PublishedTextsVerify) {
    for (const SignatureCase& published : signatureCases()) {
        const std::string file = folder.write("message", published.message);
        EXPECT_TRUE(verifies(published.project, published.message, published.text));
        EXPECT_TRUE(fileVerifies(published.project, file, published.text));
        EXPECT_TRUE(digestVerifies(published.project, published.message, published.text));
    }
}

TEST_F(SignatureVectors, PublishedTextsFailForAnyOtherProjectOrMessage) {
    const std::vector<std::string> projects = projectVectorPaths();
    for (const SignatureCase& published : signatureCases()) {
        for (const std::string& project : projects) {
            EXPECT_EQ(verifies(project, published.message, published.text),
                      project == published.project);
        }
        Bytes changed = published.message;
        changed[randomBelow(changed.size())] ^= static_cast<std::uint8_t>(1U << randomBelow(8));
        EXPECT_FALSE(verifies(published.project, changed, published.text));
        EXPECT_FALSE(digestVerifies(published.project, changed, published.text));
        Bytes longer = published.message;
        longer.push_back(0);
        EXPECT_FALSE(verifies(published.project, longer, published.text));
    }
}

TEST_F(SignatureVectors, AgreeWithTheReferencesOfTheTests) {
    for (const SignatureCase& published : signatureCases()) {
        const ProjectKey key = keyOf(published);
        const SignatureNumbers numbers = signWithNonce(key, published.nonce, published.message);
        EXPECT_EQ(signatureText(numbers), published.text);
        EXPECT_EQ(readSignatureText(published.text), numbers);
        EXPECT_TRUE(judgeAcceptsKey(key));
        EXPECT_TRUE(judgeAccepts(key, published.message, numbers));
    }
}

}  // namespace
