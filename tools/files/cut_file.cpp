#include "tools/files/cut_file.h"

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

void endProcess(int /*signal*/) {
    [[maybe_unused]] const ssize_t written =
        ::write(STDERR_FILENO, message.text.data(), message.length);
    ::_exit(exitFailed);
}

}  // namespace

void reportCutFile() {
    nameReadFile("a file");
    std::signal(SIGBUS, endProcess);
}

void nameReadFile(const std::string& name) {
    const std::string line = messageLine(cutFileMessage(name));
    message.length = line.copy(message.text.data(), message.text.size());
}

std::string cutFileMessage(const std::string& name) {
    return name + ": was cut while it was read";
}
