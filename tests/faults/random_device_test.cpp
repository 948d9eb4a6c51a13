// Devices of randomness that are missing, fail or give less than they are asked for.

#include <sys/syscall.h>

#include <cerrno>

#include "tests/faults/call_errors.h"
#include "tests/faults/call_tracer.h"
#include "tests/faults/ending_judge.h"
#include "tests/faults/fault_share.h"
#include "tests/faults/whole_request.h"

namespace {

using Kind = CallChange::Kind;

/// What happens to the devices throughout a request.
struct DeviceFault {
    CallChange opening{};
    bool both = false;   ///< of /dev/random too, not of /dev/urandom alone
    CallChange first{};  ///< the first read
    CallChange later{};  ///< the others
};

CallChange failing(int error) {
    return {.kind = Kind::replaced, .value = -error};
}

CallChange shortened(std::int64_t count) {
    return {.kind = Kind::shortened, .value = count};
}

std::vector<DeviceFault> deviceFaults() {
    constexpr CallChange ended{.kind = Kind::replaced, .value = 0};
    std::vector<DeviceFault> faults{{.first = ended, .later = ended}};
    for (const int error : errorsOf(SYS_openat)) {
        faults.push_back({.opening = failing(error)});
        faults.push_back({.opening = failing(error), .both = true});
    }
    for (const int error : errorsOf(SYS_read)) {
        faults.push_back({.first = failing(error), .later = failing(error)});
        faults.push_back({.first = failing(error)});
        for (const std::int64_t count : {1, 7, 8, 9, 100, 127}) {
            faults.push_back({.first = shortened(count), .later = failing(error)});
        }
    }
    for (std::int64_t count = 1; count <= 130; ++count) {
        faults.push_back({.first = shortened(count), .later = shortened(count)});
        faults.push_back({.first = shortened(count), .later = ended});
    }
    return faults;
}

/// Lets the fault happen, and counts how often it did.
class FaultyDevice {
public:
    explicit FaultyDevice(const DeviceFault& fault)
        : fault_(fault), tracer_([this](pid_t, const SystemCall& call) { return change(call); }) {}

    CallTracer& tracer() { return tracer_; }
    std::size_t changes() const { return changes_; }

private:
    CallChange change(const SystemCall& call) {
        const std::vector<SystemCall>& before = tracer_.calls();
        if (!before.empty() && isDevice(before.back().path)) {
            device_ = before.back().result;
        }
        CallChange change{};
        if (call.path == "/dev/urandom" || (fault_.both && isDevice(call.path))) {
            change = fault_.opening;
        } else if (call.number == SYS_read && device_ > 0 &&
                   call.arguments[0] == static_cast<std::uint64_t>(device_)) {
            change = reads_++ == 0 ? fault_.first : fault_.later;
        }
        changes_ += change.kind == Kind::none ? 0 : 1;
        return change;
    }

    static bool isDevice(const std::string& path) {
        return path == "/dev/urandom" || path == "/dev/random";
    }

    DeviceFault fault_;
    CallTracer tracer_;
    std::int64_t device_ = -1;
    std::size_t reads_ = 0;
    std::size_t changes_ = 0;
};

TEST(RandomDevice, IsNotNeededForASignature) {
    const WholeRequests requests;
    EndingJudge judge(requests);
    const std::vector<DeviceFault> faults = deviceFaults();
    std::vector<std::pair<const WholeRequest*, DeviceFault>> cases;
    for (const WholeRequest& request : requests.all()) {
        for (const DeviceFault& fault : faults) {
            if (request.signs()) {
                cases.emplace_back(&request, fault);
            }
        }
    }
    EXPECT_GT(cases.size(), 1000U);
    for (const std::size_t i : shareOf(cases.size(), 200)) {
        const auto& [request, fault] = cases[i];
        FaultyDevice device(fault);
        ProgramCall call = request->call();
        call.tracer = std::ref(device.tracer());
        ASSERT_TRUE(judge.accepts(*request, runProgram(call)));
        ASSERT_EQ(judge.last(), Ending::answered);
        ASSERT_GT(device.changes(), 0U);
        ASSERT_EQ(device.tracer().openAtExit(), device.tracer().openAtStart());
    }
    judge.report("faults of the random device");
}

}  // namespace
