// The name that the program is started under, and the ends that it writes to.

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <string>

#include "tests/program/sign_program.h"
#include "tests/support/messages.h"
#include "tests/support/temporary_folder.h"

namespace {

/// The program run under an argument vector of this kind writes this first line.
testing::AssertionResult beginsWith(FirstLine firstLine, const std::vector<std::string>& arguments,
                                    std::string_view program) {
    ProgramCall call = requestCall(InputKind::form, "a=1", program);
    call.arguments = arguments;
    return endedWith(runProgram(call), refusedStatus,
                     expectedResponse(firstLine, "400 Bad Request", "text/plain", modeMissing));
}

/// A refusal and an answer end with their statuses, though nothing can be written to `descriptor`.
void expectExitStatusesWritingTo(int descriptor, bool filesClosedToGrowth = false) {
    ProgramCall call = requestCall(InputKind::form, "a=1");
    call.outputDescriptor = descriptor;
    call.filesClosedToGrowth = filesClosedToGrowth;
    EXPECT_TRUE(endedWith(runProgram(call), refusedStatus, ""));
    const SignRequest verifying{
        .operation = SignRequest::Operation::verify, .project = "p", .data = "d", .signature = "s"};
    call = requestCall(InputKind::json, bodyText(InputKind::json, verifying));
    call.outputDescriptor = descriptor;
    call.filesClosedToGrowth = filesClosedToGrowth;
    EXPECT_TRUE(endedWith(runProgram(call), 0, ""));
}

}  // namespace

TEST(ProgramInvocation, WritesTheStatusLineUnderANameWithThePrefix) {
    for (const char* name : {"nph-sign.cgi", "nph-", "nph-.cgi", "/srv/bin/nph-x", "C:\\cgi\\nph-x",
                             "/srv/a.b/nph-x"}) {
        EXPECT_TRUE(beginsWith(FirstLine::forClient, {name}, serverProgram)) << name;
    }
}

TEST(ProgramInvocation, LeavesTheStatusLineToTheServerUnderEveryOtherName) {
    for (const char* name :
         {"sign.cgi", "nph.cgi", "NPH-x", "nph", "/srv/nph-dir/x", "nph-/", "", "nph-dir\\x"}) {
        EXPECT_TRUE(beginsWith(FirstLine::forServer, {name}, clientProgram)) << name;
    }
}

TEST(ProgramInvocation, TakesAnEmptyArgumentVectorForAnEmptyName) {
    EXPECT_TRUE(beginsWith(FirstLine::forServer, {}, serverProgram));
    EXPECT_TRUE(beginsWith(FirstLine::forServer, {}, clientProgram));
}

TEST(ProgramInvocation, LooksAtNoFurtherArgument) {
    EXPECT_TRUE(beginsWith(FirstLine::forServer, {"sign.cgi", "nph-x", "--help"}, serverProgram));
    EXPECT_TRUE(beginsWith(FirstLine::forClient, {"nph-sign.cgi", "x"}, serverProgram));
}

TEST(ProgramInvocation, KeepsItsExitStatusOnAFullDevice) {
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_NE(full, -1);
    expectExitStatusesWritingTo(full);
    ::close(full);
}

TEST(ProgramInvocation, KeepsItsExitStatusWhenNoFileMayGrow) {
    const TemporaryFolder folder;
    const std::string path = folder.file("answer");
    const int answer = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_NE(answer, -1);
    expectExitStatusesWritingTo(answer, true);
    ::close(answer);
    EXPECT_EQ(std::filesystem::file_size(path), 0U);
}

TEST(ProgramInvocation, KeepsItsExitStatusWhenTheReaderOfTheAnswerIsGone) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    ::close(ends[0]);
    expectExitStatusesWritingTo(ends[1]);
    ::close(ends[1]);
}
