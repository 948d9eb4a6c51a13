#include "tools/commands/convert_command.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "core/entry.h"
#include "tests/support/hexadecimal.h"
#include "tests/support/project_key.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_text.h"
#include "tests/support/temporary_folder.h"
#include "tests/unit/tools/command_run.h"
#include "tests/unit/tools/scoped_terminal.h"
#include "tools/exit_status.h"

namespace {

using namespace std::string_literals;

CommandEnd convert(const std::string& signature, SignatureForm from, SignatureForm to,
                   bool json = false) {
    return runCommand(convertCommand,
                      {.signature = signature, .from = from, .to = to, .json = json});
}

CommandEnd done(const std::string& output) {
    return {.status = exitDone, .output = output, .errors = ""};
}

CommandEnd failed(const std::string& message) {
    return {.status = exitFailed, .output = "", .errors = "projectctl: " + message + "\n"};
}

Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

std::string hexadecimal(const std::string& bytes) {
    return hexadecimalFromBytes(bytes.data(), bytes.size());
}

class ConvertCommand : public testing::Test {
protected:
    const TemporaryFolder folder;
    // 2^136 + 5 and 2^159: halves of 20 bytes, and a zero byte in front of s in DER.
    const SignatureNumbers numbers{.r = "1" + std::string(33, '0') + "5",
                                   .s = "8" + std::string(39, '0')};
    const std::string text = signatureText(numbers);
    const std::string derDigits =
        "302b0212" + ("01" + std::string(32, '0')) + "0502150080" + std::string(38, '0');
};

TEST_F(ConvertCommand, ConvertsTextToTheOtherForms) {
    const CommandEnd end = convert(text, SignatureForm::text, SignatureForm::der);
    EXPECT_EQ(end.status, exitDone);
    EXPECT_EQ(hexadecimal(end.output), derDigits);
    EXPECT_EQ(convert(text, SignatureForm::text, SignatureForm::hexadecimal),
              done("r=000000010000000000000000000000000000000005\n"
                   "s=008000000000000000000000000000000000000000\n"));
    EXPECT_EQ(convert(signatureText(numbers, 21), SignatureForm::text, SignatureForm::text),
              done(text + "\n"));
}

TEST_F(ConvertCommand, ReadsBackWhatItWrites) {
    for (int round = 0; round < 50; ++round) {
        const std::string some =
            signatureText({.r = randomNumber(9 + randomBelow(13)), .s = randomNumber(21)});
        const std::string path = folder.write(
            "sig.der", bytesOf(convert(some, SignatureForm::text, SignatureForm::der).output));
        const CommandEnd hexadecimal =
            convert(some, SignatureForm::text, SignatureForm::hexadecimal);
        EXPECT_EQ(convert(path, SignatureForm::der, SignatureForm::text), done(some + "\n"));
        EXPECT_EQ(convert(path, SignatureForm::der, SignatureForm::hexadecimal), hexadecimal);
        EXPECT_EQ(convert(hexadecimal.output, SignatureForm::hexadecimal, SignatureForm::text),
                  done(some + "\n"));
        EXPECT_EQ(convert(hexadecimal.output, SignatureForm::hexadecimal, SignatureForm::der),
                  convert(some, SignatureForm::text, SignatureForm::der));
    }
}

TEST_F(ConvertCommand, ReadsEachFormFromStandardInput) {
    for (const SignatureForm form :
         {SignatureForm::text, SignatureForm::der, SignatureForm::hexadecimal}) {
        const std::string written = convert(text, SignatureForm::text, form).output;
        const ScopedInput input(written);
        EXPECT_EQ(convert("-", form, SignatureForm::text), done(text + "\n"));
    }
}

TEST_F(ConvertCommand, TakesNothingButOneLineFeedFromTheEndOfATextOnStandardInput) {
    const ScopedInput input(text + "\n\n");
    EXPECT_EQ(convert("-", SignatureForm::text, SignatureForm::text),
              failed("standard input: the signature has " + std::to_string(text.size() + 1) +
                     " characters, which is not a multiple of four"));
}

TEST_F(ConvertCommand, SaysAllFormsInJson) {
    for (const SignatureForm to :
         {SignatureForm::text, SignatureForm::der, SignatureForm::hexadecimal}) {
        const CommandEnd end = convert(text, SignatureForm::text, to, true);
        EXPECT_EQ(end.output,
                  R"({"r":"000000010000000000000000000000000000000005",)"
                  R"("s":"008000000000000000000000000000000000000000",)"
                  R"("text":")" +
                      text + R"(","der":")" +
                      hexadecimal(convert(text, SignatureForm::text, SignatureForm::der).output) +
                      "\"}\n");
        EXPECT_EQ(end.status, exitDone);
        EXPECT_EQ(end.errors, "");
    }
}

