// Starts a program under limits, for servers that set none on their CGI programs:
//
//   limited [PROGRAM]     sign.cgi beside it, or nph-sign.cgi if that is the last component of
//                         PROGRAM; any other than these two is refused
//
// lighttpd starts it as the interpreter of the programs, fcgiwrap as the program itself. Nobody who
// reaches either chooses what it does: it takes no path and no setting from its arguments or its
// environment, and hands on the two variables that the program reads. Descriptors behind the
// standard ones, such as a server's connections, are closed.
//
// It refuses rather than start a program without a limit, or without the kernel's random generator:
// a line on standard error, nothing on standard output, from which the server makes an error, and
// exit status 1.

#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

#include "launcher/limits.h"
#include "launcher/request_program.h"
#include "random/random_device.h"

namespace {

int refuse(const char* object, const char* reason, const char* advice) {
    std::fprintf(stderr, "limited: %s: %s; %s\n", object, reason, advice);
    return 1;
}

/// What is wrong, in words that depend on no environment.
const char* systemError() {
    return ::strerrordesc_np(errno);
}

/// What is wrong with the random device, in the order of `RandomDeviceFault`.
constexpr std::array deviceFaults{"sound", "cannot be opened", "a FIFO",
                                  "not the kernel's random generator",
                                  "gives too few bytes for a seed"};

}  // namespace

int main(int argumentCount, char** arguments) {
    const char* name = chosenProgram(argumentCount, arguments);
    if (name == nullptr) {
        return refuse("arguments", "they name no program beside it",
                      "give sign.cgi or nph-sign.cgi, or nothing for sign.cgi");
    }
    ProgramPath path;
    if (!pathBeside(name, path)) {
        return refuse("its own path", "too long", "install it in a folder with a shorter path");
    }
    if (!setLimits()) {
        return refuse("limits", systemError(), "allow prlimit, sigaction and sigprocmask");
    }
    if (::close_range(STDERR_FILENO + 1, UINT_MAX, 0) != 0) {
        return refuse("open files", systemError(),
                      "allow close_range, which Linux 5.9 and later has");
    }
    // Behind the limits, of which the time also ends a wait for the device.
    const RandomDeviceFault fault = randomDeviceFault();
    if (fault != RandomDeviceFault::none) {
        return refuse("random device", deviceFaults.at(static_cast<std::size_t>(fault)),
                      "let the server's programs see the kernel's /dev/urandom, or signatures give "
                      "keys away");
    }
    const std::array<char*, 2> started{path.data(), nullptr};
    const RequestVariables variables = requestVariables(environ);
    ::execve(path.data(), started.data(), variables.data());
    return refuse(path.data(), systemError(), "install the program beside limited");
}
