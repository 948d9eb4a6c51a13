#include "tests/unit/tools/file_status.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace {

ScopedFileStatus* current = nullptr;

}  // namespace

ScopedFileStatus::ScopedFileStatus() {
    current = this;
}

ScopedFileStatus::~ScopedFileStatus() {
    current = nullptr;
}

// The linker's names for the library's functions and for what replaces them.
int systemStat(const char* path, struct stat* status) asm("__real_stat");
int replacedStat(const char* path, struct stat* status) asm("__wrap_stat");
uid_t systemUser() asm("__real_geteuid");
uid_t replacedUser() asm("__wrap_geteuid");

int replacedStat(const char* path, struct stat* status) {
    const int result = systemStat(path, status);
    if (current != nullptr && current->files.contains(path)) {
        const std::optional<Access>& access = current->files.at(path);
        if (!access.has_value()) {
            errno = EACCES;
            return -1;
        }
        status->st_uid = access->owner;
        const mode_t kind = (access->mode & S_IFMT) != 0 ? 0 : status->st_mode & S_IFMT;
        status->st_mode = kind | access->mode;
    }
    return result;
}

uid_t replacedUser() {
    return current != nullptr ? current->user : systemUser();
}
