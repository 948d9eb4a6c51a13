#include "tools/commands/show_command.h"

#include <nlohmann/json.hpp>
#include <string>

#include "tests/support/attribute_values.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/temporary_folder.h"
#include "tests/unit/tools/command_run.h"
#include "tools/exit_status.h"
#include "tools/signature/key_fingerprint.h"

namespace {

// A key that is the same in every run: SEC 2 version 2.0, section 3.2.3, with a scalar of 5.
const std::string baseX = "3F0EBA16286A2D57EA0991168D4994637E8343E36";
const std::string baseY = "D51FBC6C71A0094FA2CDD545B11C5C0C797324F1";

class ShowCommand : public testing::Test {
protected:
    std::string project(const AttributeValues& values) const {
        return folder.write("project", projectBytes(values));
    }

    static CommandEnd show(const std::string& path, bool secret = false) {
        return runCommand(showCommand, ShowOptions{.file = path, .secret = secret, .json = false});
    }

    /// The entries that --json shows.
    static nlohmann::json shownEntries(const std::string& path, bool secret = false) {
        const CommandEnd end =
            runCommand(showCommand, ShowOptions{.file = path, .secret = secret, .json = true});
        EXPECT_EQ(end.status, exitDone);
        EXPECT_EQ(end.errors, "");
        EXPECT_EQ(end.output.find('\n'), end.output.size() - 1);
        const auto value = nlohmann::json::parse(end.output);
        EXPECT_EQ(value["file"], path);
        return value["entries"];
    }

