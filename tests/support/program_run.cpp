#include "tests/support/program_run.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>
#include <string_view>
#include <thread>

#include "tests/support/standard_streams.h"

namespace {

using Clock = std::chrono::steady_clock;

/// Owner of a descriptor.
struct Descriptor {
    int number = -1;

    explicit Descriptor(int opened) : number(opened) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { close(); }

    void close() {
        if (number != -1) {
            ::close(number);
            number = -1;
        }
    }
};

struct Pipe {
    Descriptor reading{-1};
    Descriptor writing{-1};

    Pipe() {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        reading.number = ends[0];
        writing.number = ends[1];
    }
};

/// Null-terminated vector of the texts, for execve.
std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// Puts `descriptor` in the place of `standard`, or closes that for -1.
void replace(int standard, int descriptor) {
    if (descriptor == -1) {
        ::close(standard);
    } else {
        ::dup2(descriptor, standard);
    }
}

[[noreturn]] void become(const ProgramCall& call, char* const* arguments, char* const* environment,
                         int input, int output, int errors) {
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    if (call.filesClosedToGrowth) {
        ::setrlimit(RLIMIT_FSIZE, &none);
    }
    std::signal(SIGPIPE, call.brokenPipesIgnored ? SIG_IGN : SIG_DFL);
    replace(STDIN_FILENO, input);
    replace(STDOUT_FILENO, output);
    replace(STDERR_FILENO, errors);
    if (call.tracer) {
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    }
    ::execve(call.path.c_str(), arguments, environment);
    ::_exit(127);
}

/// Writes the pieces, as far as the program takes them.
void feed(const ProgramCall& call, int descriptor) {
    bool first = true;
    for (const std::string& piece : call.pieces) {
        if (!first) {
            std::this_thread::sleep_for(call.pause);
        }
        first = false;
        std::string_view rest = piece;
        while (!rest.empty()) {
            const ssize_t written = ::write(descriptor, rest.data(), rest.size());
            if (written <= 0) {
                return;
            }
            rest.remove_prefix(static_cast<std::size_t>(written));
        }
    }
}

/// Waits for the end of the process, which is killed at `deadline`, and gives its status.
int waitFor(pid_t process, Clock::time_point deadline, rusage& usage, bool& timedOut) {
    const Descriptor handle(static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    pollfd ended{handle.number, POLLIN, 0};
    if (::poll(&ended, 1, static_cast<int>(left.count())) != 1) {
        timedOut = true;
        ::kill(process, SIGKILL);
    }
    int status = 0;
    ::wait4(process, &status, 0, &usage);
    return status;
}

std::chrono::microseconds duration(const timeval& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
}

ProgramEnd seeToTheEnd(const ProgramCall& call, pid_t process, Clock::time_point deadline) {
    ProgramEnd end;
    rusage usage{};
    const int status =
        call.tracer ? call.tracer(process, usage) : waitFor(process, deadline, usage, end.timedOut);
    end.processorTime = duration(usage.ru_utime) + duration(usage.ru_stime);
    end.peakMemory = 1024 * static_cast<std::uint64_t>(usage.ru_maxrss);
    if (WIFEXITED(status)) {
        end.status = WEXITSTATUS(status);
    } else {
        end.signal = WTERMSIG(status);
    }
    return end;
}

}  // namespace

ProgramEnd runProgram(const ProgramCall& call) {
    // A program may end without reading what it gets.
    std::signal(SIGPIPE, SIG_IGN);

    std::vector<std::string> arguments = call.arguments;
    std::vector<std::string> environment;
    for (const auto& [name, value] : call.environment) {
        environment.push_back(name + "=" + value);
    }
    const std::vector<char*> argumentPointers = pointersTo(arguments);
    const std::vector<char*> environmentPointers = pointersTo(environment);

    Pipe pipe;
    const Descriptor output(anonymousFile(""));
    const Descriptor errors(anonymousFile(""));
    int input = pipe.reading.number;
    if (call.input == ProgramCall::Input::given) {
        input = call.inputDescriptor;
    } else if (call.input == ProgramCall::Input::closed) {
        input = -1;
    }
    const Clock::time_point deadline = Clock::now() + call.limit;
    const pid_t process = ::fork();
    if (process == -1) {
        throw std::runtime_error("cannot start a process");
    }
    if (process == 0) {
        const int collected = call.outputClosed ? -1 : output.number;
        become(call, argumentPointers.data(), environmentPointers.data(), input,
               call.outputDescriptor == -1 ? collected : call.outputDescriptor, errors.number);
    }
    pipe.reading.close();
    std::thread feeder([&] {
        feed(call, pipe.writing.number);
        if (call.input == ProgramCall::Input::pieces) {
            pipe.writing.close();
        }
    });
    ProgramEnd end = seeToTheEnd(call, process, deadline);
    feeder.join();
    end.output = fileContent(output.number);
    end.errors = fileContent(errors.number);
    return end;
}
