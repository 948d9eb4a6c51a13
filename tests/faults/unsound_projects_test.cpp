// Projects that no key tool makes: every request under them ends, and soon.

#include <algorithm>
#include <chrono>
#include <iostream>

#include "tests/faults/fault_share.h"
#include "tests/faults/project_model.h"
#include "tests/faults/unsound_project.h"
#include "tests/program/sign_program.h"
#include "tests/support/hexadecimal.h"
#include "tests/support/long_run.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"
#include "tests/support/temporary_folder.h"

namespace {

using Operation = SignRequest::Operation;
using Milliseconds = std::chrono::duration<double, std::milli>;

/// Processor time that a request may take.
constexpr std::chrono::milliseconds timeLimit{50};

const std::string someData = "data of an unsound project";

class UnsoundProjects : public testing::Test {
protected:
    /// The end of a request under the project, which must come by itself and soon.
    ProgramEnd promptEnd(SignRequest request) {
        request.project = folder.file("project");
        request.data = someData;
        request.encoding = "plain";
        ProgramEnd end = ::request(InputKind::form, request);
        slowest = std::max(slowest, end.processorTime);
        EXPECT_LT(end.processorTime, timeLimit);
        EXPECT_FALSE(end.timedOut);
        EXPECT_EQ(end.errors, "");
        return end;
    }

    /// The signature that is answered, or an empty text after the refusal, which alone is right
    /// where the key is not complete.
    std::string signs(const ModelKey& key) {
        const ProgramEnd end = promptEnd({});
        if (end.status == refusedStatus || !key.hasPoints || !key.hasScalar) {
            EXPECT_TRUE(isRefused(end, "Signature generation failed"));
            ++refused;
            return {};
        }
        const std::string text = answeredSignature(end);
        EXPECT_EQ(textFromBytes(bytesFromText(text)), text);
        ++signedOnes;
        return text;
    }

    /// The verdict on the text, which is libcrypto's where both points are sound.
    void verifies(const ModelKey& key, const std::string& text) {
        const ProgramEnd end = promptEnd({.operation = Operation::verify, .signature = text});
        const bool accepted = responseBody(end.output) == "true";
        EXPECT_TRUE(isAnsweredText(end, accepted ? "true" : "false"));
        EXPECT_TRUE(key.hasPoints || !accepted);
        if (key.arePointsSound) {
            ProjectKey judged = key.key;
            judged.scalar = "1";
            EXPECT_EQ(accepted, judgeAccepts(judged, Bytes(someData.begin(), someData.end()),
                                             readSignatureText(text)));
        }
        (accepted ? valid : invalid) += 1;
    }

    ModelKey keyIn(const AttributeValues& attributes) {
        folder.write("project", projectBytes(attributes));
        return readKey(attributes);
    }

    static std::string describe(const AttributeValues& attributes) {
        std::string text;
        for (const auto& [id, value] : attributes) {
            text.append(std::to_string(id)).append("=");
            text.append(hexadecimalFromBytes(value.data(), value.size())).append(" ");
        }
        return text;
    }

    void report(std::size_t projects) const {
        std::cout << projects << " unsound projects: signed " << signedOnes << ", refused "
                  << refused << ", true " << valid << ", false " << invalid << "; slowest "
                  << Milliseconds(slowest).count()
                  << " ms of processor time; SIGN_TEST_SEED=" << testSeed() << std::endl;
    }

    TemporaryFolder folder;
    const ProjectKey sound = randomProjectKey();
    std::chrono::microseconds slowest{0};
    std::size_t signedOnes = 0;
    std::size_t refused = 0;
    std::size_t valid = 0;
    std::size_t invalid = 0;
};

TEST_F(UnsoundProjects, LeaveNoRequestWithoutAPromptAnswer) {
    const std::size_t projects = isLongRun() ? 6000 : 300;
    for (std::size_t i = 0; i < projects; ++i) {
        const AttributeValues attributes = unsoundProject(sound, someData);
        const ModelKey key = keyIn(attributes);
        const std::string made = signs(key);
        verifies(key, made.empty() ? oddSignature() : made);
        verifies(key, oddSignature());
        ASSERT_FALSE(HasFailure()) << "project " << i << ": " << describe(attributes);
    }
    report(projects);
    EXPECT_GT(refused, projects / 20);
    EXPECT_GT(signedOnes, projects / 20);
}

TEST_F(UnsoundProjects, EndTheAttemptsAtASignature) {
    for (std::uint64_t shift = 0; shift < slowCycles; ++shift) {
        EXPECT_EQ(signs(keyIn(projectOfRetries(shift, someData))), "") << shift;
    }
    report(slowCycles);
}

}  // namespace
