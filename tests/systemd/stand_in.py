#!/usr/bin/python3 -I
"""Stands in the place of sign.cgi: runs the Python that a request's body holds, as whoever has
captured the program could, and answers with what `answer` is then, as JSON."""

import json
import os
import sys

scope = {}
exec(sys.stdin.buffer.read(int(os.environ["CONTENT_LENGTH"])), scope)
text = json.dumps(scope["answer"])
print(f"Status: 200 OK\r\nContent-Type: application/json\r\nContent-Length: {len(text)}\r\n\r",
      text, sep="\n", end="")
