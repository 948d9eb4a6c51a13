#include "tools/commands/export_command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <tuple>

#include "tests/support/attribute_values.h"
#include "tests/support/libcrypto_curve.h"
#include "tests/support/project_key.h"
#include "tests/support/temporary_folder.h"
#include "tests/unit/tools/command_run.h"
#include "tools/exit_status.h"
#include "tools/signature/key_export.h"

namespace {

class ExportCommand : public testing::Test {
protected:
    CommandEnd runOn(const Bytes& bytes, bool privateKey = false) const {
        folder.write("project", bytes);
        return runCommand(exportCommand, {.file = path, .privateKey = privateKey});
    }

    /// How the command ends when it refuses the project.
    CommandEnd refused(const std::string& reason) const {
        return {.status = exitFailed,
                .output = "",
                .errors = "projectctl: " + path + ": " + reason + "\n"};
    }

    const TemporaryFolder folder;
    const std::string path = folder.file("project");
    const AttributeValues attributes = keyAttributes(randomProjectKey());
};

TEST_F(ExportCommand, WritesTheKeyThatIsAskedFor) {
    const ProjectFile project = projectOf(attributes);
    EXPECT_EQ(runOn(projectBytes(attributes)),
              (CommandEnd{exitDone, exportPublicKey(project).pem, ""}));
    EXPECT_EQ(runOn(projectBytes(attributes), true),
              (CommandEnd{exitDone, exportPrivateKey(project).pem, ""}));
    EXPECT_NE(exportPublicKey(project).pem, exportPrivateKey(project).pem);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"project"});
}

TEST_F(ExportCommand, TellsTheSameAsJson) {
    const std::string pem = runOn(projectBytes(attributes)).output;
    const CommandEnd end = runCommand(exportCommand, {.file = path, .json = true});
    EXPECT_EQ(end.status, exitDone);
    EXPECT_EQ(nlohmann::json::parse(end.output), (nlohmann::json{{"pem", pem}}));
    EXPECT_EQ(std::count(end.output.begin(), end.output.end(), '\n'), 1);
}

TEST_F(ExportCommand, NeedsNoScalarForThePublicKeyAlone) {
    AttributeValues verifying = attributes;
    verifying.erase(74);
    EXPECT_EQ(runOn(projectBytes(verifying)), runOn(projectBytes(attributes)));
    EXPECT_EQ(
        runOn(projectBytes(verifying), true),
        refused("attribute 74 (private scalar) is absent; a project without it only verifies"));
}

TEST_F(ExportCommand, RefusesAFileThatIsNoProject) {
    EXPECT_EQ(runCommand(exportCommand, {.file = path}).status, exitFailed);
    const CommandEnd end = runOn({'V', 'L', 'T', '3'});
    EXPECT_EQ(end.status, exitFailed);
    EXPECT_EQ(end.output, "");
    EXPECT_TRUE(end.errors.starts_with("projectctl: " + path + ": ")) << end.errors;
    EXPECT_TRUE(end.errors.ends_with("\n"));
}

TEST_F(ExportCommand, RefusesAKeyThatCannotBeUsed) {
    AttributeValues unusable = attributes;
    unusable.erase(73);
    for (const bool privateKey : {false, true}) {
        EXPECT_EQ(runOn(projectBytes(unusable), privateKey),
                  refused("attribute 73 (y of the base point) is absent"));
    }
    unusable[73] = elementValue(163, std::string(48, 'F'));
    EXPECT_EQ(
        runOn(projectBytes(unusable)),
        refused("attribute 73 (y of the base point) has bits at or above the degree of the field"));
}

TEST_F(ExportCommand, RefusesAPointThatOtherSoftwareWouldNotRead) {
    for (const auto& [x, y, reason] : {std::tuple{"0", "0",
                                                  " is (0, 0), which some software writes for "
                                                  "infinity; it is not a point of the curve"},
                                       std::tuple{"1", "5", " is not on the curve"}}) {
        for (const bool privateKey : {false, true}) {
            AttributeValues unsound = attributes;
            unsound[72] = elementValue(163, x);
            unsound[73] = elementValue(163, y);
            EXPECT_EQ(runOn(projectBytes(unsound), privateKey),
                      refused(std::string("the base point") + reason));
            unsound = attributes;
            unsound[75] = elementValue(163, x);
            unsound[76] = elementValue(163, y);
            EXPECT_EQ(runOn(projectBytes(unsound), privateKey),
                      refused(std::string("the public point") + reason));
        }
    }
}

TEST_F(ExportCommand, RefusesAPointOfAnotherOrder) {
    const CurveJudge curve;
    // The point of order 2 has x = 0 and the square root of b as its y.
    AffinePoint ofOrderTwo;
    ofOrderTwo.y = curve.pointWithX(0).value().y;
    const AffinePoint other = curve.add(curve.randomPoint(), ofOrderTwo);
    AttributeValues unsound = attributes;
    unsound[75] = elementValue(163, other.x.toHexadecimal());
    unsound[76] = elementValue(163, other.y.toHexadecimal());
    EXPECT_EQ(runOn(projectBytes(unsound)), refused("the public point is not of order n"));
    unsound[75] = elementValue(163, "0");
    unsound[76] = elementValue(163, ofOrderTwo.y.toHexadecimal());
    EXPECT_EQ(runOn(projectBytes(unsound)),
              refused("the public point has x = 0: it is the point of order 2"));
}

TEST_F(ExportCommand, RefusesACoordinateWithBytesMissing) {
    AttributeValues unsound = attributes;
    unsound[72].resize(28);
    EXPECT_EQ(runOn(projectBytes(unsound)),
              refused("attribute 72 (x of the base point) has 28 bytes instead of 32"));
}

TEST_F(ExportCommand, RefusesAPrivateKeyWhosePointsDoNotFit) {
    AttributeValues unsound = attributes;
    unsound[74] = integerValue("12345");
    EXPECT_EQ(runOn(projectBytes(unsound)).status, exitDone);
    const CommandEnd end = runOn(projectBytes(unsound), true);
    EXPECT_EQ(end.status, exitFailed);
    EXPECT_EQ(end.output, "");
    EXPECT_NE(end.errors.find("public point"), std::string::npos) << end.errors;
}

TEST_F(ExportCommand, MindsNothingThatTheKeyIsNotMadeOf) {
    AttributeValues padded = attributes;
    padded[72].push_back(0);
    padded[9] = {1, 2, 3};
    EXPECT_EQ(runOn(projectBytes(padded)), runOn(projectBytes(attributes)));
    EXPECT_EQ(runOn(projectBytes(padded), true), runOn(projectBytes(attributes), true));
}

}  // namespace
