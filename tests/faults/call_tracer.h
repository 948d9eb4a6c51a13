#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// One system call of a traced program.
struct SystemCall {
    std::size_t index = 0;  ///< 0 for the first one after the program's start
    std::uint64_t number = 0;
    std::array<std::uint64_t, 6> arguments{};
    std::string path{};       ///< of a file that is opened
    std::int64_t result = 0;  ///< as the program sees it; the negative error number of a failure
};

/// What becomes of a system call.
struct CallChange {
    enum class Kind {
        none,
        replaced,   ///< not made; the program sees `value` as its result
        hidden,     ///< made; the program sees `value` as its result
        shortened,  ///< made for `value` bytes at most, in a read or a write
    };
    Kind kind = Kind::none;
    std::int64_t value = 0;
};

/// Asked about each call before it is made; it may also change the world around the program.
using CallWatcher = std::function<CallChange(pid_t, const SystemCall&)>;

/// Sees a program to its end with `ptrace`, as the tracer of a `ProgramCall`.
class CallTracer {
public:
    explicit CallTracer(CallWatcher watcher) : watcher_(std::move(watcher)) {}

    int operator()(pid_t process, rusage& usage);

    /// All calls that were made or changed, in their order.
    const std::vector<SystemCall>& calls() const { return calls_; }

    /// The descriptors that stood open at the start, and when the program ended by itself.
    const std::vector<int>& openAtStart() const { return openAtStart_; }
    const std::vector<int>& openAtExit() const { return openAtExit_; }

    bool timedOut() const { return timedOut_; }

private:
    int waitForStop(pid_t process, rusage& usage);
    void enterCall(pid_t process);
    void leaveCall(pid_t process);

    CallWatcher watcher_;
    std::vector<SystemCall> calls_;
    std::vector<int> openAtStart_;
    std::vector<int> openAtExit_;
    CallChange change_;
    std::uint64_t keptCount_ = 0;
    bool timedOut_ = false;
};

/// A traced program that takes longer is killed.
inline constexpr std::chrono::seconds tracedLimit{20};
