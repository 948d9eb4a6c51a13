// create, show, check and strip, as a person runs them.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <bitset>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "tests/projectctl/projectctl_run.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/temporary_folder.h"

namespace {

using nlohmann::json;
using Names = std::vector<std::string>;

class ProjectctlProject : public testing::Test {
protected:
    /// A project file that its owner alone can use.
    void write(const AttributeValues& values) const { writeBytes(projectBytes(values)); }

    void writeBytes(const Bytes& bytes) const {
        folder.write("my.project", bytes);
        std::filesystem::permissions(path, std::filesystem::perms{0600});
    }

    static unsigned modeOf(const std::string& path) {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
    }

    static ProjectKey keyAt(const std::string& path) {
        return keyFromAttributes(readProjectBytes(fileBytes(path)));
    }

    const TemporaryFolder folder;
    const std::string path = folder.file("my.project");
    const ProjectKey key = randomProjectKey();
    const AttributeValues attributes = keyAttributes(key);
};

using ProjectctlCreate = ProjectctlProject;
using ProjectctlShow = ProjectctlProject;
using ProjectctlCheck = ProjectctlProject;
using ProjectctlStrip = ProjectctlProject;

TEST_F(ProjectctlCreate, MakesAProjectInSilence) {
    EXPECT_TRUE(endedWith(runProjectctl({"create", path}), 0, ""));
    EXPECT_EQ(folder.names(), Names{"my.project"});
    EXPECT_TRUE(judgeAcceptsKey(keyAt(path)));
    EXPECT_EQ(modeOf(path), 0600U);
}

TEST_F(ProjectctlCreate, MakesAnotherKeyInEachProcess) {
    const std::string second = folder.file("second");
    ASSERT_EQ(runProjectctl({"create", path}).status, 0);
    ASSERT_EQ(runProjectctl({"create", second}).status, 0);
    const AttributeValues firstValues = readProjectBytes(fileBytes(path));
    const AttributeValues secondValues = readProjectBytes(fileBytes(second));
    for (const std::uint32_t id : {72U, 73U, 74U, 75U, 76U}) {
        EXPECT_NE(firstValues.at(id), secondValues.at(id)) << "attribute " << id;
    }
}

TEST_F(ProjectctlCreate, DrawsEachBitOfTheScalarBothWays) {
    // A scalar is below the order, 2^162 and a little. In so many keys, a bit that is drawn has
    // both values but for a chance of 2^-55.
    constexpr unsigned keys = 64;
    constexpr std::size_t scalarBits = 162;
    std::bitset<scalarBits> ever;
    std::bitset<scalarBits> always;
    always.set();
    for (unsigned i = 0; i < keys; ++i) {
        const std::string made = folder.file("key" + std::to_string(i));
        ASSERT_EQ(runProjectctl({"create", made}).status, 0);
        const Bytes scalar = littleEndianBytes(keyAt(made).scalar);
        std::bitset<scalarBits> bits;
        for (std::size_t bit = 0; bit < scalarBits && bit / 8 < scalar.size(); ++bit) {
            bits[bit] = (scalar[bit / 8] >> bit % 8 & 1) != 0;
        }
        ever |= bits;
        always &= bits;
    }
    EXPECT_TRUE(ever.all()) << ever;
    EXPECT_TRUE(always.none()) << always;
}

TEST_F(ProjectctlCreate, ReplacesNoFile) {
    folder.write("my.project", {1, 2, 3});
    EXPECT_TRUE(
        endedWith(runProjectctl({"create", path}), 2, "",
                  "projectctl: " + path +
                      ": already exists; no file is overwritten, so choose another name\n"));
    EXPECT_EQ(fileBytes(path), (Bytes{1, 2, 3}));
    EXPECT_EQ(folder.names(), Names{"my.project"});
}

TEST_F(ProjectctlCreate, TellsOfAMissingFolder) {
    const std::string below = folder.file("missing/project");
    EXPECT_TRUE(endedWith(runProjectctl({"create", below}), 2, "",
                          "projectctl: " + below + ": No such file or directory\n"));
}

TEST_F(ProjectctlCreate, TakesTheStandardBasePoint) {
    ASSERT_EQ(runProjectctl({"create", path, "--base", "standard"}).status, 0);
    const ProjectKey made = keyAt(path);
    EXPECT_TRUE(judgeAcceptsKey(made));
    EXPECT_EQ(littleEndianBytes(made.baseX), littleEndianBytes(keyWithBaseMultiple("1").baseX));
}

TEST_F(ProjectctlCreate, TakesAScalarFromAFileOrStandardInput) {
    const std::string digits = "123456789abcdef0123456789\n";
    const std::string file = folder.write("scalar", Bytes(digits.begin(), digits.end()));
    EXPECT_TRUE(endedWith(runProjectctl({"create", path, "--from-scalar", file}), 0, ""));
    const std::string second = folder.file("second");
    EXPECT_TRUE(endedWith(runProjectctl({"create", second, "--from-scalar", "-"}, digits), 0, ""));
    for (const std::string& made : {path, second}) {
        EXPECT_EQ(readProjectBytes(fileBytes(made)).at(74),
                  integerValue("123456789ABCDEF0123456789"));
        EXPECT_TRUE(judgeAcceptsKey(keyAt(made)));
    }
}

TEST_F(ProjectctlCreate, RefusesAScalarThatIsNone) {
    for (const auto& [text, refusal] :
         {std::pair<std::string, std::string>{"", "holds no digits"},
          {"12x", "has a character that is not a hexadecimal digit"},
          {"0", "the scalar is zero"},
          {curveOrderDigits, "the scalar is not below the order"},
          {std::string(4096, '1'), "the scalar is not below the order"},
          {std::string(4096, '0') + "1", "has more than 4096 bytes, too many for a scalar"}}) {
        EXPECT_TRUE(endedWith(runProjectctl({"create", path, "--from-scalar", "-"}, text), 2, "",
                              "projectctl: standard input: " + refusal + "\n"));
    }
    const std::string missing = folder.file("missing");
    EXPECT_TRUE(endedWith(runProjectctl({"create", path, "--from-scalar", missing}), 2, "",
                          "projectctl: " + missing + ": No such file or directory\n"));
    EXPECT_TRUE(endedWith(runProjectctl({"create", path, "--from-scalar", folder.path()}), 2, "",
                          "projectctl: " + folder.path() + ": Is a directory\n"));
    EXPECT_TRUE(folder.names().empty());
}

TEST_F(ProjectctlShow, ListsTheAttributesInTheOrderOfTheDirectory) {
    AttributeValues values = keyAttributes(keyWithScalar("ABC", key.baseX, key.baseY));
    values[5] = {1, 2, 3};
    values[72] = elementValue(163, "3F0");
    ProjectImage image = projectImage(values);
    image.directory[2].id = 72;  // what was y of the base point
    writeBytes(image.bytes());
    const ProgramEnd end = runProjectctl({"show", path});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.errors, "");
    const std::string start =
        path +
        ": 6 entries\n"
        "        id    offset      size  meaning\n"
        "         5        96         3  -\n"
        "                                not used: no attribute of the program\n"
        "        72        99        32  x of the base point\n"
        "                                0000000000000000000000000000000000000003f0\n"
        "        72       131        32  x of the base point\n"
        "                                not used: an entry before has this id\n"
        "        74       163         6  private scalar\n"
        "                                hidden: --secret shows it\n"
        "        75       169        32  x of the public point\n"
        "                                0";
    EXPECT_EQ(end.output.substr(0, start.size()), start);
}

