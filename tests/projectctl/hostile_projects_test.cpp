// Project files that are made to cost as much as can be: each command ends promptly, and takes
// memory that goes with the size of the file.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <string>

#include "tests/projectctl/projectctl_run.h"
#include "tests/support/hostile_project.h"
#include "tests/support/project_key.h"
#include "tests/support/temporary_folder.h"

namespace {

constexpr std::size_t fileSize = 64UL << 20;
constexpr std::chrono::seconds prompt{20};

/// The command's end. Its output is not kept if there are millions of lines.
ProgramEnd run(std::vector<std::string> arguments, bool outputKept = true) {
    ProgramCall call = projectctlCall(std::move(arguments));
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    call.outputDescriptor = outputKept ? -1 : nowhere;
    ProgramEnd end = runProgram(call);
    ::close(nowhere);
    EXPECT_LT(end.processorTime, prompt);
    EXPECT_LE(end.peakMemory, 8 * fileSize);
    return end;
}

class ProjectctlHostileProject : public testing::TestWithParam<HostileProject> {
protected:
    ProjectctlHostileProject() {
        folder.write("project", hostileBytes(GetParam(), fileSize, keyAttributes(key)));
        ::chmod(path.c_str(), 0600);
    }

    const ProjectKey key = randomProjectKey();
    const TemporaryFolder folder;
    const std::string path = folder.file("project");
};

TEST_P(ProjectctlHostileProject, IsChecked) {
    const ProgramEnd check = run({"check", path});
    if (GetParam().hasRepeatedIds) {
        EXPECT_EQ(check.status, 1);
        EXPECT_NE(check.output.find(" in the directory; "), std::string::npos);
    } else {
        EXPECT_TRUE(isFoundSound(check, path));
    }
}

TEST_P(ProjectctlHostileProject, IsExplained) {
    const ProgramEnd explained = run({"explain", "--project", path, "--data", "x"});
    EXPECT_EQ(explained.status, 0);
    EXPECT_NE(explained.output.find("a signature is made"), std::string::npos);
}

TEST_P(ProjectctlHostileProject, IsStripped) {
    const std::string copy = folder.file("copy");
    EXPECT_TRUE(endedWith(run({"strip", path, copy}), 0, ""));
    EXPECT_TRUE(isFoundSound(run({"check", copy}), copy, ", for verifying only"));
}

INSTANTIATE_TEST_SUITE_P(, ProjectctlHostileProject, testing::ValuesIn(hostileProjects()),
                         [](const auto& info) { return std::string(info.param.name); });

// A quarter of the size: the words of an entry cost more than reading it.
TEST(ProjectctlHostileShow, WritesAMillionEntries) {
    const TemporaryFolder folder;
    const std::string path =
        folder.write("project", hostileBytes(hostileProjects().front(), fileSize / 4, {{74, {1}}}));
    EXPECT_TRUE(endedWith(run({"show", path}, false), 0, ""));
    EXPECT_TRUE(endedWith(run({"show", "--json", path}, false), 0, ""));
}

}  // namespace
