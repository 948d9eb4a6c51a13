"""For whom a server starts the programs: a table of requests, run against one server.

    strangers_test.py SERVER FOLDER    SERVER as in KINDS; FOLDER holds the built programs
"""

import os
import re
import subprocess
import sys
import unittest
from pathlib import Path

import servers
from counted_programs import counting_server, starts
from guide_blocks import blocks
from service import FORM, Project, Service, form

POST = "POST /{name} HTTP/1.1"
HERE = "Host: 127.0.0.1:{port}"
ORIGIN = "Origin: http://127.0.0.1:{port}"
NAMED = "sign.example.org"  # what the administrator has added

# The statuses that may come, the request line and the headers. What no browser sends ends at the
# server's own reading in some of them: 400.
TABLE = (
    # A program as the client, or the address bar of a browser.
    (200, POST, HERE),
    (200, POST, HERE, "Sec-Fetch-Site: none"),
    (200, "POST /{name} HTTP/1.0"),
    (200, "POST /{name} HTTP/1.0", HERE),

    # Methods.
    (405, "GET /{name} HTTP/1.1", HERE),
    (405, "HEAD /{name} HTTP/1.1", HERE),
    (405, "PUT /{name} HTTP/1.1", HERE),
    (405, "DELETE /{name} HTTP/1.1", HERE),
    (405, "OPTIONS /{name} HTTP/1.1", HERE),
    (405, "PATCH /{name} HTTP/1.1", HERE),
    ((405, 501), "SIGN /{name} HTTP/1.1", HERE),
    ((400, 405, 501), "post /{name} HTTP/1.1", HERE),
    (405, "PUT /{name} HTTP/1.1", HERE, "X-HTTP-Method-Override: POST"),

    # Where a browser says that a page comes from.
    (200, POST, HERE, "Sec-Fetch-Site: same-origin", ORIGIN),
    (200, POST, HERE, "sEC-fETCH-sITE: same-origin"),
    (200, POST, HERE, "Sec-Fetch-Site:"),
    (403, POST, HERE, "Sec-Fetch-Site: cross-site"),
    (403, POST, HERE, "Sec-Fetch-Site: cross-site", ORIGIN),
    (403, POST, HERE, "sec-fetch-site: same-site"),
    (403, POST, HERE, "Sec-Fetch-Site: None"),
    (403, POST, HERE, "Sec-Fetch-Site: same-origin, cross-site"),
    (403, POST, HERE, "Sec-Fetch-Site: same-origin;cross-site"),
    (403, POST, HERE, "Sec-Fetch-Site: x"),

    # The origin of a page, which must be that of the request.
    (200, POST, HERE, ORIGIN),
    (200, POST, HERE, "Origin: https://127.0.0.1:{port}"),  # with TLS in front
    (200, POST, "hOST: LocalHost:{port}", "oRIGIN: HTTP://localHost:{port}"),
    (200, POST, "Host: [::1]:{port}", "Origin: http://[::1]:{port}"),
    (200, POST, "Host: localhost", "Origin: http://localhost"),
    (200, POST, HERE, "Origin:"),
    (403, POST, HERE, "Origin: http://evil.example"),
    (403, POST, HERE, "origin: https://evil.example:{port}"),
    (403, POST, HERE, "Origin: null"),
    (403, POST, HERE, "Origin: http://127.0.0.1"),
    (403, POST, HERE, "Origin: http://127.0.0.1:1{port}"),
    (403, POST, HERE, "Origin: http://localhost:{port}"),
    (403, POST, HERE, "Origin: ftp://127.0.0.1:{port}"),
    (403, POST, HERE, "Origin: 127.0.0.1:{port}"),
    (403, POST, HERE, "Origin: http://"),
    (403, POST, HERE, "Origin: ="),
    (403, POST, HERE, "Origin: http://evil.example="),
    (403, POST, HERE, ORIGIN + "/"),
    (403, POST, HERE, ORIGIN + "#"),
    (403, POST, HERE, ORIGIN + ".evil.example"),
    (403, POST, HERE, ORIGIN + "@evil.example"),
    (403, POST, HERE, "Origin: http://evil.example 127.0.0.1:{port}"),
    (403, POST, HERE, ORIGIN + ", http://evil.example"),
    (403, POST, HERE, "Origin: http://127.0.0.1%3A{port}"),
    (403, POST, "Host: [::1]:{port}", "Origin: http://x:{port}"),
    (403, "POST /{name}?x=http%3A%2F%2Fx HTTP/1.1", HERE, "Origin: http://evil.example"),
    (403, "POST /{name}?127.0.0.1%3A{port}=http%3A%2F%2F127.0.0.1%3A{port} HTTP/1.1", HERE,
     "Origin: null"),
    (403, "POST /{name} HTTP/1.0", "Origin: http://evil.example"),
    (403, "POST /{name} HTTP/1.0", "Origin: http://"),

    # The name by which this machine is asked. A stranger's may have been made to lead here.
    (200, POST, "Host: localhost"),
    (200, POST, "Host: 127.0.0.1"),
    (200, POST, "Host: [::1]:8443"),
    (200, POST, "Host: LOCALHOST:1"),
    (421, POST, "Host: evil.example"),
    (421, POST, "Host: evil.example:{port}", "Origin: http://evil.example:{port}",
     "Sec-Fetch-Site: same-origin"),
    (421, POST, "host: EVIL.example:{port}"),
    (421, POST, "Host: localhost.evil.example"),
    (421, POST, "Host: evil-localhost"),
    (421, POST, "Host: 127.0.0.1.evil.example"),
    (421, POST, "Host: 127a0b0c1"),
    (421, POST, "Host: 192.0.2.1"),
    (421, POST, "Host: 0.0.0.0:{port}"),
    (421, POST, "Host: " + NAMED),
    ((400, 421), POST, "Host: localhost@evil.example"),
    ((400, 421), POST, "Host: localhost,evil.example"),
    ((400, 421), POST, "Host: 2130706433"),
    (400, POST),
    (400, POST, HERE, "Host: evil.example"),
    (400, POST, "Host: evil.example", HERE),
    (400, "POST /{name} HTTP/1.0", HERE, "Host: evil.example"),

    # A request as to a proxy, with the name in its first line.
    ((400, 421), "POST http://evil.example/{name} HTTP/1.1", HERE),
    ((400, 421), "POST https://evil.example/{name} HTTP/1.1", HERE),
    ((400, 421), "POST HTTP://evil.example:{port}/{name} HTTP/1.1", HERE),
    ((400, 421), "POST http://localhost@evil.example/{name} HTTP/1.1", HERE),
    ((400, 421), "POST http://127.0.0.1:{port}/{name} HTTP/1.1", "Host: evil.example"),
    (421, "POST http://evil.example/{name} HTTP/1.1", "Host: evil.example"),
    (421, "POST http://evil.example/{name} HTTP/1.0"),
)

