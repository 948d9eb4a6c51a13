#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/environment.h"

/// How a program is started, and what it gets on standard input.
struct ProgramCall {
    std::string path;
    std::vector<std::string> arguments;  ///< the whole argument vector; it may be empty
    Environment environment;             ///< all of it

    /// Where standard input comes from.
    enum class Input {
        pieces,  ///< a pipe that gets `pieces` and is closed
        held,    ///< a pipe that gets `pieces` and stays open until the program ends
        given,   ///< `inputDescriptor`
        closed,  ///< the program starts without one
    };
    Input input = Input::pieces;
    std::vector<std::string> pieces;  ///< written with a pause between them
    std::chrono::milliseconds pause{30};
    int inputDescriptor = -1;

    int outputDescriptor = -1;         ///< standard output if it is not to be collected
    bool outputClosed = false;         ///< the program starts without standard output
    bool filesClosedToGrowth = false;  ///< no file may become longer by it
    bool brokenPipesIgnored = false;
    std::chrono::seconds limit{60};

    /// If set, the program asks to be traced, and this sees it from its start to its end: it gives
    /// the status and the usage of `wait4`, and keeps to the limit itself.
    std::function<int(pid_t, rusage&)> tracer;
};

/// How a program ended.
struct ProgramEnd {
    std::string output{};
    std::string errors{};
    int status = -1;               ///< exit status; -1 if a signal ended the program
    int signal = 0;                ///< that signal
    bool timedOut = false;         ///< it was killed at the limit
    std::uint64_t peakMemory = 0;  ///< bytes of memory at most in use, at least those of the caller
    std::chrono::microseconds processorTime{0};
};

/// Runs a program to its end. It writes no core dump.
ProgramEnd runProgram(const ProgramCall& call);
