// Each allocation of a request fails once, by its number, and then each and all that follow.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>

#include "tests/faults/call_tracer.h"
#include "tests/faults/ending_judge.h"
#include "tests/faults/fault_share.h"
#include "tests/faults/whole_request.h"
#include "tests/support/standard_streams.h"

namespace {

/// An allocation of a request that fails, alone or with all behind it.
struct AllocationFault {
    const WholeRequest* request;
    unsigned long first;
    bool alone;
    bool inStart;  ///< of the C library, which has ends of its own
};

/// The program whose allocations fail, started under the request's own program's name. It writes
/// their number to `counter`. Where it ends by itself, it has closed what it opened.
ProgramEnd runFailing(const WholeRequest& request, int counter,
                      const std::map<std::string, std::string>& limits = {}) {
    ProgramCall call = request.call();
    call.path = SIGN_FAILING_PROGRAM;
    call.environment["ALLOCATIONS_DESCRIPTOR"] = std::to_string(counter);
    call.environment.insert(limits.begin(), limits.end());
    CallTracer tracer([](pid_t, const SystemCall&) { return CallChange{}; });
    call.tracer = std::ref(tracer);
    ProgramEnd end = runProgram(call);
    end.timedOut = tracer.timedOut();
    if (end.signal == 0) {
        EXPECT_EQ(tracer.openAtExit(), tracer.openAtStart()) << request.name;
    }
    return end;
}

class AllocationFaults : public testing::Test {
protected:
    AllocationFaults() : counter(anonymousFile("")) {
        // The program inherits it.
        ::fcntl(counter, F_SETFD, 0);
    }
    ~AllocationFaults() override { ::close(counter); }

    struct Counts {
        unsigned long all = 0;
        unsigned long inStart = 0;
    };

    /// As the program wrote them; zeros when none of its allocations failed and it died.
    Counts counted() const {
        Counts counts;
        const std::string content = fileContent(counter);
        std::memcpy(&counts, content.data(), std::min(content.size(), sizeof counts));
        return counts;
    }

    /// How many allocations the undisturbed request makes; a signature makes more or less of them.
    Counts allocationsOf(const WholeRequest& request) {
        EXPECT_EQ(::ftruncate(counter, 0), 0);
        EXPECT_TRUE(judge.accepts(request, runFailing(request, counter)));
        EXPECT_EQ(judge.last(), Ending::answered);
        const Counts counts = counted();
        EXPECT_GT(counts.all, counts.inStart + 5);
        return counts;
    }

    std::vector<AllocationFault> faultsOfAll() {
        std::vector<AllocationFault> faults;
        for (const WholeRequest& request : requests.all()) {
            const Counts counts = allocationsOf(request);
            for (unsigned long number = 1; number <= counts.all; ++number) {
                const bool inStart = number <= counts.inStart;
                faults.push_back({&request, number, true, inStart});
                faults.push_back({&request, number, false, inStart});
            }
        }
        return faults;
    }

    /// Runs a request with its fault, and notes whether the fault was reached.
    void expectProperEnding(const AllocationFault& fault) {
        EXPECT_EQ(::ftruncate(counter, 0), 0);
        std::map<std::string, std::string> limits{{"FAIL_ALLOCATION", std::to_string(fault.first)}};
        if (fault.alone) {
            limits["FAIL_ALLOCATION_LAST"] = limits["FAIL_ALLOCATION"];
        }
        const ProgramEnd end = runFailing(*fault.request, counter, limits);
        Allowance allowance{.answeredBeforeDeath = true, .signals = {SIGABRT}};
        if (fault.inStart) {
            allowance = {
                .errorsSpoken = true, .signals = {SIGABRT, SIGSEGV}, .failureStatus = true};
        }
        ASSERT_TRUE(judge.accepts(*fault.request, end, allowance))
            << "allocation " << fault.first << (fault.alone ? " alone" : " and all behind it");
        reached += counted().all >= fault.first ? 1 : 0;
    }

    WholeRequests requests;
    EndingJudge judge{requests};
    int counter;
    std::size_t reached = 0;
};

TEST_F(AllocationFaults, LeaveEachRequestWithAProperEnding) {
    const std::vector<AllocationFault> faults = faultsOfAll();
    EXPECT_GT(faults.size(), 1000U);
    const std::vector<std::size_t> share = shareOf(faults.size(), 600);
    for (const std::size_t i : share) {
        ASSERT_NO_FATAL_FAILURE(expectProperEnding(faults[i]));
    }
    EXPECT_GT(reached, share.size() * 9 / 10);
    judge.report("failed allocations, " + std::to_string(reached) + " reached");
}

TEST_F(AllocationFaults, WithinJsonAreItsRefusal) {
    const WholeRequest& request = requests.named("project missing, JSON");
    const Counts counts = allocationsOf(request);
    std::vector<unsigned long> refused;
    for (unsigned long number = counts.inStart + 1; number <= counts.all; ++number) {
        ASSERT_NO_FATAL_FAILURE(expectProperEnding({&request, number, true, false}));
        if (judge.last() == Ending::refused) {
            refused.push_back(number);
        }
    }
    // From the parser's first block to its last.
    ASSERT_GT(refused.size(), 5U);
    EXPECT_EQ(refused.back() - refused.front() + 1, refused.size());
    // Neither the end of the reading nor the answer takes a block.
    for (const unsigned long number : refused) {
        ASSERT_NO_FATAL_FAILURE(expectProperEnding({&request, number, false, false}));
        EXPECT_EQ(judge.last(), Ending::refused) << "allocation " << number << " and all behind it";
    }
}

}  // namespace