# nginx joins such lines from 1.23 on; before, it gives a configuration the first of them alone.
REPEATED = (
    (403, POST, HERE, ORIGIN, "Origin: http://evil.example"),
    (403, POST, HERE, "Origin:", "Origin: http://evil.example"),
    (403, POST, HERE, "Sec-Fetch-Site: same-origin", "Sec-Fetch-Site: cross-site"),
)
REPEATED_THE_OTHER_WAY_ROUND = (
    (403, POST, HERE, "Origin: http://evil.example", ORIGIN),
    (403, POST, HERE, "Sec-Fetch-Site: cross-site", "Sec-Fetch-Site: same-origin"),
)

WITH_A_NAME = (
    (200, POST, "Host: " + NAMED),
    (200, POST, f"Host: {NAMED}:8443", f"Origin: https://{NAMED}:8443"),
    (200, POST, f"Host: {NAMED.upper()}", f"Origin: https://{NAMED}", "Sec-Fetch-Site: same-origin"),
    (200, POST, HERE, ORIGIN),
    (403, POST, f"Host: {NAMED}:8443", f"Origin: https://{NAMED}"),
    (403, POST, "Host: " + NAMED, ORIGIN),
    (403, POST, HERE, f"Origin: https://{NAMED}"),
    (421, POST, "Host: evil.example"),
    (421, POST, f"Host: {NAMED}.evil.example"),
    (421, POST, f"Host: evil.{NAMED}"),
    (421, POST, "Host: " + NAMED.replace(".", "x", 1)),
)


