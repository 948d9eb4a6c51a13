#pragma once

#include <map>
#include <string>

/// Values of environment variables by name.
using Environment = std::map<std::string, std::string>;

/// While it lives, the variables of a CGI request have these values, and those not named are unset.
struct ScopedCgiEnvironment {
    explicit ScopedCgiEnvironment(const Environment& variables);
    ScopedCgiEnvironment(const ScopedCgiEnvironment&) = delete;
    ScopedCgiEnvironment& operator=(const ScopedCgiEnvironment&) = delete;
    ~ScopedCgiEnvironment();
};
