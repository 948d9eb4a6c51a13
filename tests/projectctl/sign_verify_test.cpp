// sign and verify, as a person runs them.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/projectctl/projectctl_run.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_judge.h"
#include "tests/support/signature_text.h"
#include "tests/support/temporary_folder.h"

namespace {

class ProjectctlSignature : public testing::Test {
protected:
    /// The signature that signing prints, without its line feed; empty if it fails.
    static std::string signedText(const std::vector<std::string>& arguments,
                                  const std::string& input = "") {
        const ProgramEnd end = runProjectctl(arguments, input);
        EXPECT_EQ(end.status, 0) << end.errors;
        EXPECT_EQ(end.errors, "");
        EXPECT_TRUE(end.output.ends_with('\n'));
        return end.output.substr(0, end.output.find('\n'));
    }

    std::string sparse(std::uint64_t size) const {
        const std::string path = folder.write("sparse", {'f', 'i', 'r', 's', 't'});
        std::filesystem::resize_file(path, size);
        return path;
    }

    const TemporaryFolder folder;
    const ProjectKey key = randomProjectKey();
    const std::string project = folder.write("project", projectBytes(keyAttributes(key)));
    const std::string letter = "Dear Sir or Madam";
    const std::string file = folder.write("letter", Bytes(letter.begin(), letter.end()));
    const std::string valid = signatureText(judgeSign(key, Bytes(letter.begin(), letter.end())));
    const std::string otherData =
        "projectctl: the signature is well formed but made over other data or under another key\n";
};

TEST_F(ProjectctlSignature, IsMadeOfAFileOrOfStandardInput) {
    EXPECT_TRUE(judgeAcceptsText(project, letter, signedText({"sign", project, file})));
    EXPECT_TRUE(judgeAcceptsText(project, letter, signedText({"sign", project}, letter)));
    EXPECT_TRUE(judgeAcceptsText(project, letter, signedText({"sign", project, "-"}, letter)));
    const Bytes binary = randomBytes(300'000);
    const std::string text(binary.begin(), binary.end());
    EXPECT_TRUE(judgeAcceptsText(project, text, signedText({"sign", project}, text)));
}

TEST_F(ProjectctlSignature, IsMadeInJson) {
    const std::string json = signedText({"sign", project, file, "--json"});
    const std::string start = R"({"signature":")";
    ASSERT_TRUE(json.starts_with(start) && json.ends_with("\"}")) << json;
    EXPECT_TRUE(judgeAcceptsText(project, letter,
                                 json.substr(start.size(), json.size() - start.size() - 2)));
}

TEST_F(ProjectctlSignature, IsVerified) {
    EXPECT_TRUE(endedWith(runProjectctl({"verify", project, valid, file}), 0, "true\n"));
    EXPECT_TRUE(endedWith(runProjectctl({"verify", project, valid}, letter), 0, "true\n"));
    EXPECT_TRUE(endedWith(runProjectctl({"verify", project, valid, file, "--json"}), 0,
                          "{\"valid\":true,\"rule\":\"signature.valid\"}\n"));
}

TEST_F(ProjectctlSignature, IsVerifiedWithoutAScalar) {
    AttributeValues values = keyAttributes(key);
    values.erase(74);
    const std::string stripped = folder.write("stripped", projectBytes(values));
    EXPECT_TRUE(endedWith(runProjectctl({"verify", stripped, valid, file}), 0, "true\n"));
    EXPECT_TRUE(
        endedWith(runProjectctl({"sign", stripped, file}), 2, "",
                  "projectctl: " + stripped + ": attribute 74 (private scalar) is absent\n"));
}

TEST_F(ProjectctlSignature, OfOtherDataOrAnotherKeyIsFalse) {
    EXPECT_TRUE(endedWith(runProjectctl({"verify", project, valid}, letter + "!"), 1, "false\n",
                          otherData));
    EXPECT_TRUE(endedWith(runProjectctl({"verify", project, valid, "--json"}, letter + "!"), 1,
                          "{\"valid\":false,\"rule\":\"signature.mismatch\"}\n", otherData));
    const std::string other =
        folder.write("other", projectBytes(keyAttributes(randomProjectKey())));
    EXPECT_TRUE(endedWith(runProjectctl({"verify", other, valid, file}), 1, "false\n", otherData));
}

TEST_F(ProjectctlSignature, UnderAKeyWithASignThatCountsForNothingIsFalseForItsOwnReason) {
    AttributeValues values = keyAttributes(key);
    values[74][3] |= 0x80;
    const std::string marked = folder.write("marked", projectBytes(values));
    EXPECT_EQ(runProjectctl({"verify", marked, valid, file}).output, "true\n");
    EXPECT_TRUE(
        endedWith(runProjectctl({"verify", marked, valid}, letter + "!"), 1, "false\n", otherData));
}

TEST_F(ProjectctlSignature, UnderAnUnsoundKeyIsFalseAndTheKeyIsNamed) {
    // A public point of another scalar: what is signed does not verify.
    ProjectKey mixed = key;
    const ProjectKey other = keyWithScalar("123456789", key.baseX, key.baseY);
    mixed.publicX = other.publicX;
    mixed.publicY = other.publicY;
    const std::string unsound = folder.write("unsound", projectBytes(keyAttributes(mixed)));
    std::filesystem::permissions(unsound, std::filesystem::perms{0644});
    const std::string reason =
        "the public point is not the product of the private scalar and the base point";
    const ProgramEnd made = runProjectctl({"sign", unsound, file});
    EXPECT_EQ(made.status, 0);
    EXPECT_EQ(made.errors, "projectctl: " + unsound +
                               ": signatures under this key cannot be relied on: " + reason + "\n");
    const std::string text = made.output.substr(0, made.output.find('\n'));
    EXPECT_TRUE(endedWith(runProjectctl({"verify", unsound, text, file}), 1, "false\n",
                          "projectctl: " + unsound + ": " + reason + "\n"));
    const ProgramEnd explained =
        runProjectctl({"explain", "--project", unsound, "--file", file, "--signature", text});
    EXPECT_NE(explained.output.find("key.unsound"), std::string::npos) << explained.output;
    EXPECT_NE(explained.output.find(reason), std::string::npos) << explained.output;
}

TEST_F(ProjectctlSignature, ThatIsNoneIsFalseAndToldWhy) {
    const ProgramEnd end = runProjectctl({"verify", project, "abc", file});
    EXPECT_TRUE(endedWith(end, 1, "false\n",
                          "projectctl: the signature's 3 characters are not whole groups of "
                          "four\n"));
    const std::string zero = signatureText({.r = "0", .s = "5"}, 21);
    EXPECT_TRUE(endedWith(runProjectctl({"verify", project, zero, file}), 1, "false\n",
                          "projectctl: r is zero\n"));
}

TEST_F(ProjectctlSignature, OfAFileIsExplainedUnderAnyEncodingOfData) {
    const auto explained = [this](const std::string& encoding) {
        return runProjectctl(
                   {"explain", "--project", project, "--file", file, "--data-encoding", encoding})
            .output;
    };
    EXPECT_NE(explained("json").find("\nRule request.data-encoding: "), std::string::npos);
    EXPECT_NE(explained("base64").find("\nRule signature.made: "), std::string::npos);
}

TEST_F(ProjectctlSignature, WithTheNameInFrontOfItIsFalseAndToldOf) {
    const ProgramEnd end = runProjectctl({"verify", project, "signature:" + valid, file});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.output, "false\n");
    EXPECT_NE(end.errors.find("\nprojectctl: the signature begins with \"signature:\", which is "
                              "the name in front of it and no part of it\n"),
              std::string::npos)
        << end.errors;
}