class LighttpdUnconfigured(servers.Lighttpd):
    """It compares an origin in a text that other settings write in another way."""

    PARSING = ""


KINDS = {**servers.SERVERS, "LighttpdUnconfigured": LighttpdUnconfigured}


def nginx_version():
    shown = subprocess.run([servers.program_of_server("nginx"), "-v"], check=True, text=True,
                           stderr=subprocess.PIPE).stderr
    return tuple(int(number) for number in re.search(r"nginx/(\d+)\.(\d+)", shown).groups())


class TestStrangers(unittest.TestCase):
    kind = None
    programs = None

    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(servers.temporary_folder())
        cls.project = Project(cls.programs / "projectctl", cls.folder)
        cls.body = form(project=cls.project.path, sig_create="true", sig_data="x")
        cls.service = cls.serve()

    @classmethod
    def serve(cls, **options):
        server = cls.enterClassContext(
            counting_server(cls.kind, cls.programs, cls.folder, **options))
        return Service(server, cls.project)

    def ask(self, service, name, first_line, headers):
        """The status and the text of the answer, and how often a program was started."""
        lines = [line.format(name=name, port=service.server.port) for line in (first_line, *headers)]
        # lighttpd takes no body with these two: it answers 400.
        without = issubclass(self.kind, servers.Lighttpd) and first_line[:4] in ("GET ", "HEAD")
        body = b"" if without else self.body
        head = "\r\n".join([*lines, "Connection: close", f"Content-Type: {FORM}",
                            f"Content-Length: {len(body)}", "", ""])
        before = starts(service.server)
        head, _, text = service.raw(head.encode() + body).partition(b"\r\n\r\n")
        status = re.match(rb"HTTP/1\.[01] (\d{3}) ", head)
        self.assertIsNotNone(status, head)
        if status[1] == b"405" and self.kind is servers.Nginx:
            self.assertIn(b"\r\nAllow: POST", head)
        return int(status[1]), text.decode(), starts(service.server) - before

    def check(self, service, table):
        """Where the status is to be 200, one program signs; else none is started."""
        for expected, first_line, *headers in table:
            for name in ("sign.cgi", "nph-sign.cgi") if service.server.nph else ("sign.cgi",):
                with self.subTest(name, request=first_line, headers=headers):
                    status, text, started = self.ask(service, name, first_line, headers)
                    self.assertIn(status, expected if isinstance(expected, tuple) else (expected,))
                    self.assertEqual(started, 1 if status == 200 else 0)
                    if status == 200:
                        self.assertTrue(self.project.verifies(text, b"x"))

    def test_are_told_from_friends(self):
        self.check(self.service, TABLE)

    def test_do_not_hide_behind_a_header_that_comes_twice(self):
        self.check(self.service, REPEATED_THE_OTHER_WAY_ROUND)
        sees_the_first_alone = self.kind is servers.Nginx and nginx_version() < (1, 23)
        self.check(self.service, [(200 if sees_the_first_alone else status, *request)
                                  for status, *request in REPEATED])

    def test_stay_strangers_when_the_administrator_adds_a_name(self):
        own = blocks("Letting others in", self.kind.language)[0]
        self.check(self.serve(own=own), WITH_A_NAME)


if __name__ == "__main__":
    TestStrangers.kind = KINDS[sys.argv[1]]
    TestStrangers.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[2]).resolve()
    unittest.main(argv=sys.argv[:1])