TEST_F(ProjectctlShow, ShowsTheSecretOnDemandAlone) {
    write(keyAttributes(keyWithScalar("ABC", key.baseX, key.baseY)));
    const std::vector<std::string> words = {"show", path};
    const std::vector<std::string> asJson = {"show", path, "--json"};
    for (const auto& [shown, scalar] : {std::pair(words, " 0abc\n"), {asJson, "\"0abc\""}}) {
        EXPECT_EQ(runProjectctl(shown).output.find(scalar), std::string::npos);
        std::vector<std::string> all = shown;
        all.emplace_back("--secret");
        EXPECT_NE(runProjectctl(all).output.find(scalar), std::string::npos);
    }
}

TEST_F(ProjectctlShow, ShowsTheSameAsJson) {
    write(attributes);
    const ProgramEnd end = runProjectctl({"show", path, "--secret", "--json"});
    EXPECT_EQ(end.status, 0);
    const json shown = json::parse(end.output);
    EXPECT_EQ(shown.at("file"), path);
    ASSERT_EQ(shown.at("entries").size(), 5U);
    const std::array<std::string, 5> digits = {key.baseX, key.baseY, key.scalar, key.publicX,
                                               key.publicY};
    for (std::size_t i = 0; i < 5; ++i) {
        const json& entry = shown.at("entries").at(i);
        EXPECT_EQ(entry.at("id"), 72 + i);
        EXPECT_EQ(entry.at("size"), attributes.at(static_cast<std::uint32_t>(72 + i)).size());
        EXPECT_EQ(littleEndianBytes(entry.at("value").get<std::string>()),
                  littleEndianBytes(digits.at(i)));
        EXPECT_FALSE(entry.contains("remark"));
    }
}

TEST_F(ProjectctlShow, TellsOfValuesThatCountAsAbsent) {
    AttributeValues values = attributes;
    values[73] = Bytes(300);
    values[75] = elementValue(160, "12");
    write(values);
    const std::string output = runProjectctl({"show", path}).output;
    EXPECT_NE(output.find("y of the base point\n" + std::string(32, ' ') +
                          "attribute 73 (y of the base point) has 300 bytes"),
              std::string::npos)
        << output;
    EXPECT_NE(output.find("0000000000000000000000000000000000000012\n" + std::string(32, ' ') +
                          "attribute 75 (x of the public point) states 160 bits instead of 163"),
              std::string::npos)
        << output;
}

