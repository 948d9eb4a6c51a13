#include "tools/signature/pem.h"

#include <gtest/gtest.h>
#include <openssl/bio.h>
#include <openssl/evp.h>
#include <openssl/pem.h>

#include <memory>

#include "tests/support/project_builder.h"
#include "tests/support/random_operands.h"

namespace {

TEST(PemText, IsReadBackByLibcrypto) {
    for (std::size_t size = 1; size < 200; ++size) {
        const Bytes bytes = randomBytes(size);
        const std::string text = pemText("SOME THING", bytes);
        const std::unique_ptr<BIO, void (*)(BIO*)> input(
            BIO_new_mem_buf(text.data(), static_cast<int>(text.size())),
            [](BIO* bio) { BIO_free(bio); });
        char* name = nullptr;
        char* header = nullptr;
        unsigned char* data = nullptr;
        long length = 0;
        ASSERT_EQ(PEM_read_bio(input.get(), &name, &header, &data, &length), 1) << text;
        EXPECT_STREQ(name, "SOME THING");
        EXPECT_STREQ(header, "");
        EXPECT_EQ(Bytes(data, data + length), bytes);
        OPENSSL_free(name);
        OPENSSL_free(header);
        OPENSSL_free(data);
    }
}

TEST(PemText, HasLinesOf64CharactersAndEndsWithALineFeed) {
    // RFC 4648, section 10: "foobar" is Zm9vYmFy, "foob" is Zm9vYg==.
    EXPECT_EQ(pemText("X", Bytes{'f', 'o', 'o', 'b'}),
              "-----BEGIN X-----\nZm9vYg==\n-----END X-----\n");
    Bytes bytes;
    for (int i = 0; i < 9; ++i) {
        bytes.insert(bytes.end(), {'f', 'o', 'o', 'b', 'a', 'r'});
    }
    const std::string line = "Zm9vYmFyZm9vYmFyZm9vYmFyZm9vYmFyZm9vYmFyZm9vYmFyZm9vYmFyZm9vYmFy";
    EXPECT_EQ(pemText("X", bytes), "-----BEGIN X-----\n" + line + "\nZm9vYmFy\n-----END X-----\n");
    bytes.resize(48);
    EXPECT_EQ(pemText("X", bytes), "-----BEGIN X-----\n" + line + "\n-----END X-----\n");
}

}  // namespace
