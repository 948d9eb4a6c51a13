// What exactly is signed: zero bytes, base64 and files.

#include "tests/program/sign_program.h"
#include "tests/support/project_builder.h"
#include "tests/support/signature_judge.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vector_file.h"

namespace {

using namespace std::string_literals;
using Operation = SignRequest::Operation;

const std::string knownProject = vectorPath("projects/project-00.bin");

/// A signing request answered in text.
SignRequest signing(const std::string& data, const std::string& dataEncoding = "") {
    return {
        .project = knownProject, .encoding = "plain", .data = data, .dataEncoding = dataEncoding};
}

SignRequest verifying(const SignRequest& signing, const std::string& text) {
    SignRequest verifying = signing;
    verifying.operation = Operation::verify;
    verifying.signature = text;
    return verifying;
}

const std::vector<InputKind> bothKinds{InputKind::form, InputKind::json};

}  // namespace

TEST(ProgramPayload, VerifiesWithItsOwnSignatureAndNoOther) {
    for (const InputKind kind : bothKinds) {
        const std::string text = answeredSignature(request(kind, signing("abc")));
        for (const InputKind other : bothKinds) {
            EXPECT_TRUE(isAnsweredText(request(other, verifying(signing("abc"), text)), "true"));
            EXPECT_TRUE(isAnsweredText(request(other, verifying(signing("abd"), text)), "false"));
            SignRequest elsewhere = verifying(signing("abc"), text);
            elsewhere.project = vectorPath("projects/project-05.bin");
            EXPECT_TRUE(isAnsweredText(request(other, elsewhere), "false"));
        }
    }
}

TEST(ProgramPayload, DiffersAtEverySigning) {
    const std::string first = answeredSignature(request(InputKind::form, signing("abc")));
    EXPECT_NE(answeredSignature(request(InputKind::form, signing("abc"))), first);
}

TEST(ProgramPayload, HoldsItsZeroBytes) {
    for (const InputKind kind : bothKinds) {
        for (const std::string& data : {"\0"s, "a\0b"s, "a\0"s, "\0\0\0\0"s}) {
            const std::string text = answeredSignature(request(kind, signing(data)));
            EXPECT_TRUE(judgeAcceptsText(knownProject, data, text));
            EXPECT_TRUE(isAnsweredText(request(kind, verifying(signing(data), text)), "true"));
            const SignRequest cut = verifying(signing(data + "\0"s), text);
            EXPECT_TRUE(isAnsweredText(request(kind, cut), "false"));
        }
    }
}

TEST(ProgramPayload, IsNotDecodedAgainWhenPlain) {
    const std::string data = "%41+QUJD&a=b";
    for (const InputKind kind : bothKinds) {
        const std::string text = answeredSignature(request(kind, signing(data, "plain")));
        EXPECT_TRUE(judgeAcceptsText(knownProject, data, text));
    }
}

TEST(ProgramPayload, OfSeveralBase64GroupsHasAZeroByteBeforeItsLast) {
    for (const InputKind kind : bothKinds) {
        const SignRequest encoded = signing("QUJDREVG", "base64");
        const std::string text = answeredSignature(request(kind, encoded));
        EXPECT_TRUE(judgeAcceptsText(knownProject, "ABC\0DEF"s, text));
        EXPECT_TRUE(isAnsweredText(request(kind, verifying(encoded, text)), "true"));
        EXPECT_TRUE(isAnsweredText(request(kind, verifying(signing("ABCDEF"), text)), "false"));
        EXPECT_TRUE(isAnsweredText(request(kind, verifying(signing("ABC\0DEF"s), text)), "true"));
        const std::string plain = answeredSignature(request(kind, signing("ABCDEF")));
        EXPECT_TRUE(isAnsweredText(request(kind, verifying(encoded, plain)), "false"));
    }
}

TEST(ProgramPayload, OfOneBase64GroupIsThePlainData) {
    for (const InputKind kind : bothKinds) {
        const SignRequest encoded = signing("QUJD", "base64");
        const std::string text = answeredSignature(request(kind, encoded));
        EXPECT_TRUE(isAnsweredText(request(kind, verifying(signing("ABC"), text)), "true"));
        const std::string plain = answeredSignature(request(kind, signing("ABC")));
        EXPECT_TRUE(isAnsweredText(request(kind, verifying(encoded, plain)), "true"));
    }
}

