#include "tests/unit/tools/file_calls.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <filesystem>

namespace {

ScopedFileCalls* current = nullptr;

void raiseOf(const std::map<FileCall, int>& signals, FileCall name) {
    const auto signal = signals.find(name);
    if (signal != signals.end()) {
        std::raise(signal->second);
    }
}

/// The result of `call`, if it is to be made.
template <typename Function>
auto watched(FileCall name, const Function& call) -> decltype(call()) {
    if (current == nullptr) {
        return call();
    }
    raiseOf(current->signalsBefore, name);
    const auto error = current->errors.find(name);
    if (error != current->errors.end()) {
        errno = error->second;
        return -1;
    }
    const auto result = call();
    constexpr std::array readers = {FileCall::lookUpProc, FileCall::openFolder};
    if (std::find(readers.begin(), readers.end(), name) == readers.end()) {
        current->made.push_back(name);
    }
    raiseOf(current->signalsAfter, name);
    return result;
}

}  // namespace

ScopedFileCalls::ScopedFileCalls() {
    current = this;
}

ScopedFileCalls::~ScopedFileCalls() {
    current = nullptr;
}

// The linker's names for the library's functions and for what replaces them.
int systemOpen(const char* path, int flags, mode_t mode) asm("__real_open");
int replacedOpen(const char* path, int flags, ...) asm("__wrap_open");
int systemAccess(const char* path, int mode) asm("__real_access");
int replacedAccess(const char* path, int mode) asm("__wrap_access");
int systemFlush(int descriptor) asm("__real_fsync");
int replacedFlush(int descriptor) asm("__wrap_fsync");
int systemLinkAt(int oldFolder, const char* oldPath, int newFolder, const char* newPath,
                 int flags) asm("__real_linkat");
int replacedLinkAt(int oldFolder, const char* oldPath, int newFolder, const char* newPath,
                   int flags) asm("__wrap_linkat");
int systemRename(int oldFolder, const char* oldPath, int newFolder, const char* newPath,
                 unsigned flags) asm("__real_renameat2");
int replacedRename(int oldFolder, const char* oldPath, int newFolder, const char* newPath,
                   unsigned flags) asm("__wrap_renameat2");
int systemLink(const char* oldPath, const char* newPath) asm("__real_link");
int replacedLink(const char* oldPath, const char* newPath) asm("__wrap_link");

// As the library declares it.
int replacedOpen(const char* path, int flags, ...) {  // NOLINT(cert-dcl50-cpp)
    mode_t mode = 0;
    if ((flags & (O_CREAT | O_TMPFILE)) != 0) {
        std::va_list arguments;
        va_start(arguments, flags);
        mode = va_arg(arguments, mode_t);
        va_end(arguments);
    }
    if (current != nullptr) {
        ++current->opened;
    }
    const auto call = [=] { return systemOpen(path, flags, mode); };
    if ((flags & O_TMPFILE) == O_TMPFILE) {
        return watched(FileCall::openUnnamed, call);
    }
    return (flags & O_DIRECTORY) != 0 ? watched(FileCall::openFolder, call) : call();
}

int replacedAccess(const char* path, int mode) {
    return watched(FileCall::lookUpProc, [=] { return systemAccess(path, mode); });
}

int replacedFlush(int descriptor) {
    struct stat status {};
    const bool isFolder = ::fstat(descriptor, &status) == 0 && S_ISDIR(status.st_mode);
    if (isFolder && current != nullptr) {
        current->flushedFolder =
            std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor));
    }
    return watched(isFolder ? FileCall::flushFolder : FileCall::flush,
                   [=] { return systemFlush(descriptor); });
}

int replacedLinkAt(int oldFolder, const char* oldPath, int newFolder, const char* newPath,
                   int flags) {
    return watched(FileCall::linkUnnamed,
                   [=] { return systemLinkAt(oldFolder, oldPath, newFolder, newPath, flags); });
}

int replacedRename(int oldFolder, const char* oldPath, int newFolder, const char* newPath,
                   unsigned flags) {
    return watched(FileCall::rename,
                   [=] { return systemRename(oldFolder, oldPath, newFolder, newPath, flags); });
}

int replacedLink(const char* oldPath, const char* newPath) {
    return watched(FileCall::link, [=] { return systemLink(oldPath, newPath); });
}
