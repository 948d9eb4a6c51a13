#include "tools/files/whole_file.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/types.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <utility>

#include "project/open_to_read.h"
#include "project/stream.h"

namespace {

/// Holds the signals back that a terminal or a service manager sends to end the process, but those
/// that it ignores.
class HeldSignals {
public:
    HeldSignals() {
        sigemptyset(&held_);
        for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGTERM}) {
            struct sigaction action {};
            sigaction(number, nullptr, &action);
            if (action.sa_handler != SIG_IGN) {
                sigaddset(&held_, number);
            }
        }
        sigprocmask(SIG_BLOCK, &held_, &before_);
    }
    /// Lets them arrive, unless `keep` was called.
    ~HeldSignals() {
        if (!kept_) {
            sigprocmask(SIG_SETMASK, &before_, nullptr);
        }
    }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    /// Whether one of them has been sent, an interruption as `errno` tells.
    bool isAnyPending() const {
        errno = EINTR;
        sigset_t pending;
        sigpending(&pending);
        sigandset(&pending, &pending, &held_);
        return sigisemptyset(&pending) == 0;
    }

    /// Holds them back for good.
    void keep() { kept_ = true; }

private:
    sigset_t held_{};
    sigset_t before_{};
    bool kept_ = false;
};

std::string folderOf(const std::string& path) {
    const std::string folder = std::filesystem::path(path).parent_path();
    return folder.empty() ? "." : folder;
}

/// A file that is not at its path yet. Errors stand in `errno`.
class UnpublishedFile {
public:
    UnpublishedFile(std::string path, mode_t mode)
        : path_(std::move(path)), descriptor_(openUnnamed(mode)) {
        if (descriptor_ == -1 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
            descriptor_ = openNamed(mode);
        }
    }
    ~UnpublishedFile() {
        // There is no file with an empty name or with the descriptor -1.
        ::unlink(temporaryName_.c_str());
        ::close(descriptor_);
    }
    UnpublishedFile(const UnpublishedFile&) = delete;
    UnpublishedFile& operator=(const UnpublishedFile&) = delete;

    /// False when the file could not be opened or its content not be put on the disk.
    bool write(const std::function<bool(std::FILE*)>& content) const {
        const int copy =
            descriptor_ == -1 ? -1 : ::fcntl(descriptor_, F_DUPFD_CLOEXEC, descriptor_);
        if (copy == -1) {
            return false;
        }
        const Stream stream(::fdopen(copy, "w+"));
        if (stream == nullptr) {
            ::close(copy);
            return false;
        }
        return content(stream.get()) && std::fflush(stream.get()) == 0 && ::fsync(copy) == 0;
    }

    /// Gives the file its name, unless there is one of that name.
    bool publish() {
        if (temporaryName_.empty()) {
            const std::string link = "/proc/self/fd/" + std::to_string(descriptor_);
            return ::linkat(AT_FDCWD, link.c_str(), AT_FDCWD, path_.c_str(), AT_SYMLINK_FOLLOW) ==
                   0;
        }
        if (::renameat2(AT_FDCWD, temporaryName_.c_str(), AT_FDCWD, path_.c_str(),
                        RENAME_NOREPLACE) == 0) {
            temporaryName_.clear();
            return true;
        }
        // Network file systems know no renaming that spares the target, but they know links.
        return errno == EINVAL && ::link(temporaryName_.c_str(), path_.c_str()) == 0;
    }

private:
    int openUnnamed(mode_t mode) const {
        if (::access("/proc/self/fd", X_OK) != 0) {
            errno = EOPNOTSUPP;
            return -1;
        }
        return ::open(folderOf(path_).c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode);
    }

    int openNamed(mode_t mode) {
        int descriptor = -1;
        for (int i = 0; descriptor == -1 && (i == 0 || errno == EEXIST); ++i) {
            temporaryName_ = path_ + "." + std::to_string(::getpid()) + "." + std::to_string(i);
            descriptor =
                ::open(temporaryName_.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, mode);
        }
        if (descriptor == -1) {
            temporaryName_.clear();
        }
        return descriptor;
    }

    const std::string path_;
    std::string temporaryName_;  ///< empty while the file has no name
    int descriptor_;
};

/// The name is on the disk once its folder is. Some file systems refuse this and need no asking.
void flushFolder(const std::string& folder) {
    const int descriptor = openToRead(folder.c_str());
    ::fsync(descriptor);
    ::close(descriptor);
}

constexpr mode_t modeOf(FileAudience audience) {
    return audience == FileAudience::owner ? S_IRUSR | S_IWUSR
                                           : S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
}

}  // namespace

std::optional<std::string> writeWholeFile(const std::string& path, FileAudience audience,
                                          const std::function<bool(std::FILE*)>& write) {
    HeldSignals signals;
    UnpublishedFile file(path, modeOf(audience));
    // What is pending ends the process where `signals` goes out of scope, behind `file`.
    if (!file.write(write) || signals.isAnyPending() || !file.publish()) {
        return path + ": " +
               (errno == EEXIST ? "already exists; no file is overwritten, so choose another name"
                                : std::strerror(errno));
    }
    signals.keep();
    flushFolder(folderOf(path));
    return std::nullopt;
}
