// The program under valgrind, which finds what is wrong with its heap.

#include "tests/program/sign_program.h"
#include "tests/support/project_builder.h"
#include "tests/support/signature_judge.h"
#include "tests/support/signature_vectors.h"
#include "tests/support/temporary_folder.h"

namespace {

const SignatureCase& known() {
    return signatureCases().front();
}

/// Exit status of valgrind when it has found an error.
constexpr const char* valgrindStatus = "--error-exitcode=99";

ProgramEnd underValgrind(ProgramCall call) {
    call.path = SIGN_VALGRIND;
    call.arguments = {"valgrind", "--quiet", valgrindStatus, "--leak-check=full",
                      SIGN_SHARED_PROGRAM};
    call.environment["PATH"] = "/usr/bin:/bin";
    return runProgram(call);
}

ProgramEnd underValgrind(InputKind kind, const std::string& body) {
    return underValgrind(requestCall(kind, body));
}

ProgramEnd underValgrind(InputKind kind, const SignRequest& request) {
    return underValgrind(kind, bodyText(kind, request));
}

/// Signs in both kinds of input, and verifies with the signature and with another; 6 requests.
void signAndVerify(SignRequest request, std::string_view content) {
    for (const InputKind kind : {InputKind::form, InputKind::json}) {
        request.encoding = "plain";
        request.operation = SignRequest::Operation::generate;
        const std::string text = answeredSignature(underValgrind(kind, request));
        EXPECT_TRUE(judgeAcceptsText(request.project, content, text));
        request.operation = SignRequest::Operation::verify;
        request.signature = text;
        EXPECT_TRUE(isAnsweredText(underValgrind(kind, request), "true"));
        request.signature = known().text;
        request.encoding = "json";
        EXPECT_TRUE(isAnsweredJson(underValgrind(kind, request), "{\"valid\":false}"));
    }
}

}  // namespace

// Fifty requests, in tests that may run side by side.

TEST(ProgramUnderValgrind, SignsAndVerifiesData) {
    signAndVerify({.project = known().project, .data = "abc"}, "abc");
    signAndVerify({.project = known().project, .data = "QUJDREVG", .dataEncoding = "base64"},
                  std::string_view("ABC\0DEF", 7));
}

TEST(ProgramUnderValgrind, SignsAndVerifiesFiles) {
    const TemporaryFolder folder;
    signAndVerify({.project = signatureCases().back().project,
                   .file = folder.write("short", {'a', 'b', 'c'})},
                  "abc");
    const std::string content(100000, 'x');
    signAndVerify({.project = known().project,
                   .file = folder.write("long", Bytes(content.begin(), content.end()))},
                  content);
}

TEST(ProgramUnderValgrind, RefusesWhatARequestLacks) {
    const std::vector<std::pair<std::string, std::string>> forms{
        {"", "Failed to parse input data"},
        {"a=1&%=%4&b", "'mode' parameter missing or invalid"},
        {"sig_create=true", "'project' parameter is required"},
        {"sig_verify=true&project=p", "'signature' parameter is required"},
        {"sig_create=true&project=p", "Either 'data' or 'file' parameter is required"},
        {"sig_create=true&project=p&sig_file=f&sig_data_encoding=json",
         "Signature encoding must be 'plain' or 'base64'"},
        {"sig_create=true&project=p&sig_data=QUJ&sig_data_encoding=base64", "Invalid base64 data"},
        {"sig_create=true&project=/nowhere&sig_data=d", "Signature generation failed"}};
    for (const auto& [body, message] : forms) {
        EXPECT_TRUE(isRefused(underValgrind(InputKind::form, body), message));
    }
    const std::vector<std::pair<std::string, std::string>> jsons{
        {"", "Invalid JSON data"},
        {R"({"mode":5})", "Invalid JSON data"},
        {R"({"x":[[[{"y":1)", "Invalid JSON data"},
        {"{}", "'mode' parameter missing or invalid"},
        {R"({"mode":"verifySignature","project":"p","signature":null})",
         "'signature' parameter is required"}};
    for (const auto& [body, message] : jsons) {
        EXPECT_TRUE(isRefused(underValgrind(InputKind::json, body), message));
    }
}

TEST(ProgramUnderValgrind, AnswersFalseToOddSignaturesAndProjects) {
    SignRequest request{.operation = SignRequest::Operation::verify,
                        .project = known().project,
                        .encoding = "plain",
                        .data = "abc"};
    for (const std::string& text :
         {std::string("x"), std::string("===="), std::string("AAAA"), std::string(128, 'A'),
          std::string(129, 'A'), std::string(56, '!'),
          std::string(70, '/') + std::string(58, '=')}) {
        request.signature = text;
        EXPECT_TRUE(isAnsweredText(underValgrind(InputKind::json, request), "false")) << text;
    }
    const TemporaryFolder folder;
    request.signature = known().text;
    for (const std::string& project :
         {folder.write("empty", {}), folder.write("short", {'V', 'L', 'T', '2'}),
          folder.write("none", projectBytes({})), folder.path(),
          folder.write("other", {'a', 'b', 'c'}), folder.file("absent")}) {
        request.project = project;
        EXPECT_TRUE(isAnsweredText(underValgrind(InputKind::form, request), "false")) << project;
    }
}
