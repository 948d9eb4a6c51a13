#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <ctime>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// While it lives, `time`, `fopen`, `fread`, `stat` and `fstat` answer as told here instead of as
/// the system would.
struct ScopedSystemCalls {
    ScopedSystemCalls();
    ~ScopedSystemCalls();
    ScopedSystemCalls(const ScopedSystemCalls&) = delete;
    ScopedSystemCalls& operator=(const ScopedSystemCalls&) = delete;

    std::optional<std::time_t> now;  ///< what `time` answers, if anything is set

    /// The files that take the place of those asked for, one call after the other; an empty path,
    /// and every call behind the last, fails.
    std::deque<std::string> files;
    std::vector<std::string> opened;  ///< "path mode" of each call of `fopen`

    std::map<std::string, struct stat> status;  ///< what `stat` answers for these paths
    std::optional<struct stat> openStatus;      ///< what `fstat` answers, if set

    std::optional<std::size_t> readable;  ///< bytes that `fread` gives in all, if set
};
