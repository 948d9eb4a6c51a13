"""What a server answers in the place of the program: each row of docs/http-interface.md.

    answers_test.py SERVER FOLDER    SERVER as in servers.py; FOLDER holds the built programs
"""

import os
import re
import shutil
import sys
import unittest
from pathlib import Path

from servers import SERVERS, Apache, give_to_account, temporary_folder
from service import FORM, Service
from told_answers import PROGRAM, told_answers

ENDS_IN_SILENCE = "#!/bin/sh\ncat >/dev/null\nkill -BUS $$\n"
# acceptance_test.py waits for it.
LIMIT = "the program takes longer than 60 seconds"
STRANGER = "from an address that is not let in"
NO_RESPONSE = "the program ends without a response"
OVER_LIMIT = (8 << 20) + 1


def request(*headers, line="POST /sign.cgi HTTP/1.1", host="localhost", body=b"x", length=True):
    lines = [line, f"Host: {host}", "Connection: close", f"Content-Type: {FORM}", *headers]
    if length:
        lines.append(f"Content-Length: {len(body)}")
    return "\r\n".join([*lines, "", ""]).encode() + body


REQUESTS = {
    "a method other than `POST`": request(line="PUT /sign.cgi HTTP/1.1"),
    "a `GET` with a body": request(line="GET /sign.cgi HTTP/1.1"),
    "a method that HTTP does not have": request(line="SIGN /sign.cgi HTTP/1.1"),
    "malformed: two different lengths": request("Content-Length: 5"),
    "no body and no `Content-Length`": request(body=b"", length=False),
    "a body in chunks": request("Transfer-Encoding: chunked", length=False,
                                body=b"1\r\nx\r\n0\r\n\r\n"),
    "`Transfer-Encoding: gzip`": request("Transfer-Encoding: gzip", body=b"", length=False),
    "`Expect: something`": request("Expect: something"),
    "a header of 70,000 bytes": request("X: " + "x" * 70000),
    "a URL of 70,000 bytes": request(line=f"POST /sign.cgi?{'x' * 70000} HTTP/1.1"),
    "a body above the limit of 8 MiB": request(f"Content-Length: {OVER_LIMIT}", body=b"",
                                               length=False),
    "for a host that is not in the list": request(host="sign.example.org"),
    "from a page of another origin": request("Origin: http://sign.example.org"),
}


class TestAnswers(unittest.TestCase):
    kind = None
    programs = None

    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(temporary_folder())
        cls.service = cls.serve(cls.programs)

    @classmethod
    def serve(cls, programs):
        server = cls.enterClassContext(cls.kind(programs, cls.folder))
        give_to_account(server.programs)
        return Service(server, None)

    def answer(self, service, sent, **options):
        """The status, or that the program has answered; nothing where nothing came."""
        head, _, body = service.raw(sent, **options).partition(b"\r\n\r\n")
        if b"\r\nContent-Type: text/plain" in head and re.search(b"parse input|'mode'", body):
            return PROGRAM
        return int(re.match(rb"HTTP/1\.[01] (\d{3}) ", head)[1]) if head else None

    def test_are_those_of_the_table(self):
        told = told_answers(self.kind)
        self.assertEqual(told.keys(), REQUESTS.keys() | {STRANGER, NO_RESPONSE, LIMIT})
        for name, sent in REQUESTS.items():
            with self.subTest(name):
                self.assertEqual(self.answer(self.service, sent), told[name])
        self.assertEqual(self.answer(self.service, request(), source="127.0.0.2"), told[STRANGER])

    def test_of_a_program_that_gives_no_response(self):
        programs = self.folder / "silent"
        programs.mkdir()
        shutil.copy(self.programs / "limited", programs)
        for name in ("sign.cgi", "nph-sign.cgi"):
            (programs / name).write_text(ENDS_IN_SILENCE, encoding="ascii")
            (programs / name).chmod(0o755)
        service = self.serve(programs)
        told = told_answers(self.kind)[NO_RESPONSE]
        self.assertEqual(self.answer(service, request()), told)
        if service.server.nph:
            self.assertEqual(self.answer(service, request(line="POST /nph-sign.cgi HTTP/1.1")),
                             None if issubclass(self.kind, Apache) else told)


if __name__ == "__main__":
    TestAnswers.kind = SERVERS[sys.argv[1]]
    TestAnswers.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[2]).resolve()
    unittest.main(argv=sys.argv[:1])
