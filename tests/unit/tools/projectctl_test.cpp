#include <gtest/gtest.h>
#include <sys/stat.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/program_run.h"
#include "tests/support/project_builder.h"
#include "tests/support/project_key.h"
#include "tests/support/temporary_folder.h"

namespace {

const std::string usage = "usage: projectctl create FILE\n";

/// Runs projectctl with these arguments behind its name.
ProgramEnd runProjectctl(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "projectctl");
    ProgramCall call;
    call.path = std::string(SIGN_PROGRAM_FOLDER) + "/projectctl";
    call.arguments = std::move(arguments);
    return runProgram(call);
}

TEST(Projectctl, CreatesAProjectInSilence) {
    const TemporaryFolder folder;
    const std::string path = folder.file("project");
    const ProgramEnd end = runProjectctl({"create", path});
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "");
    EXPECT_EQ(folder.names(), std::vector<std::string>{"project"});
    EXPECT_TRUE(judgeAcceptsKey(keyFromAttributes(readProjectBytes(fileBytes(path)))));
    struct stat status;
    ASSERT_EQ(::stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST(Projectctl, CreatesAnotherKeyInEachProcess) {
    const TemporaryFolder folder;
    const std::string first = folder.file("first");
    const std::string second = folder.file("second");
    ASSERT_EQ(runProjectctl({"create", first}).status, 0);
    ASSERT_EQ(runProjectctl({"create", second}).status, 0);
    const AttributeValues firstValues = readProjectBytes(fileBytes(first));
    const AttributeValues secondValues = readProjectBytes(fileBytes(second));
    for (const std::uint32_t id : {72U, 73U, 74U, 75U, 76U}) {
        EXPECT_NE(firstValues.at(id), secondValues.at(id)) << "attribute " << id;
    }
}

TEST(Projectctl, RefusesAFileThatExists) {
    const TemporaryFolder folder;
    const std::string path = folder.write("project", {1, 2, 3});
    const ProgramEnd end = runProjectctl({"create", path});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.output, "");
    EXPECT_EQ(end.errors, "projectctl: " + path + ": File exists\n");
    EXPECT_EQ(fileBytes(path), (Bytes{1, 2, 3}));
    EXPECT_EQ(folder.names(), std::vector<std::string>{"project"});
}

TEST(Projectctl, TellsOfAMissingFolder) {
    const TemporaryFolder folder;
    const std::string path = folder.file("missing/project");
    const ProgramEnd end = runProjectctl({"create", path});
    EXPECT_EQ(end.status, 1);
    EXPECT_EQ(end.errors, "projectctl: " + path + ": No such file or directory\n");
}

TEST(Projectctl, TellsItsUsage) {
    const TemporaryFolder folder;
    const std::string path = folder.file("project");
    const std::vector<std::vector<std::string>> wrong = {
        {}, {"create"}, {path}, {"create", path, "more"}, {"Create", path}, {"remove", path}};
    for (const std::vector<std::string>& arguments : wrong) {
        const ProgramEnd end = runProjectctl(arguments);
        EXPECT_EQ(end.status, 2);
        EXPECT_EQ(end.output, "");
        EXPECT_EQ(end.errors, usage);
    }
    EXPECT_TRUE(folder.names().empty());
}

}  // namespace