TEST_F(ProjectctlSignature, WithCharactersOutsideItsAlphabetIsToldOf) {
    std::string text = valid;
    text[text.find_first_not_of('A')] = '_';
    EXPECT_TRUE(endedWith(runProjectctl({"verify", project, text, file}), 1, "false\n",
                          otherData +
                              "projectctl: 1 character of the signature outside its alphabet: "
                              "each counts as \"A\"\n"));
}

TEST_F(ProjectctlSignature, CannotBeMadeOrJudgedWithoutTheProject) {
    const std::string missing = folder.file("missing");
    const std::string message =
        "projectctl: " + missing + ": cannot be opened: No such file or directory\n";
    EXPECT_TRUE(endedWith(runProjectctl({"sign", missing, file}), 2, "", message));
    EXPECT_TRUE(endedWith(runProjectctl({"verify", missing, valid, file}), 2, "", message));
    AttributeValues values = keyAttributes(key);
    values.erase(75);
    const std::string incomplete = folder.write("incomplete", projectBytes(values));
    const std::string absent =
        "projectctl: " + incomplete + ": attribute 75 (x of the public point) is absent\n";
    EXPECT_TRUE(endedWith(runProjectctl({"sign", incomplete, file}), 2, "", absent));
    EXPECT_TRUE(endedWith(runProjectctl({"verify", incomplete, valid, file}), 2, "", absent));
}

