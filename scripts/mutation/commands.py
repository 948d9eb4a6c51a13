"""Runs a command that may hang, print without end or take all memory, as mutants do."""

import os
import select
import signal
import subprocess
import time
from dataclasses import dataclass

TAIL = 1 << 16


@dataclass(frozen=True)
class Run:
    status: int | None  # as of subprocess; None when the time was over
    output: str  # the end of what it wrote to both streams


def run(command, *, folder, seconds, silence=None, environment=None, memory=None):
    """Runs `command` with its children for at most `seconds`, and `silence` without a word of it.

    Each of its processes gets `memory` bytes of data.
    """
    limits = ["prlimit", "--core=0"] + ([f"--data={memory}"] if memory else [])
    process = subprocess.Popen(
        [*limits, *command],
        cwd=folder,
        env={**os.environ, **(environment or {})},
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        start_new_session=True,
    )
    end = time.monotonic() + seconds
    pipe = process.stdout.fileno()
    tail = b""
    is_over = False
    while not is_over:
        left = min(end - time.monotonic(), silence or seconds)
        if left > 0 and select.select([pipe], [], [], left)[0]:
            chunk = os.read(pipe, TAIL)
            if not chunk:
                break
            tail = (tail + chunk)[-TAIL:]
        else:
            is_over = True
            end_group(process)
    status = process.wait()
    end_group(process)
    process.stdout.close()
    return Run(None if is_over else status, tail.decode(errors="replace"))


def end_group(process):
    """Ends what `process` started and left behind; it leads a process group of its own."""
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
