// A sound project file cut at every length and with every single bit flipped, as it is and with its
// digest put right.

#include <iostream>

#include "tests/faults/fault_share.h"
#include "tests/faults/project_model.h"
#include "tests/program/sign_program.h"
#include "tests/support/big_number.h"
#include "tests/support/random_operands.h"
#include "tests/support/reference_project.h"
#include "tests/support/signature_text.h"
#include "tests/support/temporary_folder.h"

namespace {

using Operation = SignRequest::Operation;

const std::string someData = "data under a damaged project";

/// What became of the projects.
struct Counts {
    std::size_t files = 0;
    std::size_t signedOnes = 0;
    std::size_t refused = 0;
    std::size_t valid = 0;
    std::size_t invalid = 0;
};

class DamagedProjectFile : public testing::Test {
protected:
    /// Signs and verifies under a file, and compares with what its bytes say.
    void expectTruth(const Bytes& file) {
        folder.write("project", file);
        const ModelKey read = readKey(referenceProject(file).attributes);
        SignRequest request{
            .project = folder.file("project"), .encoding = "plain", .data = someData};
        const ProgramEnd made = ::request(InputKind::form, request);
        if (read.hasPoints && read.hasScalar) {
            expectSignature(read, answeredSignature(made));
        } else {
            EXPECT_TRUE(isRefused(made, "Signature generation failed"));
            ++counts.refused;
        }
        request.operation = Operation::verify;
        request.signature = signature;
        const bool valid = read.hasPoints && read.arePointsSound && accepts(read.key, signature);
        EXPECT_TRUE(isAnsweredText(::request(InputKind::form, request), valid ? "true" : "false"));
        (valid ? counts.valid : counts.invalid) += 1;
        ++counts.files;
    }

    /// With a sound base point, the signature is that of the scalar that the file holds.
    void expectSignature(const ModelKey& read, const std::string& text) {
        ++counts.signedOnes;
        ASSERT_EQ(signatureText(readSignatureText(text)), text);
        const BigNumber n = BigNumber::fromHexadecimal(curveOrderDigits);
        const BigNumber scalar = BigNumber::fromHexadecimal(read.key.scalar) % n;
        if (read.arePointsSound && !scalar.isZero()) {
            const ProjectKey own =
                keyWithScalar(scalar.toHexadecimal(), read.key.baseX, read.key.baseY);
            EXPECT_TRUE(accepts(own, text));
        }
    }

    static bool accepts(const ProjectKey& key, const std::string& text) {
        ProjectKey withScalar = key;
        // The judge reckons with keys that have one.
        withScalar.scalar = "1";
        return judgeAccepts(withScalar, Bytes(someData.begin(), someData.end()),
                            readSignatureText(text));
    }

    /// The file with each bit flipped, or with a share of them.
    void expectTruthOfFlips(bool digestPutRight) {
        for (const std::size_t bit : shareOf(8 * sound.size(), 250)) {
            Bytes file = sound;
            file[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
            ASSERT_NO_FATAL_FAILURE(expectTruth(digestPutRight ? withDigest(file) : file));
            ASSERT_FALSE(HasFailure()) << "bit " << bit;
        }
    }

    void report(std::string_view title) const {
        std::cout << title << ": " << counts.files << " files; signed " << counts.signedOnes
                  << ", refused " << counts.refused << ", true " << counts.valid << ", false "
                  << counts.invalid << "; SIGN_TEST_SEED=" << testSeed() << std::endl;
    }

    TemporaryFolder folder;
    const ProjectKey key = randomProjectKey();
    const Bytes sound = projectBytes(keyAttributes(key));
    const std::string signature =
        signatureText(judgeSign(key, Bytes(someData.begin(), someData.end())));
    Counts counts;
};

TEST_F(DamagedProjectFile, IsRefusedWhereverItIsCut) {
    for (const std::size_t length : shareOf(sound.size(), 60)) {
        Bytes file(sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(length));
        expectTruth(file);
        if (length >= 24) {
            expectTruth(withDigest(file));
        }
        ASSERT_FALSE(HasFailure()) << length << " bytes";
    }
    EXPECT_EQ(counts.signedOnes + counts.valid, 0U);
    report("project files cut short");
}

TEST_F(DamagedProjectFile, IsRefusedForAnyBitThatItsDigestCovers) {
    expectTruthOfFlips(false);
    EXPECT_EQ(counts.signedOnes + counts.valid, 0U);
    report("project files with a bit flipped");
}

TEST_F(DamagedProjectFile, IsTakenAsItStandsWhenItsDigestFits) {
    expectTruthOfFlips(true);
    EXPECT_GT(counts.signedOnes, 0U);
    EXPECT_GT(counts.refused, 0U);
    report("project files with a bit flipped and the digest put right");
}

}  // namespace