TEST_F(ProjectctlSignature, CannotBeMadeOrJudgedOfWhatCannotBeSigned) {
    const std::string missing = folder.file("missing");
    const std::string large = sparse(2147483648);
    for (const auto& [input, refusal] :
         {std::pair<std::string, std::string>{
              missing, missing + ": cannot be opened: No such file or directory"},
          {folder.path(), folder.path() + ": is a directory"},
          {large, large + ": has 2147483648 bytes: at most 2147483647 can be signed"},
          {"-", "standard input: is empty"}}) {
        const std::string message = "projectctl: " + refusal + "\n";
        EXPECT_TRUE(endedWith(runProjectctl({"sign", project, input}), 2, "", message));
        EXPECT_TRUE(endedWith(runProjectctl({"verify", project, valid, input}), 2, "", message));
    }
}

TEST_F(ProjectctlSignature, CannotBeMadeOfAPipeWithoutAFolderForTheCopy) {
    ProgramCall call = projectctlCall({"sign", project}, letter);
    call.environment["TMPDIR"] = folder.file("missing");
    EXPECT_TRUE(endedWith(runProgram(call), 2, "",
                          "projectctl: " + folder.file("missing") +
                              ": no copy of standard input: No such file or directory\n"));
}

TEST_F(ProjectctlSignature, OfAFileAbove4GiBIsThatOfItsFirstBytesAndSaysSo) {
    const std::string remark =
        "projectctl: " + sparse(4294967301) + ": only the first 5 bytes of 4294967301 count\n";
    const ProgramEnd made = runProjectctl({"sign", project, folder.file("sparse")});
    EXPECT_EQ(made.status, 0);
    EXPECT_EQ(made.errors, remark);
    const std::string text = made.output.substr(0, made.output.find('\n'));
    EXPECT_TRUE(judgeAcceptsText(project, "first", text));
    EXPECT_TRUE(endedWith(runProjectctl({"verify", project, text, folder.file("sparse")}), 0,
                          "true\n", remark));
}

TEST_F(ProjectctlSignature, ThatAnUnsoundBasePointNeverYieldsIsNotMade) {
    // By the curve's formulas 2 * (1, 0) = (1, 1) and 2 * (1, 1) = (1, 0): r is 1 for every nonce,
    // and s is 0 under this scalar.
    AttributeValues values = keyAttributes(key);
    values[72] = elementValue(163, "1");
    values[73] = elementValue(163, "0");
    values[74] = integerValue(scalarOfZeroS({letter.begin(), letter.end()}, "1"));
    const std::string unsound = folder.write("unsound", projectBytes(values));
    EXPECT_TRUE(endedWith(
        runProjectctl({"sign", unsound, file}), 2, "",
        "projectctl: " + unsound + ": yields no signature; 'projectctl check' says why\n"));
}

}  // namespace
