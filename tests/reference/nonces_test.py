"""Processes that are started together do not share a nonce.

    nonces_test.py FOLDER     the folder of sign.cgi; SIGN_PROGRAM_FOLDER names another

The processes of a group wait for their bodies, which are then sent at once, so that all are seeded
within the same second. The r of a signature is the x coordinate of the nonce times the base point:
two nonces that are equal, or whose sum is the order, have the same. One hundred groups of 200 in a
long run, where SIGN_LONG_RUN is set; one otherwise.
"""

import os
import subprocess
import sys
import unittest
from pathlib import Path

import core_text

ROOT = Path(__file__).resolve().parents[2]
PROJECT = ROOT / "tests" / "vectors" / "projects" / "project-00.bin"
GROUP = 200
GROUPS = 100 if "SIGN_LONG_RUN" in os.environ else 1
SECONDS_FOR_A_REQUEST = 60


def r_of(response):
    """The first of the two equal halves, least significant byte first."""
    head, _, text = response.partition(b"\r\n\r\n")
    if not head.startswith(b"Status: 200 OK\r\n"):
        raise AssertionError(response)
    raw, length = core_text.decode(text)
    return int.from_bytes(raw[:length // 2], "little")


def group_of_nonces(program, body):
    environment = {"CONTENT_LENGTH": str(len(body))}
    processes = [subprocess.Popen([program], env=environment, stdin=subprocess.PIPE,
                                  stdout=subprocess.PIPE) for _ in range(GROUP)]
    for process in processes:
        process.stdin.write(body)
        process.stdin.close()
    found = []
    for process in processes:
        found.append(r_of(process.stdout.read()))
        process.stdout.close()
        if process.wait(timeout=SECONDS_FOR_A_REQUEST) != 0:
            raise AssertionError(process.returncode)
    return found


class Nonces(unittest.TestCase):
    folder = None

    def test_of_processes_started_together_all_differ(self):
        body = f"sig_create=true&sig_data=x&project={PROJECT}".encode()
        found = []
        for _ in range(GROUPS):
            found += group_of_nonces(self.folder / "sign.cgi", body)
        self.assertEqual(len(set(found)), GROUP * GROUPS)
        print(f"{len(found)} processes, as many nonces")


if __name__ == "__main__":
    Nonces.folder = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
