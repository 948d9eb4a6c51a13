// Every message of the program, to the byte, under both of its names.

#include "tests/program/sign_program.h"
#include "tests/support/messages.h"
#include "tests/support/vector_file.h"

namespace {

const std::string project = vectorPath("projects/project-00.bin");

/// Both programs refuse the body with this message.
void expectRefusal(InputKind kind, const std::string& body, std::string_view message) {
    SCOPED_TRACE(body);
    EXPECT_TRUE(endedWith(
        request(kind, body, serverProgram), refusedStatus,
        expectedResponse(FirstLine::forServer, "400 Bad Request", "text/plain", message)));
    EXPECT_TRUE(endedWith(
        request(kind, body, clientProgram), refusedStatus,
        expectedResponse(FirstLine::forClient, "400 Bad Request", "text/plain", message)));
}

/// The same of both kinds of body.
void expectRefusal(const SignRequest& wrong, std::string_view message) {
    expectRefusal(InputKind::form, bodyText(InputKind::form, wrong), message);
    expectRefusal(InputKind::json, bodyText(InputKind::json, wrong), message);
}

SignRequest generating() {
    return {.project = project, .data = "abc"};
}

SignRequest verifying() {
    return {.operation = SignRequest::Operation::verify,
            .project = project,
            .data = "abc",
            .signature = "x"};
}

}  // namespace

TEST(ProgramRefusal, TellsAnAbsentBodyByTheInput) {
    expectRefusal(InputKind::form, "", noForm);
    expectRefusal(InputKind::json, "", noJson);
}

TEST(ProgramRefusal, TellsMalformedJson) {
    for (const char* body :
         {"{", "[]", "5", "\"x\"", "null", "a=1", "{}{}", "{\"mode\":5}", "{\"project\":null}",
          "{\"genPairs\":\"true\"}", "{\"genPairs\":1}", "{\"signature\":{\"data\":1}}"}) {
        expectRefusal(InputKind::json, body, noJson);
    }
}

TEST(ProgramRefusal, TellsAMissingModeBeforeAMissingProject) {
    expectRefusal(InputKind::form, "a=1", modeMissing);
    expectRefusal(InputKind::form, "{\"mode\":\"generateSignature\"}", modeMissing);
    expectRefusal(InputKind::form, "sig_create=1&project=p", modeMissing);
    expectRefusal(InputKind::json, "{}", modeMissing);
    expectRefusal(InputKind::json, "{\"mode\":\"sign\",\"project\":\"p\"}", modeMissing);
}

TEST(ProgramRefusal, TellsAMissingProjectBeforeTheRest) {
    SignRequest wrong = generating();
    wrong.project.clear();
    expectRefusal(wrong, projectRequired);
    wrong.data.clear();
    wrong.dataEncoding = "json";
    expectRefusal(wrong, projectRequired);
    wrong.operation = SignRequest::Operation::verify;
    expectRefusal(wrong, projectRequired);
}

TEST(ProgramRefusal, TellsAMissingSignatureBeforeDataAndEncoding) {
    SignRequest wrong = verifying();
    wrong.signature.clear();
    expectRefusal(wrong, signatureRequired);
    wrong.dataEncoding = "urlencode";
    expectRefusal(wrong, signatureRequired);
    wrong.data.clear();
    expectRefusal(wrong, signatureRequired);
}

TEST(ProgramRefusal, TellsNeitherDataNorFileAndBothBeforeTheEncoding) {
    for (SignRequest wrong : {generating(), verifying()}) {
        wrong.file = project;
        expectRefusal(wrong, dataOrFile);
        wrong.dataEncoding = "json";
        expectRefusal(wrong, dataOrFile);
        wrong.data.clear();
        wrong.file.clear();
        expectRefusal(wrong, dataOrFile);
        wrong.dataEncoding.clear();
        expectRefusal(wrong, dataOrFile);
    }
    expectRefusal(InputKind::json, R"({"mode":"generateSignature","project":"p","signature":"x"})",
                  dataOrFile);
}

TEST(ProgramRefusal, TellsAnEncodingThatDataCannotHave) {
    for (SignRequest wrong : {generating(), verifying()}) {
        for (const char* encoding : {"urlencode", "json"}) {
            wrong.dataEncoding = encoding;
            wrong.data = "no base64!";
            wrong.file.clear();
            expectRefusal(wrong, wrongEncoding);
            wrong.data.clear();
            wrong.file = project;
            expectRefusal(wrong, wrongEncoding);
        }
    }
}

TEST(ProgramRefusal, TellsMalformedBase64BeforeAMissingProjectFile) {
    for (SignRequest wrong : {generating(), verifying()}) {
        wrong.dataEncoding = "base64";
        wrong.project = "/nowhere/at/all";
        for (const char* data : {"QUJ", "=AAA", "QUJD=EVG", "QU D"}) {
            wrong.data = data;
            expectRefusal(wrong, wrongBase64);
        }
    }
}

TEST(ProgramRefusal, TellsEveryFailureOfSigningAlike) {
    SignRequest wrong = generating();
    wrong.project = "/nowhere/at/all";
    expectRefusal(wrong, notGenerated);
    wrong.project = vectorPath("rfc-1321.txt");
    expectRefusal(wrong, notGenerated);
    wrong = generating();
    wrong.data = "====";
    wrong.dataEncoding = "base64";
    expectRefusal(wrong, notGenerated);
    wrong = {.project = project, .file = "/nowhere/at/all"};
    expectRefusal(wrong, notGenerated);
}

TEST(ProgramRefusal, IsInTextWhateverTheEncoding) {
    SignRequest wrong = generating();
    wrong.project = "/nowhere/at/all";
    for (const char* encoding : {"json", "plain", "base64", "urlencode", "xml"}) {
        wrong.encoding = encoding;
        wrong.pairs = SignRequest::Pairs::on;
        expectRefusal(wrong, notGenerated);
    }
}