TEST_F(ProjectctlShow, TellsWhyAFileDoesNotLoad) {
    writeBytes({1, 2, 3});
    EXPECT_TRUE(
        endedWith(runProjectctl({"show", path}), 2, "",
                  "projectctl: " + path + ": not a project file (3 bytes; a header needs 24)\n"));
}

TEST_F(ProjectctlCheck, TellsThatAProjectIsSound) {
    write(attributes);
    EXPECT_TRUE(isFoundSound(runProjectctl({"check", path}), path));
    AttributeValues values = attributes;
    values.erase(74);
    write(values);
    EXPECT_TRUE(isFoundSound(runProjectctl({"check", path}), path, ", for verifying only"));
}

TEST_F(ProjectctlCheck, TellsEachFindingOnALine) {
    AttributeValues values = attributes;
    values[72] = elementValue(163, "5");
    values.erase(76);
    write(values);
    EXPECT_TRUE(endedWith(runProjectctl({"check", path}), 1,
                          path + ": the base point is not on the curve\n" + path +
                              ": attribute 76 (y of the public point) is absent\n"));
}

TEST_F(ProjectctlCheck, TellsThatAFileCouldNotBeJudged) {
    EXPECT_TRUE(
        endedWith(runProjectctl({"check", path}), 2, "",
                  "projectctl: " + path + ": cannot be opened: No such file or directory\n"));
}

TEST_F(ProjectctlCheck, TellsTheSameAsJson) {
    AttributeValues values = attributes;
    values.erase(76);
    write(values);
    std::filesystem::permissions(path, std::filesystem::perms{0644});
    const ProgramEnd end = runProjectctl({"check", path, "--json"});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(json::parse(end.output),
              json::parse(R"({"file": ")" + path +
                          R"(", "sound": false, "verifiesOnly": false, "findings": [
                              {"code": "project.permissions",
                               "text": "holds a private scalar and is open to users other than its owner: mode 0644; chmod it to 600, or to 640 if root owns it"},
                              {"code": "key.absent", "attribute": 76,
                               "text": "attribute 76 (y of the public point) is absent"}]})"));
    write(attributes);
    const ProgramEnd sound = runProjectctl({"check", path, "--json"});
    EXPECT_EQ(sound.status, 0);
    json told = json::parse(sound.output);
    EXPECT_EQ(told.erase("fingerprint"), 1U);
    EXPECT_EQ(told, json::parse(R"({"file": ")" + path +
                                R"(", "sound": true, "verifiesOnly": false, "findings": []})"));
}

TEST_F(ProjectctlStrip, CopiesWhatVerifyingReadsAndNothingElse) {
    // The scalar once more, wherever a reader of the key does not look.
    AttributeValues values = attributes;
    const Bytes scalar = littleEndianBytes(key.scalar);
    values[5] = scalar;
    values[200] = Bytes(key.scalar.begin(), key.scalar.end());
    for (const std::uint32_t id : {72U, 73U, 75U, 76U}) {
        std::copy_n(scalar.begin(), 4, values[id].begin() + 4);
        values[id].insert(values[id].end(), scalar.rbegin(), scalar.rend());
    }
    write(values);
    const std::string copy = folder.file("copy");
    EXPECT_TRUE(endedWith(runProjectctl({"strip", path, copy}), 0, ""));
    AttributeValues expected = attributes;
    expected.erase(74);
    EXPECT_EQ(fileBytes(copy), projectBytes(expected));
    EXPECT_EQ(modeOf(copy) & 0400U, 0400U);
    EXPECT_TRUE(isFoundSound(runProjectctl({"check", copy}), copy, ", for verifying only"));
    // A copy of the copy is the same.
    EXPECT_TRUE(endedWith(runProjectctl({"strip", copy, folder.file("again")}), 0, ""));
    EXPECT_EQ(fileBytes(folder.file("again")), fileBytes(copy));
}

TEST_F(ProjectctlStrip, RefusesWhatVerifiesNothing) {
    for (const auto& [id, reason] :
         {std::pair<std::uint32_t, std::string>{72, "attribute 72 (x of the base point) is absent"},
          {76, "attribute 76 (y of the public point) is absent"}}) {
        AttributeValues values = attributes;
        values.erase(id);
        write(values);
        EXPECT_TRUE(endedWith(runProjectctl({"strip", path, folder.file("copy")}), 2, "",
                              "projectctl: " + path + ": " + reason + "\n"));
    }
    EXPECT_EQ(folder.names(), Names{"my.project"});
}

TEST_F(ProjectctlStrip, ReplacesNoFileAndTellsWhyAProjectDoesNotLoad) {
    write(attributes);
    EXPECT_TRUE(
        endedWith(runProjectctl({"strip", path, path}), 2, "",
                  "projectctl: " + path +
                      ": already exists; no file is overwritten, so choose another name\n"));
    EXPECT_EQ(fileBytes(path), projectBytes(attributes));
    const std::string missing = folder.file("missing");
    EXPECT_TRUE(
        endedWith(runProjectctl({"strip", missing, folder.file("copy")}), 2, "",
                  "projectctl: " + missing + ": cannot be opened: No such file or directory\n"));
}

}  // namespace
