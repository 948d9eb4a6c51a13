#pragma once

#include <atomic>
#include <map>
#include <string>
#include <vector>

/// Calls by which a file is written whole, in their usual order.
enum class FileCall {
    lookUpProc,   ///< access
    openUnnamed,  ///< open with O_TMPFILE
    flush,        ///< fsync of a file
    openFolder,   ///< open with O_DIRECTORY
    flushFolder,  ///< fsync of a folder
    linkUnnamed,  ///< linkat
    rename,       ///< renameat2
    link
};

/// While it lives, these calls of the executable are noted, and fail or come with a signal: SIGKILL
/// is as if the power went.
struct ScopedFileCalls {
    ScopedFileCalls();
    ~ScopedFileCalls();
    ScopedFileCalls(const ScopedFileCalls&) = delete;
    ScopedFileCalls& operator=(const ScopedFileCalls&) = delete;

    std::map<FileCall, int> errors;         ///< the call does nothing and gives this error
    std::map<FileCall, int> signalsBefore;  ///< raised before the call
    std::map<FileCall, int> signalsAfter;   ///< raised when the call has been made
    std::atomic<unsigned> opened = 0;       ///< calls of open so far
    std::vector<FileCall> made;             ///< of those that change what is on the disk
    std::string flushedFolder;              ///< path of the folder flushed last
};
