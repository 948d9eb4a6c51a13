#include "launcher/limits.h"

#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>

namespace {

// The largest file, of 2 GiB, is signed in a few seconds once it is in memory.
constexpr rlim_t processorSeconds = 60;
constexpr unsigned seconds = 60;
// A file that is signed is mapped and takes none of it.
constexpr rlim_t dataBytes = rlim_t{512} << 20;
// A core dump would put the private scalar on the disk.
constexpr rlim_t coreBytes = 0;

bool lowerLimit(__rlimit_resource resource, rlim_t most) {
    rlimit limit{};
    if (::getrlimit(resource, &limit) != 0) {
        return false;
    }
    limit.rlim_cur = std::min(limit.rlim_cur, most);
    limit.rlim_max = std::min(limit.rlim_max, most);
    return ::setrlimit(resource, &limit) == 0;
}

bool unblockSignals() {
    sigset_t none;
    return ::sigemptyset(&none) == 0 && ::sigprocmask(SIG_SETMASK, &none, nullptr) == 0;
}

void setAlarm() {
    // It cannot fail.
    const unsigned inherited = ::alarm(seconds);
    if (inherited != 0 && inherited < seconds) {
        ::alarm(inherited);
    }
}

}  // namespace

bool setLimits() {
    setAlarm();
    return lowerLimit(RLIMIT_CPU, processorSeconds) && lowerLimit(RLIMIT_DATA, dataBytes) &&
           lowerLimit(RLIMIT_CORE, coreBytes) && ::signal(SIGXCPU, SIG_DFL) != SIG_ERR &&
           ::signal(SIGALRM, SIG_DFL) != SIG_ERR && unblockSignals();
}