TEST_F(ConvertCommand, RefusesASignatureThatTheProgramRefuses) {
    EXPECT_EQ(convert("", SignatureForm::text, SignatureForm::der),
              failed("the signature is empty"));
    EXPECT_EQ(convert(std::string(55, 'B') + "=", SignatureForm::text, SignatureForm::der),
              failed("the signature's halves are of odd length (41 bytes)"));
    EXPECT_EQ(convert("r=1 s=0", SignatureForm::hexadecimal, SignatureForm::text),
              failed("s is zero"));
    EXPECT_EQ(convert("r="s + curveOrderDigits + " s=1", SignatureForm::hexadecimal,
                      SignatureForm::text, true),
              failed("r is not below the order"));
    const std::string path = folder.write("sig.der", {0x30, 0x06, 2, 1, 1, 2, 1, 0});
    EXPECT_EQ(convert(path, SignatureForm::der, SignatureForm::text), failed(path + ": s is zero"));
}

TEST_F(ConvertCommand, RefusesAFileThatCannotBeRead) {
    const std::string missing = folder.file("missing");
    EXPECT_EQ(convert(missing, SignatureForm::der, SignatureForm::text),
              failed(missing + ": No such file or directory"));
    EXPECT_EQ(convert(folder.path(), SignatureForm::der, SignatureForm::text),
              failed(folder.path() + ": Is a directory"));
    EXPECT_EQ(convert("", SignatureForm::der, SignatureForm::text),
              failed("SIGNATURE: the path is empty"));
}

TEST_F(ConvertCommand, TellsThatASignatureIsTheNameOfAFile) {
    const std::string path = folder.write("signature", bytesOf(text));
    const std::string remark =
        "projectctl: SIGNATURE is the name of a file; redirect standard input from it, and write "
        "- for SIGNATURE\n";
    const CommandEnd end = convert(path, SignatureForm::text, SignatureForm::hexadecimal);
    EXPECT_EQ(end.status, exitFailed);
    EXPECT_TRUE(end.errors.ends_with("\n" + remark)) << end.errors;
    const CommandEnd missing = convert(path + "2", SignatureForm::text, SignatureForm::hexadecimal);
    EXPECT_EQ(missing.errors.find(remark), std::string::npos) << missing.errors;
}

TEST_F(ConvertCommand, RefusesAFileThatIsTooLong) {
    const std::string path = folder.write("sig.der", Bytes(4097));
    EXPECT_EQ(convert(path, SignatureForm::der, SignatureForm::text),
              failed(path + ": has more than 4096 bytes, too many for a signature"));
    folder.write("sig.der", Bytes(4096));
    EXPECT_EQ(convert(path, SignatureForm::der, SignatureForm::text),
              failed(path + ": the signature has the tag 00 instead of 30"));
    const ScopedInput input(std::string(5000, 'A'));
    EXPECT_EQ(convert("-", SignatureForm::text, SignatureForm::der),
              failed("standard input: has more than 4096 bytes, too many for a signature"));
}

TEST_F(ConvertCommand, WritesNoDerToATerminal) {
    const ScopedTerminal terminal(STDOUT_FILENO);
    testing::internal::CaptureStderr();
    EXPECT_EQ(convertCommand({.signature = text, .to = SignatureForm::der}), exitFailed);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "projectctl: standard output is a terminal, and DER is binary; redirect it to a "
              "file, or use --to hex\n");
}

}  // namespace
