#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <string_view>

#include "core/entry.h"
#include "tools/command_line.h"
#include "tools/exit_status.h"

namespace {

/// Opens what of standard input, output and error the caller has closed, so that no file of a
/// command takes their place. Nothing can be written to them, and what is printed fails.
void openStandardDescriptors() {
    int descriptor = -1;
    do {
        descriptor = ::open("/dev/null", O_RDONLY);
    } while (descriptor >= STDIN_FILENO && descriptor <= STDERR_FILENO);
    ::close(descriptor);
}

/// Ends the process when a file is cut while it is read through a mapping.
void reportCutFile(int /*signal*/) {
    constexpr std::string_view message = "projectctl: a file was cut while it was read\n";
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, message.data(), message.size());
    ::_exit(exitFailed);
}

}  // namespace

int main(int argumentCount, char** arguments) {
    openStandardDescriptors();
    std::signal(SIGBUS, reportCutFile);
    coreEntry::coreStart();
    const int status = runCommandLine(argumentCount, arguments);
    coreEntry::coreStop();
    return status;
}
