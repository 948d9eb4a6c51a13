#include "tools/commands/check_command.h"

#include <sys/stat.h>

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

class CheckCommand : public testing::Test {
protected:
    /// The path of a project with these attributes, which its owner alone can use.
    std::string project(const AttributeValues& values) const {
        std::string path = folder.write("project", projectBytes(values));
        ::chmod(path.c_str(), 0600);
        return path;
    }

    static CommandEnd check(const std::string& path) {
        return runCommand(checkCommand, CheckOptions{.file = path, .json = false});
    }

    static CommandEnd checkAsJson(const std::string& path) {
        return runCommand(checkCommand, CheckOptions{.file = path, .json = true});
    }

    static CommandEnd said(int status, const std::string& output) {
        return {.status = status, .output = output, .errors = ""};
    }

    /// What stands in front of the findings and the verdict.
    static std::string fingerprintLine(const std::string& path, const AttributeValues& values) {
        return path + ": fingerprint of the public key: " +
               keyFingerprint(projectOf(values)).value_or("none") + "\n";
    }

    const TemporaryFolder folder;
    AttributeValues attributes = keyAttributes(randomProjectKey());
};

TEST_F(CheckCommand, SaysThatAProjectIsSound) {
    const std::string path = project(attributes);
    EXPECT_EQ(check(path), said(exitDone, fingerprintLine(path, attributes) + path + ": sound\n"));
    EXPECT_EQ(
        checkAsJson(path),
        said(exitDone,
             "{\"file\":\"" + path + "\",\"sound\":true,\"verifiesOnly\":false,\"fingerprint\":\"" +
                 keyFingerprint(projectOf(attributes)).value_or("none") + "\",\"findings\":[]}\n"));
}

TEST_F(CheckCommand, SaysThatAProjectVerifiesOnly) {
    attributes.erase(74);
    const std::string path = project(attributes);
    EXPECT_EQ(check(path), said(exitDone, fingerprintLine(path, attributes) + path +
                                              ": sound, for verifying only\n"));
    EXPECT_EQ(
        checkAsJson(path),
        said(exitDone,
             "{\"file\":\"" + path + "\",\"sound\":true,\"verifiesOnly\":true,\"fingerprint\":\"" +
                 keyFingerprint(projectOf(attributes)).value_or("none") + "\",\"findings\":[]}\n"));
}

TEST_F(CheckCommand, SaysEachFindingOnALineOfItsOwn) {
    attributes[74] = integerValue(0, {});
    attributes[72] = elementValue(163, "5");
    attributes[73] = elementValue(163, "5");
    const std::string path = project(attributes);
    EXPECT_EQ(check(path), said(exitNegative, fingerprintLine(path, attributes) + path +
                                                  ": the base point is not on the curve\n" + path +
                                                  ": attribute 74 (private scalar) is zero\n"));
}

TEST_F(CheckCommand, WritesEachFindingWithItsCodeAndItsAttribute) {
    attributes[74] = integerValue(curveOrderDigits);
    attributes[72] = elementValue(163, "5");
    attributes[73] = elementValue(163, "5");
    const CommandEnd end = checkAsJson(project(attributes));
    EXPECT_EQ(end.status, exitNegative);
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(end.output.find('\n'), end.output.size() - 1);
    const auto value = nlohmann::json::parse(end.output);
    EXPECT_EQ(value["sound"], false);
    EXPECT_EQ(value["verifiesOnly"], false);
    ASSERT_EQ(value["findings"].size(), 2U);
    EXPECT_EQ(value["findings"][0],
              (nlohmann::json{{"code", "key.off-curve"},
                              {"text", "the base point is not on the curve"}}));
    EXPECT_EQ(value["findings"][1],
              (nlohmann::json{{"code", "key.scalar-range"},
                              {"attribute", 74},
                              {"text", "attribute 74 (private scalar) is not below the order"}}));
}

TEST_F(CheckCommand, FindsADamagedFileUnsound) {
    const std::string path = folder.write("damaged", {'V', 'L', 'T'});
    EXPECT_EQ(check(path),
              said(exitNegative, path + ": not a project file (3 bytes; a header needs 24)\n"));
}

TEST_F(CheckCommand, FailsWhereNothingCanBeJudged) {
    const std::string missing = folder.file("missing");
    const CommandEnd failed = {
        .status = exitFailed,
        .output = "",
        .errors = "projectctl: " + missing + ": cannot be opened: No such file or directory\n"};
    EXPECT_EQ(check(missing), failed);
    EXPECT_EQ(checkAsJson(missing), failed);
    EXPECT_EQ(check(folder.path()),
              (CommandEnd{.status = exitFailed,
                          .output = "",
                          .errors = "projectctl: " + folder.path() + ": is a directory\n"}));
}

}  // namespace
