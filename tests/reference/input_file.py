"""Files to sign or to verify: as many bytes as the low 32 bits of the size say."""

import os
import stat

from stopped import Stopped

LARGEST = 2**31 - 1


def opened(path, kind):
    """The regular file at this path; the rule of another has this kind, "file" or "project"."""
    try:
        descriptor = os.open(path, os.O_RDONLY | os.O_NONBLOCK)
    except OSError as error:
        raise Stopped(f"{kind}.open") from error
    mode = os.fstat(descriptor).st_mode
    if stat.S_ISREG(mode):
        return os.fdopen(descriptor, "rb")
    os.close(descriptor)
    raise Stopped(f"{kind}.directory" if stat.S_ISDIR(mode) else f"{kind}.no-regular")


def signed_content(path):
    """The bytes of the file that count; Stopped for a file that is refused."""
    with opened(path, "file") as file:
        whole = os.fstat(file.fileno()).st_size
        size = whole & 0xFFFFFFFF
        if size > LARGEST:
            raise Stopped("file.too-large")
        if size == 0:
            raise Stopped("file.no-bytes" if whole else "file.empty")
        return file.read(size)
