// Signatures of the built program under judgement by libcrypto, and many programs at once.

#include <sys/stat.h>

#include <map>
#include <thread>

#include "tests/program/sign_program.h"
#include "tests/support/project_key.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_judge.h"
#include "tests/support/signature_text.h"
#include "tests/support/signature_vectors.h"
#include "tests/support/temporary_folder.h"

namespace {

using Operation = SignRequest::Operation;

std::string asText(const Bytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

/// Data of any bytes for a form, of ASCII for JSON.
std::string randomData(InputKind kind) {
    Bytes bytes = randomBytes(1 + randomBelow(300));
    for (std::uint8_t& byte : bytes) {
        byte &= kind == InputKind::json ? 0x7F : 0xFF;
    }
    return asText(bytes);
}

std::string randomProject() {
    const std::vector<std::string> projects = projectVectorPaths();
    return projects[randomBelow(projects.size())];
}

/// Whether the program gives this verdict on the request in the words of text.
bool programSays(InputKind kind, SignRequest request, const char* verdict) {
    request.operation = Operation::verify;
    request.encoding = "plain";
    return isAnsweredText(::request(kind, request), verdict);
}

/// Flips one of the bits of both numbers, which stay below 2^163.
SignatureNumbers withOneBitChanged(const SignatureNumbers& signature) {
    Bytes bytes = bytesFromText(signatureText(signature, 21));
    const std::size_t bit = randomBelow(163) + 168 * randomBelow(2);
    bytes[bit / 8] = static_cast<std::uint8_t>(bytes[bit / 8] ^ 1U << bit % 8);
    return readSignatureText(textFromBytes(bytes));
}

}  // namespace

TEST(ProgramSignature, IsAcceptedByLibcryptoAndByTheProgram) {
    const TemporaryFolder folder;
    for (int i = 0; i < 240; ++i) {
        const InputKind kind = i % 2 == 0 ? InputKind::form : InputKind::json;
        const std::string data = randomData(kind);
        SignRequest signing{.project = randomProject(), .encoding = "plain", .data = data};
        if (i % 3 == 0) {
            signing.data.clear();
            signing.file = folder.write("data", Bytes(data.begin(), data.end()));
        }
        signing.signature = answeredSignature(request(kind, signing));
        ASSERT_TRUE(judgeAcceptsText(signing.project, data, signing.signature)) << i;
        ASSERT_TRUE(programSays(kind, signing, "true")) << i;
        const std::string changed =
            signatureText(withOneBitChanged(readSignatureText(signing.signature)), 21);
        ASSERT_FALSE(judgeAcceptsText(signing.project, data, changed)) << i;
        signing.signature = changed;
        ASSERT_TRUE(programSays(kind, signing, "false")) << i;
    }
}

TEST(ProgramSignature, OfLibcryptoIsAcceptedByTheProgram) {
    for (int i = 0; i < 100; ++i) {
        const InputKind kind = i % 2 == 0 ? InputKind::form : InputKind::json;
        SignRequest verifying{.project = randomProject(), .data = randomData(kind)};
        const ProjectKey key = keyFromAttributes(readProjectBytes(fileBytes(verifying.project)));
        const SignatureNumbers made =
            judgeSign(key, Bytes(verifying.data.begin(), verifying.data.end()));
        verifying.signature = signatureText(made);
        ASSERT_TRUE(programSays(kind, verifying, "true")) << verifying.signature;
        verifying.data.back() ^= 1;
        ASSERT_TRUE(programSays(kind, verifying, "false")) << verifying.signature;
    }
}

TEST(ProgramSignature, OfTheVectorsIsAccepted) {
    for (const SignatureCase& entry : signatureCases()) {
        if (!entry.message.empty()) {
            const SignRequest verifying{
                .project = entry.project, .data = asText(entry.message), .signature = entry.text};
            EXPECT_TRUE(programSays(InputKind::form, verifying, "true")) << entry.text;
        }
    }
}

TEST(ProgramSignature, IsMadeUnderAProjectOfTheProjectTool) {
    const TemporaryFolder folder;
    ProgramCall create;
    create.path = programPath("projectctl");
    create.arguments = {"projectctl", "create", folder.file("project")};
    ASSERT_TRUE(endedWith(runProgram(create), 0, ""));
    EXPECT_EQ(folder.names(), std::vector<std::string>{"project"});
    struct stat status {};
    ASSERT_EQ(::stat(folder.file("project").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);

    SignRequest signing{.project = folder.file("project"), .encoding = "plain", .data = "abc"};
    const ProjectKey key = keyFromAttributes(readProjectBytes(fileBytes(signing.project)));
    EXPECT_TRUE(judgeAcceptsKey(key));
    signing.signature = answeredSignature(request(InputKind::form, signing));
    EXPECT_TRUE(judgeAcceptsText(signing.project, "abc", signing.signature));
    EXPECT_TRUE(programSays(InputKind::json, signing, "true"));
}

TEST(ProgramSignature, IsMadeByManyProgramsAtOnceOnOneProject) {
    constexpr std::size_t programs = 8;
    constexpr std::size_t rounds = 10;
    const SignRequest signing{
        .project = projectVectorPaths().front(), .encoding = "plain", .data = "abc"};
    const std::string body = bodyText(InputKind::form, signing);
    std::vector<std::vector<ProgramEnd>> ends(programs);
    std::vector<std::thread> threads;
    for (std::vector<ProgramEnd>& own : ends) {
        threads.emplace_back([&own, &body] {
            for (std::size_t round = 0; round < rounds; ++round) {
                own.push_back(request(InputKind::form, body));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::map<std::string, int> seen;
    for (const std::vector<ProgramEnd>& own : ends) {
        for (const ProgramEnd& end : own) {
            const std::string text = answeredSignature(end);
            EXPECT_TRUE(judgeAcceptsText(signing.project, "abc", text));
            ++seen[text];
        }
    }
    EXPECT_EQ(seen.size(), programs * rounds);
}
