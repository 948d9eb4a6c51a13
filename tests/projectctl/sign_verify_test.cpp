// sign and verify, as a person runs them.

#include <gtest/gtest.h>
#include <openssl/ripemd.h>

#include <array>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/projectctl/projectctl_run.h"
#include "tests/support/hexadecimal.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/random_operands.h"
#include "tests/support/signature_judge.h"
#include "tests/support/signature_text.h"
#include "tests/support/temporary_folder.h"

namespace {

using Words = std::vector<std::string>;

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

    /// What stands behind the reason for every false: the digest by libcrypto, and the fingerprint
    /// that `show` tells.
    static std::string toCompare(const std::string& file, const std::string& data,
                                 const std::string& project) {
        std::array<unsigned char, RIPEMD160_DIGEST_LENGTH> digest{};
        RIPEMD160(reinterpret_cast<const unsigned char*>(data.data()), data.size(), digest.data());
        const std::string shown = runProjectctl({"show", project}).output;
        const std::string fingerprint = shown.substr(shown.rfind(' ') + 1);
        return "projectctl: " + file + ": RIPEMD-160 digest " +
               hexadecimalFromBytes(digest.data(), digest.size()) + "\nprojectctl: " + project +
               ": fingerprint of the public key " + fingerprint;
    }

    /// What verifying says of other data on standard input.
    std::string saidOf(const std::string& data) const {
        return otherData + toCompare("standard input", data, project);
    }

    std::string write(const std::string& name, const std::string& text) const {
        return folder.write(name, Bytes(text.begin(), text.end()));
    }

    const TemporaryFolder folder;
    const ProjectKey key = randomProjectKey();
    const std::string project = folder.write("project", projectBytes(keyAttributes(key)));
    const std::string letter = "Dear Sir or Madam";
    const std::string file = folder.write("letter", Bytes(letter.begin(), letter.end()));
    const std::string valid = signatureText(judgeSign(key, Bytes(letter.begin(), letter.end())));
    const std::string otherData =
        "projectctl: the signature was made over other data or under another key, or was altered\n";
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
    EXPECT_TRUE(endedWith(
        runProjectctl({"sign", stripped, file}), 2, "",
        "projectctl: " + stripped +
            ": attribute 74 (private scalar) is absent; a project without it only verifies\n"));
}

TEST_F(ProjectctlSignature, OfOtherDataOrAnotherKeyIsFalse) {
    EXPECT_TRUE(endedWith(runProjectctl({"verify", project, valid}, letter + "!"), 1, "false\n",
                          saidOf(letter + "!")));
    const ProgramEnd json = runProjectctl({"verify", project, valid, "--json"}, letter + "!");
    EXPECT_EQ(json.status, 1);
    EXPECT_EQ(json.errors, saidOf(letter + "!"));
    const auto value = nlohmann::json::parse(json.output);
    EXPECT_EQ(value["valid"], false);
    EXPECT_EQ(value["rule"], "signature.mismatch");
    EXPECT_FALSE(value.contains("change"));
    for (const char* member : {"ripemd160", "fingerprint"}) {
        EXPECT_NE(json.errors.find(" " + value[member].get<std::string>() + "\n"),
                  std::string::npos)
            << member;
    }
    const std::string other =
        folder.write("other", projectBytes(keyAttributes(randomProjectKey())));
    EXPECT_TRUE(endedWith(runProjectctl({"verify", other, valid, file}), 1, "false\n",
                          otherData + toCompare(file, letter, other)));
}

TEST_F(ProjectctlSignature, OfATextThatWasChangedOnItsWayIsFalseAndTheChangeIsNamed) {
    struct Case {
        std::string signedText;
        std::string text;
        std::string code;
        std::string words;
    };
    const std::vector<Case> cases = {
        {"a\nb\n", "a\r\nb\r\n", "lf", "with LF instead of CR LF line ends"},
        {"a\r\nb\r\n", "a\nb\n", "crlf", "with CR LF instead of LF line ends"},
        {"a", "a\n", "line-end-removed", "without the last line end"},
        {"a", "a\r\n", "line-end-removed", "without the last line end"},
        {"a\n", "a", "lf-added", "with one more LF at the end"},
        {"a\r\n", "a", "crlf-added", "with one more CR LF at the end"},
        {"a",
         "\xEF\xBB\xBF"
         "a",
         "bom-removed", "without the byte order mark (EF BB BF) at the start"},
        {"\xEF\xBB\xBF"
         "a",
         "a", "bom-added", "with a byte order mark (EF BB BF) at the start"}};
    for (const Case& row : cases) {
        const std::string text =
            signatureText(judgeSign(key, Bytes(row.signedText.begin(), row.signedText.end())));
        const std::string path = write("changed", row.text);
        const std::string said = "projectctl: " + path +
                                 ": differs from what was signed: the signature would be valid " +
                                 row.words + "\n" + toCompare(path, row.text, project);
        EXPECT_TRUE(endedWith(runProjectctl({"verify", project, text, path}), 1, "false\n", said));
        const ProgramEnd piped = runProjectctl({"verify", project, text, "--json"}, row.text);
        EXPECT_EQ(nlohmann::json::parse(piped.output)["change"], row.code);
    }
}

