// Standard input that is cut, closed or slow; standard output that is closed, full or a pipe that
// nobody reads.

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "tests/faults/call_tracer.h"
#include "tests/faults/cut_request.h"
#include "tests/faults/ending_judge.h"
#include "tests/faults/fault_share.h"
#include "tests/faults/whole_request.h"

namespace {

using Input = ProgramCall::Input;

class StandardStreams : public testing::Test {
protected:
    /// The request with a fault of standard output, after which its status is the same and the
    /// files that it reads are as before.
    void expectNoHarm(const WholeRequest& request, const ProgramCall& call) {
        const Bytes project = fileBytes(requests.project());
        const Bytes file = fileBytes(requests.file());
        EXPECT_TRUE(judge.accepts(request, runProgram(call), {.outputFails = true}));
        EXPECT_EQ(judge.last(), Ending::cut);
        EXPECT_EQ(fileBytes(requests.project()), project);
        EXPECT_EQ(fileBytes(requests.file()), file);
    }

    /// The same, with this descriptor as standard output.
    void expectNoHarm(int output) {
        for (const WholeRequest& request : requests.all()) {
            for (const bool ignored : {false, true}) {
                ProgramCall call = request.call();
                call.outputDescriptor = output;
                call.brokenPipesIgnored = ignored;
                expectNoHarm(request, call);
            }
        }
    }

    WholeRequests requests;
    EndingJudge judge{requests};
};

using StandardInput = StandardStreams;
using StandardOutput = StandardStreams;

TEST_F(StandardInput, MayBeCutAtEveryLength) {
    std::vector<std::pair<const WholeRequest*, std::size_t>> cuts;
    for (const WholeRequest& request : requests.all()) {
        for (std::size_t length = 0; length < request.body.size(); ++length) {
            cuts.emplace_back(&request, length);
        }
    }
    EXPECT_GT(cuts.size(), 2000U);
    for (const std::size_t i : shareOf(cuts.size(), 400)) {
        const auto& [request, length] = cuts[i];
        ProgramCall call = request->call();
        call.pieces = {request->body.substr(0, length)};
        ASSERT_TRUE(judge.accepts(cutRequest(requests, *request, length), runProgram(call)))
            << length << " bytes of " << testing::PrintToString(request->body);
        ASSERT_EQ(judge.last(), Ending::answered);
    }
    judge.report("standard input cut short");
}

TEST_F(StandardInput, MayBeClosed) {
    for (const WholeRequest& request : requests.all()) {
        ProgramCall call = request.call();
        call.input = Input::closed;
        call.pieces.clear();
        EXPECT_TRUE(judge.accepts(cutRequest(requests, request, 0), runProgram(call)));
        EXPECT_EQ(judge.last(), Ending::answered);
    }
    judge.report("standard input closed");
}

TEST_F(StandardInput, MayComeByteByByte) {
    for (const WholeRequest& request : requests.all()) {
        ProgramCall call = request.call();
        call.pieces.clear();
        for (const char byte : request.body) {
            call.pieces.emplace_back(1, byte);
        }
        call.pause = std::chrono::milliseconds(0);
        EXPECT_TRUE(judge.accepts(request, runProgram(call)));
        EXPECT_EQ(judge.last(), Ending::answered);
    }
    judge.report("standard input written byte by byte");
}

TEST_F(StandardInput, MayGiveOneByteToEachRead) {
    for (const WholeRequest& request : requests.all()) {
        CallTracer tracer([](pid_t, const SystemCall& call) {
            const bool reads = call.number == SYS_read && call.arguments[0] == STDIN_FILENO;
            return reads ? CallChange{.kind = CallChange::Kind::shortened, .value = 1}
                         : CallChange{};
        });
        ProgramCall call = request.call();
        call.tracer = std::ref(tracer);
        EXPECT_TRUE(judge.accepts(request, runProgram(call)));
        EXPECT_EQ(judge.last(), Ending::answered);
        EXPECT_GT(tracer.calls().size(), request.body.size());
    }
    judge.report("standard input read byte by byte");
}

TEST_F(StandardOutput, MayBeClosed) {
    for (const WholeRequest& request : requests.all()) {
        ProgramCall call = request.call();
        call.outputClosed = true;
        expectNoHarm(request, call);
    }
    judge.report("standard output closed");
}

TEST_F(StandardOutput, MayBeClosedTogetherWithStandardInput) {
    for (const WholeRequest& request : requests.all()) {
        ProgramCall call = request.call();
        call.outputClosed = true;
        call.input = Input::closed;
        call.pieces.clear();
        expectNoHarm(cutRequest(requests, request, 0), call);
    }
    judge.report("standard input and output closed");
}

TEST_F(StandardOutput, MayBeFull) {
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_NE(full, -1);
    expectNoHarm(full);
    ::close(full);
    judge.report("standard output full");
}

TEST_F(StandardOutput, MayBeAPipeThatNobodyReads) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    ::close(ends[0]);
    expectNoHarm(ends[1]);
    ::close(ends[1]);
    judge.report("standard output a broken pipe");
}

}  // namespace
