#include "tools/files/cut_file.h"

#include <setjmp.h>
#include <unistd.h>

#include <csignal>

#include "tools/exit_status.h"
#include "tools/report.h"

namespace {

/// What the handler writes, which must not ask for memory.
std::string message;

/// Where a reading of this thread goes on that can be left; null if there is none.
thread_local sigjmp_buf* wayOut = nullptr;

void leaveReading(int signal) {
    if (wayOut != nullptr) {
        siglongjmp(*wayOut, signal);
    }
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, message.data(), message.size());
    ::_exit(exitFailed);
}

}  // namespace

void reportCutFile() {
    nameReadFile("a file");
    std::signal(SIGBUS, leaveReading);
}

bool readUncut(const std::function<void()>& read) {
    sigjmp_buf behind;
    bool isUncut = true;
    // The jump restores the blocked signals too, so that the next SIGBUS is delivered.
    if (sigsetjmp(behind, true) != 0) {
        isUncut = false;
    } else {
        wayOut = &behind;
        read();
    }
    wayOut = nullptr;
    return isUncut;
}

void nameReadFile(const std::string& name) {
    message = messageLine(name + ": " + cutFileWords);
}