TEST(ProgramPayload, OfBase64MayHaveAZeroByteInTheText) {
    for (const InputKind kind : bothKinds) {
        const std::string text = answeredSignature(request(kind, signing("QUJD\0==="s, "base64")));
        EXPECT_TRUE(judgeAcceptsText(knownProject, "ABC\0"s, text));
        EXPECT_TRUE(isAnsweredText(request(kind, verifying(signing("QUJDAAA="s, "base64"), text)),
                                   "false"));
    }
}

TEST(ProgramPayload, IsPlainUnderAnUnknownEncoding) {
    for (const InputKind kind : bothKinds) {
        for (const char* word : {"BASE64", "hex", "none"}) {
            const std::string text = answeredSignature(request(kind, signing("QUJD", word)));
            EXPECT_TRUE(judgeAcceptsText(knownProject, "QUJD", text)) << word;
        }
    }
}

TEST(ProgramPayload, OfAFileIsItsContentWhateverTheEncoding) {
    const TemporaryFolder folder;
    for (const std::string& content : {"x"s, "QUJDREVG"s, "a\0b\n"s, std::string(70000, 'y')}) {
        const std::string path = folder.write("file", Bytes(content.begin(), content.end()));
        for (const InputKind kind : bothKinds) {
            for (const char* encoding : {"", "plain", "base64"}) {
                SignRequest signFile = signing("", encoding);
                signFile.file = path;
                const std::string text = answeredSignature(request(kind, signFile));
                EXPECT_TRUE(judgeAcceptsText(knownProject, content, text));
                EXPECT_TRUE(isAnsweredText(request(kind, verifying(signFile, text)), "true"));
                const SignRequest data = verifying(signing(content), text);
                EXPECT_TRUE(isAnsweredText(request(kind, data), "true"));
            }
        }
    }
}

TEST(ProgramPayload, CannotBeAnEmptyFile) {
    const TemporaryFolder folder;
    SignRequest signFile = signing("");
    signFile.file = folder.write("empty", {});
    for (const InputKind kind : bothKinds) {
        EXPECT_TRUE(isRefused(request(kind, signFile), "Signature generation failed"));
        EXPECT_TRUE(isAnsweredText(request(kind, verifying(signFile, "x")), "false"));
    }
}

TEST(ProgramPayload, IsFoundByPathsAndSignaturesUpToTheirZeroByte) {
    const TemporaryFolder folder;
    for (const InputKind kind : bothKinds) {
        SignRequest signFile = signing("");
        signFile.file = folder.write("file", {'a', 'b', 'c'}) + "\0.txt"s;
        signFile.project = knownProject + "\0.bin"s;
        const std::string text = answeredSignature(request(kind, signFile));
        EXPECT_TRUE(judgeAcceptsText(knownProject, "abc", text));
        EXPECT_TRUE(isAnsweredText(request(kind, verifying(signFile, text + "\0=="s)), "true"));
    }
}

TEST(ProgramPayload, CannotBeReachedByTextThatBeginsWithAZeroByte) {
    for (const InputKind kind : bothKinds) {
        const std::string text = answeredSignature(request(kind, signing("abc")));
        EXPECT_TRUE(
            isAnsweredText(request(kind, verifying(signing("abc"), "\0"s + text)), "false"));
        SignRequest nameless = signing("abc");
        nameless.project = "\0"s + knownProject;
        EXPECT_TRUE(isRefused(request(kind, nameless), "Signature generation failed"));
    }
}

TEST(ProgramPayload, DoesNotVerifyWithANameInFrontOfTheSignature) {
    SignRequest paired = signing("abc");
    paired.pairs = SignRequest::Pairs::on;
    for (const InputKind kind : bothKinds) {
        const std::string text = responseBody(request(kind, paired).output);
        ASSERT_TRUE(text.starts_with("signature:"));
        EXPECT_TRUE(isAnsweredText(request(kind, verifying(signing("abc"), text)), "false"));
        EXPECT_TRUE(
            isAnsweredText(request(kind, verifying(signing("abc"), text.substr(10))), "true"));
    }
}
