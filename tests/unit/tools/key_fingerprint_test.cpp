#include "tools/signature/key_fingerprint.h"

#include <gtest/gtest.h>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>

#include <array>
#include <memory>
#include <string>

#include "tests/support/attribute_values.h"
#include "tests/support/hexadecimal.h"
#include "tests/support/project_key.h"
#include "tools/signature/key_export.h"

namespace {

/// The digest that libcrypto makes of the key in its own encoding, once it has read our text.
std::string fingerprintByLibcrypto(const std::string& pem) {
    const std::unique_ptr<BIO, void (*)(BIO*)> input(
        BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), [](BIO* bio) { BIO_free(bio); });
    const std::unique_ptr<EVP_PKEY, void (*)(EVP_PKEY*)> key(
        PEM_read_bio_PUBKEY(input.get(), nullptr, nullptr, nullptr), EVP_PKEY_free);
    unsigned char* der = nullptr;
    const int size = i2d_PUBKEY(key.get(), &der);
    std::array<unsigned char, 32> digest{};
    EXPECT_EQ(EVP_Digest(der, static_cast<std::size_t>(size), digest.data(), nullptr, EVP_sha256(),
                         nullptr),
              1);
    OPENSSL_free(der);
    return hexadecimalFromBytes(digest.data(), digest.size());
}

TEST(KeyFingerprint, IsTheOneOfLibcrypto) {
    for (int round = 0; round < 20; ++round) {
        const ProjectFile project = projectOf(keyAttributes(randomProjectKey()));
        EXPECT_EQ(keyFingerprint(project), fingerprintByLibcrypto(exportPublicKey(project).pem));
    }
}

TEST(KeyFingerprint, IsTheSameWithoutTheScalarAndAnotherOfAnotherKey) {
    AttributeValues attributes = keyAttributes(randomProjectKey());
    const auto whole = keyFingerprint(projectOf(attributes));
    ASSERT_TRUE(whole.has_value());
    attributes.erase(74);
    EXPECT_EQ(keyFingerprint(projectOf(attributes)), whole);
    EXPECT_NE(keyFingerprint(projectOf(keyAttributes(randomProjectKey()))), whole);
}

TEST(KeyFingerprint, IsThereForKeysThatCanBeExportedAlone) {
    for (const std::uint32_t id : {72U, 73U, 75U, 76U}) {
        AttributeValues attributes = keyAttributes(randomProjectKey());
        attributes.erase(id);
        EXPECT_EQ(keyFingerprint(projectOf(attributes)), std::nullopt) << id;
    }
    EXPECT_EQ(keyFingerprint(ProjectFile()), std::nullopt);
}

}  // namespace
