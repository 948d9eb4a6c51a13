#include <csignal>
#include <cstdlib>
#include <exception>

#include "core/entry.h"
#include "frontend/invocation.h"
#include "frontend/request_driver.h"
#include "frontend/response_writer.h"

int main(int argumentCount, char** arguments) {
    // An exception that nothing catches ends the process in silence: standard error is the server's
    // log and nobody's report.
    std::set_terminate(std::abort);
    // A client that is gone is a failed write, as is an output file at its limit of size; these go
    // unnoticed.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);

    nphOutput = isNphInvocation(argumentCount > 0 ? arguments[0] : "");
    coreEntry::coreStart();
    const std::int32_t status = runRequest();
    coreEntry::coreStop();
    return status;
}
