"""Requests a second of each server, with sign.cgi signing and with a program that only answers, by wrk.

    throughput.py FOLDER [--cost] [SERVER...]    FOLDER: of the built programs; all servers unless told

The two take turns in blocks, and the medians over the blocks are printed with their ratio. With --cost,
the processor time of a signature is printed, of the server and all that it starts, which depends less on
what else the machine does. That takes root, and control groups of version 2.
"""

import contextlib
import json
import os
import re
import shutil
import statistics
import subprocess
import sys
import time
from pathlib import Path

from servers import ROOT, SERVERS, temporary_folder
from service import Project, Service

sys.path.insert(0, str(ROOT / "tests" / "systemd"))
import control_groups  # noqa: E402

BLOCKS = 7
CLIENTS = 4
SECONDS = 2
DATA = "x" * 64
SCRIPT = Path(__file__).with_name("post.lua")


@contextlib.contextmanager
def counted(server):
    """Puts a server with all that it starts into a control group of its own; gives a function that tells the
    milliseconds of processor time which this has taken. The server must have ended with the block."""
    group = control_groups.hierarchies()[""] / f"sign-throughput-{os.getpid()}"
    group.mkdir()
    try:
        sessions = {str(process.pid) for process in server.processes}
        for path in Path("/proc").glob("[0-9]*/stat"):
            # Behind the name: state, parent, group and session.
            if path.read_text(errors="replace").rpartition(") ")[2].split()[3] in sessions:
                (group / "cgroup.procs").write_text(path.parent.name, encoding="ascii")
        yield lambda: int(re.search(r"usage_usec (\d+)", (group / "cpu.stat").read_text())[1]) / 1000
    finally:
        server.__exit__()
        while (group / "cgroup.procs").read_text(encoding="ascii"):
            time.sleep(0.01)
        group.rmdir()


def rate_and_count(server, body):
    """Requests a second, and how many there were, by wrk, which costs next to nothing beside a server that
    starts a process for each request."""
    words = ["wrk", "--threads=1", f"--connections={CLIENTS}", f"--duration={SECONDS}s",
             f"--script={SCRIPT}", server.url("sign.cgi")]
    output = subprocess.run(words, env={**os.environ, "BODY": body}, check=True,
                            stdout=subprocess.PIPE, text=True).stdout
    rate = re.search(r"^Requests/sec: +([\d.]+)$", output, re.MULTILINE)
    count = re.search(r"^ +(\d+) requests in ", output, re.MULTILINE)
    if rate is None or re.search(r"Non-2xx|Socket errors", output):
        raise AssertionError(output)
    return float(rate[1]), int(count[1])


def throughput_of(programs, name):
    """Requests a second with either program, and the median of the ratios of the blocks."""
    with serving(programs, name) as (ours, other, body):
        blocks = [[rate_and_count(server, body)[0] for server in (ours, other)]
                  for _ in range(BLOCKS)]
    signing, answering_alone = (statistics.median(rates) for rates in zip(*blocks))
    return signing, answering_alone, statistics.median(mine / alone for mine, alone in blocks)


def cost_of(programs, name):
    """Milliseconds of processor time for a signature, of the server and all that it starts."""
    costs = []
    with serving(programs, name) as (server, _, body), counted(server) as taken:
        for _ in range(BLOCKS):
            before = taken()
            count = rate_and_count(server, body)[1]
            costs.append((taken() - before) / count)
    return statistics.median(costs)


@contextlib.contextmanager
def serving(programs, name):
    """A server with our program and one with the other, and the request to sign."""
    with temporary_folder() as folder:
        project = Project(programs / "projectctl", folder)
        answering = folder / "answering"
        answering.mkdir()
        shutil.copy(programs / "tests" / "answering_stand_in", answering / "sign.cgi")
        shutil.copy(programs / "limited", answering)
        body = json.dumps({"mode": "generateSignature", "project": str(project.path),
                           "signature": {"data": DATA}})
        with SERVERS[name](programs, folder) as ours, SERVERS[name](answering, folder) as other:
            if not project.verifies(Service(ours, project).sign(DATA), DATA.encode()):
                raise AssertionError("what was signed does not verify")
            yield ours, other, body


def main(programs, words):
    names = [word for word in words if word != "--cost"] or list(SERVERS)
    for name in names:
        if "--cost" in words:
            print(f"{name}: {cost_of(programs, name):.2f} ms of processor time a signature", flush=True)
            continue
        signing, answering_alone, ratio = throughput_of(programs, name)
        print(f"{name}: {signing:.0f} signing, {answering_alone:.0f} answering alone, "
              f"ratio {ratio:.2f}", flush=True)


if __name__ == "__main__":
    main(Path(sys.argv[1]).resolve(), sys.argv[2:])
