#include "tools/command_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/failing_calls.h"
#include "tests/support/project_builder.h"
#include "tests/support/standard_streams.h"
#include "tests/support/temporary_folder.h"
#include "tools/exit_status.h"

namespace {

TEST(RunCommandLine, TellsWhenMemoryRunsOutInACommand) {
    // What is to be said of each of them takes more than the limit.
    ProjectImage image;
    for (std::uint32_t id = 0; id < 100; ++id) {
        image.directory.insert(image.directory.end(), 2, {.id = id, .offset = 0, .size = 1});
    }
    const TemporaryFolder folder;
    const std::string project = folder.write("project", image.bytes());
    const std::vector<const char*> arguments = {"projectctl", "check", "--json", project.c_str()};
    int status = exitDone;
    testing::internal::CaptureStderr();
    const std::string output = capturedOutput([&] {
        ScopedFailingCalls calls;
        calls.blockLimit = 10'000;
        status = runCommandLine(static_cast<int>(arguments.size()), arguments.data());
    });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "projectctl: there is not enough memory\n");
    EXPECT_EQ(status, exitFailed);
    EXPECT_EQ(output, "");
}

}  // namespace
