#pragma once

#include <map>
#include <optional>

/// Calls by which a file is written whole, in their usual order.
enum class FileCall {
    openUnnamed,  ///< open with O_TMPFILE
    flush,        ///< fsync
    linkUnnamed,  ///< linkat
    rename,       ///< renameat2
    link
};

/// While it lives, calls of this executable fail, or end the process as if the power went.
struct ScopedFileCalls {
    ScopedFileCalls();
    ~ScopedFileCalls();
    ScopedFileCalls(const ScopedFileCalls&) = delete;
    ScopedFileCalls& operator=(const ScopedFileCalls&) = delete;

    std::map<FileCall, int> errors;      ///< the call does nothing and gives this error
    std::optional<FileCall> killBefore;  ///< SIGKILL in the place of the call
    std::optional<FileCall> killAfter;   ///< SIGKILL when the call has been made
};
