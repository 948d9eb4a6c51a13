#include "tools/files/cut_file.h"

#include <setjmp.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>

#include "tools/exit_status.h"
#include "tools/report.h"

namespace {

/// What the handler writes, which must not ask for memory: a path has at most 4095 bytes, and each
/// may take four.
struct Message {
    std::array<char, 16500> text{};
    std::size_t length = 0;
};

Message message;

/// Where a reading of this thread goes on that can be left; null if there is none.
thread_local sigjmp_buf* wayOut = nullptr;

void leaveReading(int /*signal*/) {
    if (wayOut != nullptr) {
        siglongjmp(*wayOut, 1);
    }
    [[maybe_unused]] const ssize_t written =
        ::write(STDERR_FILENO, message.text.data(), message.length);
    ::_exit(exitFailed);
}

}  // namespace

void reportCutFile() {
    nameReadFile("a file");
    std::signal(SIGBUS, leaveReading);
}

bool readUncut(const std::function<void()>& read) {
    sigjmp_buf behind;
    if (sigsetjmp(behind, 1) != 0) {
        wayOut = nullptr;
        return false;
    }
    wayOut = &behind;
    read();
    wayOut = nullptr;
    return true;
}

void nameReadFile(const std::string& name) {
    const std::string line = messageLine(name + ": " + cutFileWords);
    message.length = line.copy(message.text.data(), message.text.size());
}
