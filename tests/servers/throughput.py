"""Requests a second of each server, with sign.cgi signing and with a program that only answers, by wrk.

    throughput.py FOLDER [SERVER...]    FOLDER: of the built programs; all servers unless told

The two take turns in blocks, and the medians over the blocks are printed with their ratio.
"""

import json
import os
import re
import shutil
import statistics
import subprocess
import sys
from pathlib import Path

from servers import SERVERS, temporary_folder
from service import Project, Service

BLOCKS = 7
CLIENTS = 4
SECONDS = 2
DATA = "x" * 64
SCRIPT = Path(__file__).with_name("post.lua")


def requests_a_second(server, body):
    """By wrk, which costs next to nothing beside a server that starts a process for each request."""
    words = ["wrk", "--threads=1", f"--connections={CLIENTS}", f"--duration={SECONDS}s",
             f"--script={SCRIPT}", server.url("sign.cgi")]
    output = subprocess.run(words, env={**os.environ, "BODY": body}, check=True,
                            stdout=subprocess.PIPE, text=True).stdout
    rate = re.search(r"^Requests/sec: +([\d.]+)$", output, re.MULTILINE)
    if rate is None or re.search(r"Non-2xx|Socket errors", output):
        raise AssertionError(output)
    return float(rate.group(1))


def throughput_of(programs, name):
    """Requests a second with either program, and the median of the ratios of the blocks."""
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
            blocks = [[requests_a_second(server, body) for server in (ours, other)]
                      for _ in range(BLOCKS)]
    signing, answering_alone = (statistics.median(rates) for rates in zip(*blocks))
    return signing, answering_alone, statistics.median(mine / alone for mine, alone in blocks)


def main(programs, names):
    for name in names:
        signing, answering_alone, ratio = throughput_of(programs, name)
        print(f"{name}: {signing:.0f} signing, {answering_alone:.0f} answering alone, "
              f"ratio {ratio:.2f}", flush=True)


if __name__ == "__main__":
    main(Path(sys.argv[1]).resolve(), sys.argv[2:] or list(SERVERS))
