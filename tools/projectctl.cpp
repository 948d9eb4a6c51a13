#include <fcntl.h>
#include <unistd.h>

#include "core/entry.h"
#include "tools/command_line.h"
#include "tools/files/cut_file.h"

namespace {

/// Opens what of standard input, output and error the caller has closed, so that no file of a
/// command takes their place. Nothing can be written to them, and what is printed fails.
void openStandardDescriptors() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (::fcntl(descriptor, F_GETFD) == -1) {
            ::open("/dev/null", O_RDONLY);  // the lowest number that is free
        }
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    openStandardDescriptors();
    reportCutFile();
    coreEntry::coreStart();
    const int status = runCommandLine(argumentCount, arguments);
    coreEntry::coreStop();
    return status;
}
