#include "tests/faults/call_tracer.h"

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/user.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>

namespace {

/// Stops at system calls are told from others by this bit.
constexpr int callStop = SIGTRAP | 0x80;

/// While it lives, waiting is interrupted at the limit.
class Alarm {
public:
    Alarm() {
        struct sigaction action {};
        action.sa_handler = [](int) {};
        ::sigaction(SIGALRM, &action, &saved_);
        // Again and again, since another thread may get the first signal.
        const itimerval timer{.it_interval = {.tv_sec = 1, .tv_usec = 0},
                              .it_value = {.tv_sec = tracedLimit.count(), .tv_usec = 0}};
        ::setitimer(ITIMER_REAL, &timer, nullptr);
    }
    ~Alarm() {
        const itimerval none{};
        ::setitimer(ITIMER_REAL, &none, nullptr);
        ::sigaction(SIGALRM, &saved_, nullptr);
    }
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;

private:
    struct sigaction saved_ {};
};

user_regs_struct registersOf(pid_t process) {
    user_regs_struct registers{};
    ::ptrace(PTRACE_GETREGS, process, nullptr, &registers);
    return registers;
}

void setRegisters(pid_t process, user_regs_struct registers) {
    ::ptrace(PTRACE_SETREGS, process, nullptr, &registers);
}

/// The terminated text at an address of the program.
std::string textOf(pid_t process, std::uint64_t address) {
    std::string text;
    while (text.find('\0') == std::string::npos) {
        errno = 0;
        const long word = ::ptrace(PTRACE_PEEKDATA, process, address + text.size(), nullptr);
        if (errno != 0) {
            return {};
        }
        text.append(reinterpret_cast<const char*>(&word), sizeof word);
    }
    text.resize(text.find('\0'));
    return text;
}

std::vector<int> openDescriptors(pid_t process) {
    std::vector<int> open;
    const std::filesystem::path folder = "/proc/" + std::to_string(process) + "/fd";
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        open.push_back(std::stoi(entry.path().filename()));
    }
    std::sort(open.begin(), open.end());
    return open;
}

}  // namespace

int CallTracer::waitForStop(pid_t process, rusage& usage) {
    int status = 0;
    while (::wait4(process, &status, 0, &usage) == -1) {
        // The alarm.
        timedOut_ = true;
        ::kill(process, SIGKILL);
    }
    return status;
}

void CallTracer::enterCall(pid_t process) {
    user_regs_struct registers = registersOf(process);
    SystemCall call{.index = calls_.size(),
                    .number = registers.orig_rax,
                    .arguments = {registers.rdi, registers.rsi, registers.rdx, registers.r10,
                                  registers.r8, registers.r9}};
    if (call.number == SYS_openat) {
        call.path = textOf(process, call.arguments[1]);
    }
    if (call.number == SYS_exit_group) {
        openAtExit_ = openDescriptors(process);
    }
    change_ = watcher_(process, call);
    calls_.push_back(std::move(call));
    if (change_.kind == CallChange::Kind::replaced) {
        registers.orig_rax = ~std::uint64_t{0};
        setRegisters(process, registers);
    } else if (change_.kind == CallChange::Kind::shortened) {
        keptCount_ = registers.rdx;
        registers.rdx = std::min(keptCount_, static_cast<std::uint64_t>(change_.value));
        setRegisters(process, registers);
    }
}

void CallTracer::leaveCall(pid_t process) {
    user_regs_struct registers = registersOf(process);
    if (change_.kind == CallChange::Kind::shortened) {
        // The compiler counts on every register but those of the result.
        registers.rdx = keptCount_;
        setRegisters(process, registers);
    } else if (change_.kind != CallChange::Kind::none) {
        registers.rax = static_cast<std::uint64_t>(change_.value);
        setRegisters(process, registers);
    }
    calls_.back().result = static_cast<std::int64_t>(registers.rax);
}

int CallTracer::operator()(pid_t process, rusage& usage) {
    const Alarm alarm;
    int status = waitForStop(process, usage);
    if (WIFSTOPPED(status)) {
        openAtStart_ = openDescriptors(process);
        ::ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    }
    bool inCall = false;
    int signal = 0;
    while (WIFSTOPPED(status)) {
        ::ptrace(PTRACE_SYSCALL, process, nullptr, signal);
        signal = 0;
        status = waitForStop(process, usage);
        if (!WIFSTOPPED(status)) {
            break;
        }
        if (WSTOPSIG(status) != callStop) {
            signal = WSTOPSIG(status);
        } else if (inCall) {
            leaveCall(process);
            inCall = false;
        } else {
            enterCall(process);
            inCall = true;
        }
    }
    return status;
}
