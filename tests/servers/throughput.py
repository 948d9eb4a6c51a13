"""Requests a second of each server, with sign.cgi signing and with a program that only answers.

    throughput.py FOLDER [SERVER...]    FOLDER: of the built programs; all servers unless told

The two take turns in blocks, and the medians over the blocks are printed with their ratio.
"""

import json
import shutil
import statistics
import sys
import tempfile
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from servers import SERVERS
from service import JSON, Project, Service, ask_on

BLOCKS = 9
CLIENTS = 4
REQUESTS_OF_A_CLIENT = 50


def requests_a_second(service, body):
    def serve_client(_):
        connection = service.connect()
        for _ in range(REQUESTS_OF_A_CLIENT):
            answer = ask_on(connection, body, JSON)
            if answer.status != 200:
                raise AssertionError(answer)
        connection.close()

    start = time.monotonic()
    with ThreadPoolExecutor(CLIENTS) as pool:
        list(pool.map(serve_client, range(CLIENTS)))
    return CLIENTS * REQUESTS_OF_A_CLIENT / (time.monotonic() - start)


def throughput_of(programs, name):
    """Requests a second with either program, and the median of the ratios of the blocks."""
    with tempfile.TemporaryDirectory() as path:
        folder = Path(path)
        folder.chmod(0o755)
        project = Project(programs / "projectctl", folder)
        answering = folder / "answering"
        answering.mkdir()
        shutil.copy(programs / "tests" / "answering_stand_in", answering / "sign.cgi")
        shutil.copy(programs / "limited", answering)
        body = json.dumps({"mode": "generateSignature", "project": str(project.path),
                           "signature": {"data": "x" * 64}}).encode()
        with SERVERS[name](programs, folder) as ours, SERVERS[name](answering, folder) as other:
            services = [Service(server, project) for server in (ours, other)]
            blocks = [[requests_a_second(service, body) for service in services]
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
