#pragma once

#include <sys/prctl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cstdlib>

/// While it lives, the process may do no more than anybody.
class ScopedOrdinaryUser {
public:
    ScopedOrdinaryUser() {
        constexpr uid_t nobody = 65534;
        if (before_ == 0) {
            changed_ = ::seteuid(nobody) == 0;
            // Or else what stands below /proc of it is root's from now on.
            ::prctl(PR_SET_DUMPABLE, 1);
        }
    }
    ~ScopedOrdinaryUser() {
        if (changed_ && ::seteuid(before_) != 0) {
            std::abort();
        }
    }
    ScopedOrdinaryUser(const ScopedOrdinaryUser&) = delete;
    ScopedOrdinaryUser& operator=(const ScopedOrdinaryUser&) = delete;

private:
    uid_t before_ = ::geteuid();
    bool changed_ = false;
};
