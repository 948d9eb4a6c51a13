"""What a program behind the service tries, once it is captured. Runs in the place of sign.cgi, by
itself: see stand_in.py."""

import ctypes
import errno
import mmap
import os
import signal
import socket
import stat
import subprocess

CLONE_NEWUSER = 0x10000000
ADDR_NO_RANDOMIZE = 0x0040000
PTRACE_TRACEME = 0
IPC_PRIVATE = 0


def error_of(action, *arguments):
    """The name of the error that an action ends in; none where it succeeds."""
    try:
        action(*arguments)
    except OSError as error:
        return errno.errorcode[error.errno]
    return None


def c_library(name, *arguments):
    """A call of a function that answers -1 for an error."""
    answer = getattr(ctypes.CDLL(None, use_errno=True), name)(*arguments)
    if answer == -1:
        raise OSError(ctypes.get_errno(), name)
    return answer


def writable_folders():
    """Every folder in which a file can be made, but those of processes."""
    found = []
    for folder, below, _ in os.walk("/"):
        if folder == "/":
            below.remove("proc")
        name = os.path.join(folder, "planted")
        if error_of(os.mknod, name) is None:
            os.unlink(name)
            found.append(folder)
    return found


def reads(*paths):
    """What each folder holds, or the first line of each file; the error where there is one."""
    def read(path):
        if os.path.isdir(path):
            return sorted(os.listdir(path))
        with open(path, encoding="utf-8") as file:
            return file.readline()

    found = {}
    for path in paths:
        try:
            found[path] = read(path)
        except OSError as error:
            found[path] = errno.errorcode[error.errno]
    return found


def owners(*paths):
    return {path: os.stat(path).st_uid for path in paths}


def processes():
    """The owner of each process in sight."""
    return {name: os.stat(f"/proc/{name}").st_uid for name in os.listdir("/proc")
            if name.isdigit()}


def devices():
    """The number of each device that can be opened."""
    found = {}
    for name in os.listdir("/dev"):
        path = os.path.join("/dev", name)
        number = os.lstat(path)
        if stat.S_ISCHR(number.st_mode) or stat.S_ISBLK(number.st_mode):
            if error_of(lambda: os.close(os.open(path, os.O_RDONLY | os.O_NOCTTY))) is None:
                found[name] = [os.major(number.st_rdev), os.minor(number.st_rdev)]
    return found


def errors_of_sockets():
    return {name: error_of(socket.socket, getattr(socket, name))
            for name in ("AF_INET", "AF_INET6", "AF_NETLINK", "AF_UNIX", "AF_VSOCK")}


def errors_of_calls():
    """How the kernel refuses what takes no right of root's."""
    prot = mmap.PROT_READ | mmap.PROT_WRITE | mmap.PROT_EXEC
    return {
        "memory to write and execute": error_of(lambda: mmap.mmap(-1, mmap.PAGESIZE, prot=prot)),
        "a file that runs as its owner": error_of(os.fchmod, os.memfd_create(""), 0o4755),
        "a namespace": error_of(c_library, "unshare", CLONE_NEWUSER),
        "memory at known addresses": error_of(c_library, "personality", ADDR_NO_RANDOMIZE),
        "to be traced": error_of(c_library, "ptrace", PTRACE_TRACEME, 0, 0, 0),
        "a processor of its own": error_of(os.sched_setaffinity, 0, {0}),
    }


def ending_of(program):
    return subprocess.run([program], check=False).returncode


def seconds_left():
    """Until the signal that ends a program."""
    return signal.getitimer(signal.ITIMER_REAL)[0]


def error_of_memory(size):
    """Takes so much memory of its own and writes to all of it; has it until the request ends."""
    def take():
        taken = mmap.mmap(-1, size, flags=mmap.MAP_PRIVATE | mmap.MAP_ANONYMOUS)
        for at in range(0, len(taken), mmap.PAGESIZE):
            taken[at] = 1
        while os.read(0, mmap.PAGESIZE):
            pass

    return error_of(take)


def processes_started(most):
    """How many it can have at once, beside itself."""
    count = 0
    own, other = os.pipe()
    while count < most:
        try:
            if os.fork() == 0:
                os.close(other)
                os.read(own, 1)
                os._exit(0)
        except OSError:
            break
        count += 1
    os.close(other)
    for _ in range(count):
        os.wait()
    return count


def shared_memory():
    """Leaves a segment behind."""
    return c_library("shmget", IPC_PRIVATE, mmap.PAGESIZE, 0o1600)
