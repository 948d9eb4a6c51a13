"""Counts the instructions of a request of each kind by callgrind, and holds them to baseline.txt.

    instruction_counts.py FOLDER            of a release build; exits 1 if a count has grown by 3 %
    instruction_counts.py FOLDER --write    writes baseline.txt anew
"""

import base64
import json
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
BASELINE = Path(__file__).with_name("baseline.txt")
PROJECT = "tests/vectors/projects/project-00.bin"
TOLERANCE = 1.03
BASE64_CHARACTERS = 80000


def request(mode, **signature):
    return json.dumps({"mode": mode, "project": PROJECT, "signature": signature})


def run(program, body, *before):
    """As the tests of a program do, with an environment that is the same everywhere."""
    return subprocess.run([*before, program], input=body.encode(), cwd=ROOT, capture_output=True,
                          env={"PATH": os.defpath, "CONTENT_TYPE": "application/json",
                               "CONTENT_LENGTH": str(len(body))}, check=False)


def instructions(program, body, *options):
    with tempfile.NamedTemporaryFile() as profile:
        result = run(program, body, "valgrind", "--tool=callgrind",
                     f"--callgrind-out-file={profile.name}", *options)
    return int(re.search(rb"Collected : (\d+)", result.stderr).group(1))


def count(program):
    data = "x" * 64
    sign = request("generateSignature", data=data)
    answer = run(program, sign).stdout.partition(b"\r\n\r\n")[2]
    verify = request("verifySignature", data=data, signature=json.loads(answer)["signature"])
    if run(program, verify).stdout.partition(b"\r\n\r\n")[2] != b'{"valid":true}':
        raise AssertionError("what was signed does not verify")
    return {"signing": instructions(program, sign), "verifying": instructions(program, verify),
            "refusing": instructions(program, '{"mode":"sign"}')}


def base64_character(program):
    """Instructions that the decoder of base64 takes for one character of a request."""
    data = bytes(range(240)) * (BASE64_CHARACTERS // 320)
    body = request("generateSignature", data=base64.b64encode(data).decode(), encoding="base64")
    decoder = "base64DecodeReporting*"
    count = instructions(program, body, f"--toggle-collect={decoder}")
    if count < BASE64_CHARACTERS:
        raise AssertionError(f"{decoder} took {count} instructions: is that its name?")
    return count / BASE64_CHARACTERS


def main(folder, *words):
    counts = count(folder.resolve() / "counted_request")
    if words == ("--write",):
        commit = subprocess.run(["git", "describe", "--always", "--abbrev=12"], cwd=ROOT,
                                check=True, capture_output=True, text=True).stdout.strip()
        BASELINE.write_text(f"# Instructions of one request, on top of commit {commit}.\n" + "".join(
            f"{name} {number}\n" for name, number in counts.items()), encoding="ascii")
    baseline = {name: int(number) for name, number in (
        line.split() for line in BASELINE.read_text(encoding="ascii").splitlines()
        if not line.startswith("#"))}
    grown = 0
    for name, number in counts.items():
        print(f"{name}: {number} instructions, {number / baseline[name]:.4f} of the baseline")
        grown += number > TOLERANCE * baseline[name]
    if grown:
        print("More than 3 per cent above bench/baseline.txt: make it less, or write the baseline "
              "anew in the same commit and say why.", file=sys.stderr)
    return 1 if grown else 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1]), *sys.argv[2:]))
