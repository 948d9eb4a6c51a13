// Each system call of a request fails once, by its number, with each error that it can have, and
// each read and write is once shorter than asked for.

#include <sys/syscall.h>

#include <csignal>

#include "tests/faults/call_errors.h"
#include "tests/faults/call_tracer.h"
#include "tests/faults/ending_judge.h"
#include "tests/faults/fault_share.h"
#include "tests/faults/whole_request.h"
#include "tests/support/random_operands.h"

namespace {

/// A fault of one call of one request.
struct CallFault {
    const WholeRequest* request;
    SystemCall call;
    CallChange change;
    bool inMain;  ///< not before it, in the C library's start
};

/// The random device gives as much as it is asked for; not every count makes another case.
bool isCounted(const SystemCall& call, const CallChange& change) {
    constexpr std::int64_t longestCounted = 512;
    return change.kind != CallChange::Kind::shortened || call.result <= longestCounted ||
           change.value % 64 < 10;
}

/// The calls of the undisturbed request.
std::vector<SystemCall> callsOf(const WholeRequest& request) {
    CallTracer tracer([](pid_t, const SystemCall&) { return CallChange{}; });
    ProgramCall call = request.call();
    call.tracer = std::ref(tracer);
    (void)runProgram(call);
    return tracer.calls();
}

std::vector<CallFault> faultsOfAll(const WholeRequests& requests) {
    std::vector<CallFault> faults;
    for (const WholeRequest& request : requests.all()) {
        std::vector<SystemCall> before;
        bool inMain = false;
        for (const SystemCall& call : callsOf(request)) {
            inMain = inMain || (call.number == SYS_rt_sigaction && call.arguments[0] == SIGPIPE);
            for (const CallChange& change : faultsOf(call, before)) {
                if (isCounted(call, change)) {
                    faults.push_back({&request, call, change, inMain});
                }
            }
            before.push_back(call);
        }
    }
    return faults;
}

bool isShortened(const CallFault& fault) {
    return fault.change.kind == CallChange::Kind::shortened;
}

class SystemCallFaults : public testing::Test {
protected:
    /// Runs those of all faults that are chosen, or this many of them.
    void expectProperEndings(bool (*chosen)(const CallFault&), std::size_t count) {
        std::vector<CallFault> faults = faultsOfAll(requests);
        EXPECT_GT(faults.size(), 3000U);
        std::erase_if(faults, [&](const CallFault& fault) { return !chosen(fault); });
        EXPECT_GT(faults.size(), 1000U);
        for (const std::size_t i : shareOf(faults.size(), count)) {
            ASSERT_NO_FATAL_FAILURE(expectProperEnding(faults[i]));
        }
    }

    void expectProperEnding(const CallFault& fault) {
        bool reached = false;
        bool others = false;
        CallTracer tracer([&](pid_t, const SystemCall& call) {
            others = others || call.number == SYS_fork || call.number == SYS_vfork ||
                     call.number == SYS_clone || call.number == SYS_clone3;
            const bool here = call.index == fault.call.index && call.number == fault.call.number;
            reached = reached || here;
            return here ? fault.change : CallChange{};
        });
        ProgramCall call = fault.request->call();
        call.tracer = std::ref(tracer);
        ProgramEnd end = runProgram(call);
        end.timedOut = tracer.timedOut();
        const bool output = fault.call.number == SYS_write && fault.call.arguments[0] == 1;
        ASSERT_TRUE(judge.accepts(*fault.request, end,
                                  {.outputFails = output,
                                   .errorsSpoken = !fault.inMain,
                                   .signals = fault.inMain ? std::vector<int>{SIGABRT}
                                                           : std::vector<int>{SIGABRT, SIGSEGV},
                                   .failureStatus = !fault.inMain}))
            << "call " << fault.call.index << ", number " << fault.call.number << ", change "
            << static_cast<int>(fault.change.kind) << " to " << fault.change.value;
        ASSERT_TRUE(reached) << fault.request->name << ", call " << fault.call.index;
        ASSERT_FALSE(others) << "another process was started";
        if (judge.last() != Ending::dead) {
            ASSERT_EQ(tracer.openAtExit(), tracer.openAtStart())
                << fault.request->name << ", call " << fault.call.index << ", number "
                << fault.call.number;
        }
    }

    WholeRequests requests;
    EndingJudge judge{requests};
};

using SystemCallErrors = SystemCallFaults;
using ShortReadsAndWrites = SystemCallFaults;

TEST_F(SystemCallErrors, LeaveEachRequestWithAProperEnding) {
    expectProperEndings([](const CallFault& fault) { return !isShortened(fault); }, 500);
    judge.report("errors of system calls");
}

TEST_F(SystemCallErrors, AreListedForEachCallThatCanFail) {
    for (const WholeRequest& request : requests.all()) {
        for (const SystemCall& call : callsOf(request)) {
            const bool canFail = call.number != SYS_set_tid_address &&
                                 call.number != SYS_exit_group &&
                                 (call.number != SYS_brk || call.arguments[0] != 0);
            EXPECT_EQ(faultsOf(call, {}).empty(), !canFail)
                << request.name << ", number " << call.number;
        }
    }
}

TEST_F(ShortReadsAndWrites, ChangeNoAnswer) {
    expectProperEndings(isShortened, 200);
    judge.report("short reads and writes");
    EXPECT_EQ(judge.count(Ending::refused) + judge.count(Ending::cut) + judge.count(Ending::dead),
              0U);
}

}  // namespace
