#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>

/// Whom a file belongs to, and what they and others may do with it.
struct Access {
    uid_t owner;
    mode_t mode;  ///< with another kind of file if it names one
};

/// While it lives, `stat` tells of these paths what stands here, and `geteuid` gives `user`.
struct ScopedFileStatus {
    ScopedFileStatus();
    ~ScopedFileStatus();
    ScopedFileStatus(const ScopedFileStatus&) = delete;
    ScopedFileStatus& operator=(const ScopedFileStatus&) = delete;

    std::map<std::string, std::optional<Access>> files;  ///< no access: stat fails
    uid_t user = 0;
};
