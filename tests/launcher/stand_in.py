#!/usr/bin/python3 -ISB
"""In the place of sign.cgi: tells what it was started with, and where told to hangs until it is ended."""

import json
import os
import re
import signal
import sys
from pathlib import Path


def told_by_the_kernel(name):
    return Path("/proc/self", name).read_text(encoding="latin-1")


LIMIT = re.compile(r"^Max (.+?)  +(\S+) +(\S+)", re.MULTILINE)
MASK = re.compile(r"^(Sig\w+):\t(\w+)$", re.MULTILINE)

print(json.dumps({
    "arguments": sys.argv,
    "environment": told_by_the_kernel("environ").split("\0")[:-1],
    "limits": {name: values for name, *values in LIMIT.findall(told_by_the_kernel("limits"))},
    "signals": {name: int(mask, 16) for name, mask in MASK.findall(told_by_the_kernel("status"))},
    "seconds left": signal.getitimer(signal.ITIMER_REAL)[0],
    "descriptors": [int(name) for name in os.listdir("/proc/self/fd")],
}), flush=True)
if sys.stdin.read() == "hang":
    signal.pause()
