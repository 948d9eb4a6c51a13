#include "tests/unit/core/hash_judge.h"

#include <gtest/gtest.h>
#include <openssl/md5.h>
#include <openssl/ripemd.h>
#include <openssl/sha.h>

#include <algorithm>
#include <initializer_list>

#include "core/hash.h"
#include "tests/support/hexadecimal.h"

namespace {

std::string wordsAsText(std::initializer_list<std::uint32_t> words, bool bigEndian) {
    std::vector<std::uint8_t> bytes;
    for (const std::uint32_t word : words) {
        for (unsigned i = 0; i < 4; ++i) {
            bytes.push_back(static_cast<std::uint8_t>(word >> 8 * (bigEndian ? 3 - i : i)));
        }
    }
    return hexadecimalFromBytes(bytes.data(), bytes.size());
}

template <auto transform, typename Context>
void transformAll(Context& context, const std::vector<std::uint8_t>& padded) {
    for (std::size_t i = 0; i < padded.size(); i += 64) {
        transform(&context, padded.data() + i);
    }
}

std::string runSha256Blocks(const std::vector<std::uint8_t>& padded) {
    SHA256_CTX context;
    SHA256_Init(&context);
    transformAll<SHA256_Transform>(context, padded);
    const auto& h = context.h;
    return wordsAsText({h[0], h[1], h[2], h[3], h[4], h[5], h[6], h[7]}, true);
}

std::string runRipemd160Blocks(const std::vector<std::uint8_t>& padded) {
    RIPEMD160_CTX c;
    RIPEMD160_Init(&c);
    transformAll<RIPEMD160_Transform>(c, padded);
    return wordsAsText({c.A, c.B, c.C, c.D, c.E}, false);
}

std::string runMd5Blocks(const std::vector<std::uint8_t>& padded) {
    MD5_CTX c;
    MD5_Init(&c);
    transformAll<MD5_Transform>(c, padded);
    return wordsAsText({c.A, c.B, c.C, c.D}, false);
}

}  // namespace

const HashCase sha256Case = {
    .name = "SHA-256",
    .digestSize = 32,
    .vectorFile = "SHA256ShortMsg.rsp",
    .bigEndianLength = true,
    .reversedWords = true,
    .digest = core::sha256Digest,
    .judge = SHA256,
    .runBlocks = runSha256Blocks,
};

const HashCase ripemd160Case = {
    .name = "RIPEMD-160",
    .digestSize = 20,
    .vectorFile = "ripevectors.txt",
    .bigEndianLength = false,
    .reversedWords = false,
    .digest = core::ripemd160Digest,
    .judge = RIPEMD160,
    .runBlocks = runRipemd160Blocks,
};

const HashCase md5Case = {
    .name = "MD5",
    .digestSize = 16,
    .vectorFile = "rfc-1321.txt",
    .bigEndianLength = false,
    .reversedWords = false,
    .digest = core::md5Digest,
    .judge = MD5,
    .runBlocks = runMd5Blocks,
};

std::string coreDigest(const HashCase& hash, const std::uint8_t* data, std::uint64_t length) {
    constexpr std::uint8_t filler = 0xA5;
    std::vector<std::uint8_t> out(hash.digestSize + 8, filler);
    hash.digest(data, length, out.data());
    for (std::size_t i = hash.digestSize; i < out.size(); ++i) {
        EXPECT_EQ(out[i], filler) << "written behind the digest";
    }
    out.resize(hash.digestSize);
    if (hash.reversedWords) {
        out = withWordsReversed(out);
    }
    return hexadecimalFromBytes(out.data(), out.size());
}

std::string judgeDigest(const HashCase& hash, const std::uint8_t* data, std::size_t length) {
    std::vector<std::uint8_t> out(hash.digestSize);
    hash.judge(data, length, out.data());
    return hexadecimalFromBytes(out.data(), out.size());
}

std::string judgeLongDigest(const HashCase& hash, const std::uint8_t* data, std::uint64_t length) {
    const auto shortened = static_cast<std::uint32_t>(length);
    std::vector<std::uint8_t> padded(data, data + shortened);
    padded.push_back(0x80);
    while (padded.size() % 64 != 56) {
        padded.push_back(0);
    }
    const std::uint64_t bits = length * 8;
    for (unsigned i = 0; i < 8; ++i) {
        const unsigned place = hash.bigEndianLength ? 7 - i : i;
        padded.push_back(static_cast<std::uint8_t>(bits >> 8 * place));
    }
    return hash.runBlocks(padded);
}

std::vector<std::uint8_t> withWordsReversed(std::vector<std::uint8_t> bytes) {
    for (auto word = bytes.begin(); word != bytes.end(); word += 4) {
        std::reverse(word, word + 4);
    }
    return bytes;
}
