#include "tests/faults/call_errors.h"

#include <sys/syscall.h>

#include <cerrno>
#include <map>

namespace {

using Kind = CallChange::Kind;

const std::map<std::uint64_t, std::vector<int>>& errorsByCall() {
    static const std::map<std::uint64_t, std::vector<int>> errors = {
        {SYS_arch_prctl, {EFAULT, EINVAL, EPERM}},
        {SYS_set_robust_list, {EINVAL, ENOSYS}},
        {SYS_rseq, {EBUSY, EFAULT, EINVAL, ENOSYS, EPERM}},
        {SYS_prlimit64, {EFAULT, EINVAL, EPERM, ESRCH}},
        {SYS_readlink, {EACCES, EFAULT, EINVAL, EIO, ELOOP, ENAMETOOLONG, ENOENT, ENOMEM, ENOTDIR}},
        {SYS_readlinkat,
         {EACCES, EBADF, EFAULT, EINVAL, EIO, ELOOP, ENAMETOOLONG, ENOENT, ENOMEM, ENOTDIR}},
        {SYS_getrandom, {EAGAIN, EFAULT, EINTR, EINVAL, ENOSYS}},
        {SYS_mprotect, {EACCES, EINVAL, ENOMEM}},
        {SYS_rt_sigaction, {EFAULT, EINVAL}},
        {SYS_rt_sigprocmask, {EFAULT, EINVAL}},
        {SYS_mmap,
         {EACCES, EAGAIN, EBADF, EINVAL, ENFILE, ENODEV, ENOMEM, EOVERFLOW, EPERM, ETXTBSY}},
        {SYS_munmap, {EINVAL, ENOMEM}},
        {SYS_mremap, {EAGAIN, EFAULT, EINVAL, ENOMEM}},
        {SYS_openat, {EACCES,  EAGAIN, EBADF,  EBUSY,        EFAULT, EINTR,  EINVAL, EIO,
                      EISDIR,  ELOOP,  EMFILE, ENAMETOOLONG, ENFILE, ENODEV, ENOENT, ENOMEM,
                      ENOTDIR, ENXIO,  ENOSPC, EOVERFLOW,    EPERM,  EROFS,  ETXTBSY}},
        {SYS_newfstatat, {EACCES, EBADF, EFAULT, EINVAL, EIO, ELOOP, ENOMEM, ENOTDIR, EOVERFLOW}},
        {SYS_fstat, {EBADF, EFAULT, ENOMEM, EOVERFLOW}},
        {SYS_fcntl, {EACCES, EAGAIN, EBADF, EINTR, EINVAL, EPERM}},
        {SYS_ioctl, {EBADF, EFAULT, EINVAL, EIO, ENOTTY}},
        {SYS_lseek, {EBADF, EINVAL, ENXIO, EOVERFLOW, ESPIPE}},
        {SYS_read, {EAGAIN, EBADF, EFAULT, EINTR, EINVAL, EIO, EISDIR}},
        {SYS_write,
         {EAGAIN, EBADF, EDQUOT, EFAULT, EFBIG, EINTR, EINVAL, EIO, ENOSPC, EPERM, EPIPE}},
        {SYS_close, {EBADF, EDQUOT, EINTR, EIO, ENOSPC}},
    };
    return errors;
}

/// The break of before, which is what a refused `brk` gives.
std::int64_t breakBefore(const std::vector<SystemCall>& before) {
    std::int64_t value = 0;
    for (const SystemCall& call : before) {
        if (call.number == SYS_brk) {
            value = call.result;
        }
    }
    return value;
}

}  // namespace

const std::vector<int>& errorsOf(std::uint64_t call) {
    static const std::vector<int> none;
    const auto errors = errorsByCall().find(call);
    return errors == errorsByCall().end() ? none : errors->second;
}

std::vector<CallChange> faultsOf(const SystemCall& call, const std::vector<SystemCall>& before) {
    std::vector<CallChange> faults;
    if (call.number == SYS_brk && call.arguments[0] != 0) {
        faults.push_back({.kind = Kind::replaced, .value = breakBefore(before)});
    }
    // A descriptor is gone after `close`, whatever that says.
    const Kind kind = call.number == SYS_close ? Kind::hidden : Kind::replaced;
    for (const int error : errorsOf(call.number)) {
        faults.push_back({.kind = kind, .value = -error});
    }
    if (call.number == SYS_read) {
        faults.push_back({.kind = Kind::replaced, .value = 0});
    }
    if (call.number == SYS_read || call.number == SYS_write) {
        for (std::int64_t count = 1; count < call.result; ++count) {
            faults.push_back({.kind = Kind::shortened, .value = count});
        }
    }
    return faults;
}
