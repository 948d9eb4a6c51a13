#pragma once

#include <sys/resource.h>

#include <csignal>

/// While it lives, a resource of the process has a lower limit; a file that reaches its size is an
/// error and no signal.
class ScopedLimit {
public:
    ScopedLimit(decltype(RLIMIT_FSIZE) resource, rlim_t value)
        : resource_(resource), handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(resource_, &before_);
        const rlimit limited{.rlim_cur = value, .rlim_max = before_.rlim_max};
        ::setrlimit(resource_, &limited);
    }
    ~ScopedLimit() {
        ::setrlimit(resource_, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    ScopedLimit(const ScopedLimit&) = delete;
    ScopedLimit& operator=(const ScopedLimit&) = delete;

private:
    decltype(RLIMIT_FSIZE) resource_;
    void (*handler_)(int);
    rlimit before_{};
};
