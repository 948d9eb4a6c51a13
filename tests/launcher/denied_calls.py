"""Denies this process and what it starts a system call, as the confinement of a service does."""

import ctypes
import errno
import struct

# Their numbers, and the argument that is not zero in what is denied: the new value, the place of the
# old one, the last descriptor, any descriptor but standard input.
CALLS = {"sigaction": (13, 1), "sigprocmask": (14, 1), "setrlimit": (302, 2), "getrlimit": (302, 3),
         "close_range": (436, 1), "read": (0, 0)}

SET_NO_NEW_PRIVILEGES, SET_SECCOMP, FILTER_MODE = 38, 22, 2  # of prctl(2)
LOAD_WORD, JUMP_IF_EQUAL, RETURN = 0x20, 0x15, 0x06  # of seccomp(2)
ALLOW, FAIL_WITH = 0x7FFF0000, 0x00050000
NUMBER, FIRST_ARGUMENT, SIZE_OF_ARGUMENT = 0, 16, 8  # places in what a filter sees


class Program(ctypes.Structure):
    _fields_ = [("length", ctypes.c_ushort), ("filter", ctypes.c_char_p)]


def deny(name):
    """From now on, the call of this name fails with EPERM."""
    number, argument = CALLS[name]
    steps = [(LOAD_WORD, 0, 0, NUMBER), (JUMP_IF_EQUAL, 0, 3, number),
             (LOAD_WORD, 0, 0, FIRST_ARGUMENT + argument * SIZE_OF_ARGUMENT),
             (JUMP_IF_EQUAL, 1, 0, 0),
             (RETURN, 0, 0, FAIL_WITH | errno.EPERM), (RETURN, 0, 0, ALLOW)]
    code = b"".join(struct.pack("=HBBI", *step) for step in steps)
    prctl = ctypes.CDLL(None, use_errno=True).prctl
    for arguments in ((SET_NO_NEW_PRIVILEGES, 1, 0, 0, 0),
                      (SET_SECCOMP, FILTER_MODE, ctypes.byref(Program(len(steps), code)))):
        if prctl(*arguments) != 0:
            raise OSError(ctypes.get_errno(), "prctl")
