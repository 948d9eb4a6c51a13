#include <openssl/ripemd.h>

#include <filesystem>
#include <fstream>

#include "engine/mapped_file.h"
#include "tests/support/signature_text.h"
#include "tests/unit/engine/engine_test.h"

namespace {

constexpr std::uintmax_t twoTo31 = 1ULL << 31;
constexpr std::uintmax_t twoTo32 = 1ULL << 32;

const Bytes firstBytes = {'f', 'i', 'r', 's', 't'};

/// Files with holes, of sizes around the limits of a 32-bit length.
class SparseFiles : public EngineTest {
protected:
    /// A file that begins with `firstBytes` and goes on with zeros.
    std::string sparse(std::uintmax_t size) const {
        const std::string path = folder.write("sparse", firstBytes);
        std::filesystem::resize_file(path, size);
        return path;
    }

    void expectRefused(std::uintmax_t size) const {
        const std::string path = sparse(size);
        EXPECT_EQ(signedFileText(projectPath, path), "") << size << " bytes";
        EXPECT_FALSE(fileVerifies(projectPath, path, signedText(projectPath, firstBytes)))
            << size << " bytes";
    }

    const ProjectKey key = randomProjectKey();
    const std::string projectPath = project(key);
};

TEST_F(SparseFiles, HaveTheLow32BitsOfTheirSize) {
    for (const std::uintmax_t size :
         {twoTo31 - 1, twoTo31, twoTo32 - 1, twoTo32, twoTo32 + 5, 3 * twoTo32 + twoTo31 + 1}) {
        MappedFile file;
        ASSERT_TRUE(file.open(sparse(size).c_str()));
        EXPECT_EQ(file.size(), static_cast<std::uint32_t>(size)) << size << " bytes";
        EXPECT_EQ(file.map(), size % twoTo32 != 0 && size % twoTo32 < twoTo31) << size << " bytes";
    }
}

TEST_F(SparseFiles, AreRefusedWhenTheLow32BitsAreNotPositive) {
    expectRefused(twoTo31);
    expectRefused(twoTo31 + 5);
    expectRefused(twoTo32 - 1);
    expectRefused(twoTo32);
    expectRefused(twoTo32 + twoTo31);
    expectRefused(twoTo32 + twoTo32);
}

TEST_F(SparseFiles, Above4GiBStandForTheirFirstBytes) {
    for (const std::uintmax_t size : {twoTo32 + 5, 2 * twoTo32 + 5}) {
        const std::string path = sparse(size);
        const std::string text = signedFileText(projectPath, path);
        EXPECT_TRUE(judgeAccepts(key, firstBytes, readSignatureText(text))) << size << " bytes";
        EXPECT_TRUE(verifies(projectPath, firstBytes, text)) << size << " bytes";
        EXPECT_TRUE(fileVerifies(projectPath, path, signedText(projectPath, firstBytes)))
            << size << " bytes";
        const Bytes four(firstBytes.begin(), firstBytes.begin() + 4);
        EXPECT_FALSE(fileVerifies(projectPath, path, signedText(projectPath, four)));
    }
}

/// RIPEMD-160 of a file by libcrypto, read piece by piece.
Bytes fileDigest(const std::string& path) {
    RIPEMD160_CTX context;
    RIPEMD160_Init(&context);
    std::ifstream stream(path, std::ios::binary);
    std::vector<char> piece(1 << 20);
    while (stream.read(piece.data(), static_cast<std::streamsize>(piece.size())) ||
           stream.gcount() > 0) {
        RIPEMD160_Update(&context, piece.data(), static_cast<std::size_t>(stream.gcount()));
    }
    Bytes digest(RIPEMD160_DIGEST_LENGTH);
    RIPEMD160_Final(digest.data(), &context);
    return digest;
}

TEST_F(SparseFiles, AreSignedWholeUpTo2GiBLessOne) {
    const std::string path = sparse(twoTo31 - 1);
    {
        std::fstream stream(path, std::ios::binary | std::ios::in | std::ios::out);
        stream.seekp(static_cast<std::streamoff>(twoTo31 - 2));
        stream.put('e');
    }
    const std::string text = signedFileText(projectPath, path);
    ASSERT_FALSE(text.empty());
    EXPECT_TRUE(judgeAcceptsDigest(key, fileDigest(path), readSignatureText(text)));
}

}  // namespace
