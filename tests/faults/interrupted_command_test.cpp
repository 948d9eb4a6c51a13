// projectctl when it is told to end at any moment: what is reported is what is there.

#include <fcntl.h>
#include <sys/syscall.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/faults/call_tracer.h"
#include "tests/projectctl/projectctl_run.h"
#include "tests/support/project_builder.h"
#include "tests/support/temporary_folder.h"

namespace {

using Names = std::vector<std::string>;

/// The end of `projectctl create` that gets a signal before one of its system calls; `named` is on
/// a file system where each file has a name.
struct InterruptedCreate {
    int signal;
    bool named;
    std::size_t index = 0;
    bool sent = false;

    ProgramEnd run(const std::string& path) {
        CallTracer tracer([this](pid_t process, const SystemCall& call) -> CallChange {
            if (call.index == index) {
                sent = true;
                ::kill(process, signal);
            }
            const bool unnamed = call.number == SYS_openat &&
                                 (call.arguments[2] & O_TMPFILE) == std::uint64_t{O_TMPFILE};
            return named && unnamed
                       ? CallChange{.kind = CallChange::Kind::replaced, .value = -EOPNOTSUPP}
                       : CallChange{};
        });
        ProgramCall call = projectctlCall({"create", path});
        call.tracer = std::ref(tracer);
        return runProgram(call);
    }
};

class InterruptedCommand : public testing::TestWithParam<bool> {};

TEST_P(InterruptedCommand, HasMadeItsFileOrEndsByTheSignalAndLeavesNothing) {
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
        // A program inherits what is ignored.
        const auto handler = std::signal(signal, SIG_DFL);
        unsigned finished = 0;
        unsigned ended = 0;
        InterruptedCreate create{.signal = signal, .named = GetParam()};
        do {
            const TemporaryFolder folder;
            create.sent = false;
            const ProgramEnd end = create.run(folder.file("project"));
            EXPECT_EQ(end.errors, "");
            if (end.signal == 0) {
                ++finished;
                EXPECT_EQ(end.status, 0);
                EXPECT_EQ(folder.names(), Names{"project"});
                EXPECT_EQ(readProjectBytes(fileBytes(folder.file("project"))).size(), 5U);
            } else {
                ++ended;
                EXPECT_EQ(end.signal, signal);
                EXPECT_EQ(folder.names(), Names{}) << "call " << create.index;
            }
            ++create.index;
        } while (create.sent);
        std::signal(signal, handler);
        // Behind the call that gives the name there are others, and the last round sends nothing.
        EXPECT_GT(finished, 3U);
        EXPECT_GT(ended, 20U);
    }
}

INSTANTIATE_TEST_SUITE_P(Named, InterruptedCommand, testing::Bool(),
                         testing::PrintToStringParamName());

}  // namespace
