// A file that another process shortens or lengthens between any two system calls of the request
// that signs or verifies it.

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>

#include "tests/faults/call_tracer.h"
#include "tests/faults/ending_judge.h"
#include "tests/faults/fault_share.h"
#include "tests/faults/whole_request.h"
#include "tests/support/long_run.h"

namespace {

/// Contents from this size on are not looked at.
constexpr std::size_t hugeSize = 0x7FFFFFFF;

/// A new size of the file, given to it before the system call of this number in the request.
struct SizeChange {
    const WholeRequest* request;
    std::size_t call;
    off_t size;
};

/// `size` bytes, of which those behind the content are zero.
std::string resized(std::string content, std::size_t size) {
    content.resize(size, '\0');
    return content;
}

class ChangedFile : public testing::Test {
protected:
    /// All changes to one of these sizes; to one of the huge ones when the file is mapped already.
    std::vector<SizeChange> changes(std::initializer_list<off_t> sizes,
                                    std::initializer_list<off_t> hugeSizes = {}) {
        std::vector<SizeChange> changes;
        for (const WholeRequest& request : requests.all()) {
            if (request.name.find("file") == std::string::npos) {
                continue;
            }
            CallTracer tracer([](pid_t, const SystemCall&) { return CallChange{}; });
            ProgramCall call = request.call();
            call.tracer = std::ref(tracer);
            EXPECT_TRUE(judge.accepts(request, runProgram(call)));
            bool isMapped = false;
            for (const SystemCall& made : tracer.calls()) {
                for (const off_t size : sizes) {
                    changes.push_back({&request, made.index, size});
                }
                for (const off_t size : hugeSizes) {
                    if (isMapped) {
                        changes.push_back({&request, made.index, size});
                    }
                }
                isMapped = isMapped || (made.number == SYS_mmap && made.arguments[2] == PROT_READ);
            }
        }
        return changes;
    }

    /// The end of the request while the change happens. The file is then as it was.
    ProgramEnd runChanging(const SizeChange& change) {
        CallTracer tracer([&](pid_t, const SystemCall& call) {
            if (call.index == change.call) {
                EXPECT_EQ(::truncate(requests.file().c_str(), change.size), 0);
            }
            return CallChange{};
        });
        ProgramCall call = change.request->call();
        call.tracer = std::ref(tracer);
        ProgramEnd end = runProgram(call);
        end.timedOut = tracer.timedOut();
        if (end.signal == 0) {
            EXPECT_EQ(tracer.openAtExit(), tracer.openAtStart());
        }
        requests.folder().write("file", Bytes(content.begin(), content.end()));
        return end;
    }

    /// Whether the end is that of the request over any of the contents that the file had, or, when
    /// it became shorter, death by a bus error.
    testing::AssertionResult isRight(const SizeChange& change, const ProgramEnd& end) {
        const auto size = static_cast<std::size_t>(change.size);
        const bool shorter = size < content.size();
        std::vector<std::string> contents{content};
        if (size < hugeSize && size > 0) {
            contents.push_back(resized(content, size));
        }
        testing::AssertionResult result = testing::AssertionFailure();
        for (const std::string& possible : contents) {
            WholeRequest request = *change.request;
            if (request.signs()) {
                request.data = possible;
            }
            result = judge.accepts(
                request, end, {.signals = shorter ? std::vector<int>{SIGBUS} : std::vector<int>{}});
            if (result) {
                return result;
            }
        }
        return result << "size " << change.size << " before call " << change.call;
    }

    void expectRightEnds(const std::vector<SizeChange>& cases, std::size_t share) {
        for (const std::size_t i : shareOf(cases.size(), share)) {
            EXPECT_TRUE(isRight(cases[i], runChanging(cases[i])));
        }
    }

    WholeRequests requests;
    EndingJudge judge{requests};
    const std::string content = [this] {
        const Bytes bytes = fileBytes(requests.file());
        return std::string(bytes.begin(), bytes.end());
    }();
};

TEST_F(ChangedFile, MayBecomeShorter) {
    expectRightEnds(changes({0, 1, 4095, 4096, 4097, 8191, 8192, 8193, 9000, 9999}), 150);
    judge.report("files shortened");
    if (isLongRun()) {
        EXPECT_GT(judge.count(Ending::dead), 10U);
    }
}

TEST_F(ChangedFile, MayBecomeLonger) {
    expectRightEnds(changes({10001, 12288, 12289, 20480, 400000},
                            {0x7FFFFFFF, 0x80000000, 0x100000000, 0x100000005}),
                    150);
    judge.report("files lengthened");
}

TEST(ReplacedProject, IsTheOneOrTheOther) {
    const WholeRequests requests;
    const WholeRequests others;
    const Bytes own = fileBytes(requests.project());
    const Bytes replacement = fileBytes(others.project());
    EndingJudge judge(requests);
    EndingJudge otherJudge(others);
    for (const char* name : {"sign data, form", "sign data, JSON", "verify data false, form"}) {
        const WholeRequest& request = requests.named(name);
        bool reached = true;
        for (std::size_t index = 0; reached; ++index) {
            reached = false;
            CallTracer tracer([&](pid_t, const SystemCall& call) {
                if (call.index == index) {
                    reached = true;
                    requests.folder().write("project", replacement);
                }
                return CallChange{};
            });
            ProgramCall call = request.call();
            call.tracer = std::ref(tracer);
            const ProgramEnd end = runProgram(call);
            requests.folder().write("project", own);
            EXPECT_TRUE(judge.accepts(request, end) || otherJudge.accepts(request, end))
                << name << ", before call " << index;
        }
    }
    judge.report("projects replaced, as before");
    otherJudge.report("projects replaced, as behind");
    EXPECT_GT(judge.count(Ending::answered), 50U);
    EXPECT_GT(otherJudge.count(Ending::answered), 20U);
}

}  // namespace