TEST_F(ProjectctlSignature, OfALargeTextIsNotTriedWithChanges) {
    constexpr std::size_t most = std::size_t{16} << 20;
    const std::string text(most, 'a');
    const std::string made = signatureText(judgeSign(key, Bytes(most, 'a')));
    const std::string shorter = signatureText(judgeSign(key, Bytes(most - 1, 'a')));
    EXPECT_NE(runProjectctl({"verify", project, shorter, write("large", text.substr(1) + "\n")})
                  .errors.find("differs from what was signed"),
              std::string::npos);
    EXPECT_EQ(runProjectctl({"verify", project, made, write("large", text + "\n")})
                  .errors.find("differs from what was signed"),
              std::string::npos);
}

TEST_F(ProjectctlSignature, CannotBeJudgedWithSwappedOperandsWhichAreToldOf) {
    const std::string remark =
        "projectctl: the arguments seem to be in the wrong order; usage: "
        "projectctl verify PROJECT SIGNATURE [FILE]\n";
    for (const Words& swapped : {Words{project, file, valid},
                                 {file, valid, project},
                                 {valid, project, file},
                                 {project, file, std::string(40, 'B')},
                                 {file, file, valid},
                                 {file, project, valid},
                                 {valid, file, project}}) {
        const ProgramEnd end = runProjectctl({"verify", swapped[0], swapped[1], swapped[2]});
        EXPECT_EQ(end.status, 2);
        EXPECT_TRUE(end.errors.ends_with("\n" + remark)) << end.errors;
    }
    const std::string missing = folder.file("missing");
    for (const Words& wrong : {Words{missing, valid, file},
                               {project, valid, missing},
                               {file, valid, letter},
                               {missing, valid, std::string(60, 'B')},
                               {missing, "abc", valid},
                               {project, file, std::string(35, 'B') + "="},
                               {project, "abc", missing}}) {
        const ProgramEnd end = runProjectctl({"verify", wrong[0], wrong[1], wrong[2]});
        EXPECT_EQ(end.status, 2);
        EXPECT_EQ(end.errors.find(remark), std::string::npos) << end.errors;
    }
}

TEST_F(ProjectctlSignature, UnderAKeyWithoutAFingerprintIsFalseAndNamesNone) {
    AttributeValues values = keyAttributes(key);
    values[76] = elementValue(163, std::string(48, 'F'));
    const std::string bare = folder.write("bare", projectBytes(values));
    const ProgramEnd end = runProjectctl({"verify", bare, valid, file});
    EXPECT_EQ(end.output, "false\n");
    EXPECT_EQ(end.errors.find("fingerprint"), std::string::npos) << end.errors;
    const ProgramEnd json = runProjectctl({"verify", bare, valid, file, "--json"});
    EXPECT_FALSE(nlohmann::json::parse(json.output).contains("fingerprint"));
}

TEST_F(ProjectctlSignature, IsConvertedToJson) {
    const ProgramEnd end = runProjectctl({"convert", valid, "--json"});
    EXPECT_EQ(nlohmann::json::parse(end.output).at("text"), valid);
}

TEST_F(ProjectctlSignature, UnderAKeyWithASignThatCountsForNothingIsFalseForItsOwnReason) {
    AttributeValues values = keyAttributes(key);
    values[74][3] |= 0x80;
    const std::string marked = folder.write("marked", projectBytes(values));
    EXPECT_EQ(runProjectctl({"verify", marked, valid, file}).output, "true\n");
    EXPECT_TRUE(endedWith(runProjectctl({"verify", marked, valid}, letter + "!"), 1, "false\n",
                          otherData + toCompare("standard input", letter + "!", marked)));
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
    EXPECT_TRUE(endedWith(
        runProjectctl({"verify", unsound, text, file}), 1, "false\n",
        "projectctl: " + unsound + ": " + reason + "\n" + toCompare(file, letter, unsound)));
    const ProgramEnd explained =
        runProjectctl({"explain", "--project", unsound, "--file", file, "--signature", text});
    EXPECT_NE(explained.output.find("key.unsound"), std::string::npos) << explained.output;
    EXPECT_NE(explained.output.find(reason), std::string::npos) << explained.output;
}

TEST_F(ProjectctlSignature, ThatIsNoneIsFalseAndToldWhy) {
    const ProgramEnd end = runProjectctl({"verify", project, "abc", file});
    EXPECT_TRUE(endedWith(end, 1, "false\n",
                          "projectctl: the signature has 3 characters, which is not a multiple of "
                          "four\n" +
                              toCompare(file, letter, project)));
    const std::string zero = signatureText({.r = "0", .s = "5"}, 21);
    EXPECT_TRUE(endedWith(runProjectctl({"verify", project, zero, file}), 1, "false\n",
                          "projectctl: r is zero\n" + toCompare(file, letter, project)));
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
    const std::size_t place = text.find_first_not_of('A');
    text[place] = '_';
    EXPECT_TRUE(endedWith(runProjectctl({"verify", project, text, file}), 1, "false\n",
                          otherData + "projectctl: character " + std::to_string(place + 1) +
                              " of the signature is \"_\", which base64 for URLs has instead of "
                              "\"/\"\nprojectctl: 1 character of the signature is outside its "
                              "alphabet, read as \"A\"\n" +
                              toCompare(file, letter, project)));
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