    const TemporaryFolder folder;
    const ProjectKey key = randomProjectKey();
    AttributeValues attributes = keyAttributes(key);
};

TEST_F(ShowCommand, ShowsIdOffsetSizeMeaningAndValueOfEachAttribute) {
    const std::string path = project({{72, elementValue(163, baseX)},
                                      {73, elementValue(163, baseY)},
                                      {74, integerValue("123456789")},
                                      {4000000000, {1, 2, 3}}});
    const std::string start =
        path +
        ": 4 entries\n"
        "        id    offset      size  meaning\n"
        "        72        72        32  x of the base point\n"
        "                                03f0eba16286a2d57ea0991168d4994637e8343e36\n"
        "        73       104        32  y of the base point\n"
        "                                00d51fbc6c71a0094fa2cdd545b11c5c0c797324f1\n"
        "        74       136         9  private scalar\n";
    const std::string end =
        "4000000000       145         3  -\n"
        "                                not used: no attribute of the program\n";
    const std::string indent(32, ' ');
    EXPECT_EQ(show(path),
              (CommandEnd{.status = exitDone,
                          .output = start + indent + "hidden: --secret shows it\n" + end,
                          .errors = ""}));
    EXPECT_EQ(show(path, true), (CommandEnd{.status = exitDone,
                                            .output = start + indent + "0123456789\n" + end,
                                            .errors = ""}));
}

TEST_F(ShowCommand, ShowsTheValuesOfTheKey) {
    const nlohmann::json entries = shownEntries(project(attributes), true);
    ASSERT_EQ(entries.size(), 5U);
    const std::vector<std::string> values = {key.baseX, key.baseY, key.scalar, key.publicX,
                                             key.publicY};
    for (std::size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(entries[i]["id"], 72 + i);
        EXPECT_EQ(littleEndianBytes(entries[i]["value"].get<std::string>()),
                  littleEndianBytes(values[i]));
        EXPECT_FALSE(entries[i].contains("remark"));
    }
}

TEST_F(ShowCommand, EndsWithTheFingerprintOfTheKey) {
    const std::string path = project(attributes);
    const std::string fingerprint = keyFingerprint(projectOf(attributes)).value_or("none");
    EXPECT_TRUE(
        show(path).output.ends_with("\nfingerprint of the public key: " + fingerprint + "\n"));
    const CommandEnd json =
        runCommand(showCommand, ShowOptions{.file = path, .secret = false, .json = true});
    EXPECT_EQ(nlohmann::json::parse(json.output)["fingerprint"], fingerprint);
}

TEST_F(ShowCommand, ShowsTheScalarOnRequestAlone) {
    const std::string path = project(attributes);
    for (const std::string& output :
         {show(path).output,
          runCommand(showCommand, ShowOptions{.file = path, .secret = false, .json = true})
              .output}) {
        EXPECT_NE(output.find("hidden: --secret shows it"), std::string::npos);
        const auto scalar = shownEntries(path, true)[2]["value"].get<std::string>();
        EXPECT_EQ(output.find(scalar), std::string::npos);
        EXPECT_EQ(output.find(scalar.substr(10, 16)), std::string::npos);
    }
    EXPECT_FALSE(shownEntries(path)[2].contains("value"));
}

TEST_F(ShowCommand, ShowsBitsAboveTheStatedOnes) {
    Bytes value = elementValue(163, baseX);
    value[31] = 0xAB;
    EXPECT_EQ(shownEntries(project({{72, value}}))[0]["value"],
              "ab000003f0eba16286a2d57ea0991168d4994637e8343e36");
}

TEST_F(ShowCommand, ShowsAsManyBytesAsTheStatedBitsTake) {
    for (const auto& [bits, bytes] : {std::pair{1U, 1U}, {8, 1}, {9, 2}, {160, 20}, {161, 21}}) {
        const std::string digits(2 * bytes - 1, '0');
        EXPECT_EQ(shownEntries(project({{72, elementValue(bits, "1")}}))[0]["value"], digits + '1')
            << bits;
    }
}

TEST_F(ShowCommand, TellsWhyAnAttributeGivesNoValue) {
    const nlohmann::json entries = shownEntries(
        project({{72, elementValue(513, "1")}, {73, elementValue(160, "1")}, {74, Bytes(297)}}),
        true);
    EXPECT_EQ(entries[0],
              (nlohmann::json{{"id", 72},
                              {"offset", 60},
                              {"size", 76},
                              {"meaning", "x of the base point"},
                              {"remark",
                               "attribute 72 (x of the base point) states 513 bits, has room for "
                               "512, and counts as absent"}}));
    EXPECT_EQ(entries[1]["value"], "0000000000000000000000000000000000000001");
    EXPECT_EQ(entries[1]["remark"],
              "attribute 73 (y of the base point) states 160 bits instead of 163");
    EXPECT_EQ(entries[2]["remark"],
              "attribute 74 (private scalar) has 297 bytes, of which at most 296 are taken, and "
              "counts as absent");
    EXPECT_FALSE(entries[2].contains("value"));
}

TEST_F(ShowCommand, TellsOfASecondEntryThatDoesNotCount) {
    ProjectImage image = projectImage({{72, elementValue(163, baseX)}, {75, Bytes(32, 1)}});
    image.directory[1].id = 72;
    const nlohmann::json entries = shownEntries(folder.write("twice", image.bytes()));
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0]["value"], "03f0eba16286a2d57ea0991168d4994637e8343e36");
    EXPECT_FALSE(entries[1].contains("value"));
    EXPECT_EQ(entries[1]["remark"], "not used: an entry before has this id");
}

TEST_F(ShowCommand, CountsTheEntries) {
    const std::string path = folder.write("empty", ProjectImage().bytes());
    EXPECT_EQ(show(path),
              (CommandEnd{.status = exitDone, .output = path + ": 0 entries\n", .errors = ""}));
    EXPECT_TRUE(shownEntries(path).empty());
    const std::string one = project({{1, {2}}});
    EXPECT_TRUE(show(one).output.starts_with(one + ": 1 entry\n"));
}

TEST_F(ShowCommand, FailsForAFileThatDoesNotLoad) {
    Bytes bytes = projectBytes(attributes);
    bytes.back() ^= 1;
    const std::string damaged = folder.write("damaged", bytes);
    const CommandEnd failed = {
        .status = exitFailed,
        .output = "",
        .errors = "projectctl: " + damaged +
                  ": is damaged: the digest in its header is not that of its body\n"};
    EXPECT_EQ(show(damaged), failed);
    EXPECT_EQ(runCommand(showCommand, ShowOptions{.file = damaged, .secret = true, .json = true}),
              failed);
    const std::string missing = folder.file("missing");
    EXPECT_EQ(show(missing).errors,
              "projectctl: " + missing + ": cannot be opened: No such file or directory\n");
}

}  // namespace
