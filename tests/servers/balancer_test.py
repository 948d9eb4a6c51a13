"""Two servers behind a balancer, which share nothing but a project file, answer as one.

    balancer_test.py BALANCER FOLDER     BALANCER: Nginx or Haproxy, with the lines of docs/growing.md;
                                         FOLDER holds the built programs
"""

import os
import re
import sys
import threading
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from counted_programs import counting_server, starts
from guide_blocks import blocks
from servers import HaproxyBalancer, Lighttpd, Nginx, NginxBalancer, temporary_folder
from service import FORM, Project, Service, form, text_answer

BALANCERS = {"Nginx": NginxBalancer, "Haproxy": HaproxyBalancer}
REQUESTS = 100
CLIENTS = 8


class TestBalancer(unittest.TestCase):
    kind = None
    programs = None

    def setUp(self):
        self.folder = self.enterContext(temporary_folder())
        self.project = Project(self.programs / "projectctl", self.folder)
        # Two of a kind differ in nothing that a client sees: two kinds show who has answered.
        own = {kind: blocks("Letting others in", kind.language)[0] for kind in (Lighttpd, Nginx)}
        self.servers = [self.enterContext(
            counting_server(kind, self.programs, self.folder, own=own[kind]))
                        for kind in (Lighttpd, Nginx)]
        self.service = Service(self.enterContext(self.balancer()), self.project)

    def balancer(self):
        """That of the guide, on a port without TLS, before these two."""
        lines = blocks("A balancer", self.kind.language, "growing.md")[0]
        for number, server in enumerate(self.servers, 11):
            lines, found = re.subn(rf"192\.0\.2\.{number}(:80)?\b", f"127.0.0.1:{server.port}", lines)
            self.assertEqual(found, 1)
        return self.kind(re.sub(r"(?m)^ *ssl_.*\n", "", lines), self.folder)

    def test_each_verifies_what_either_signed(self):
        with ThreadPoolExecutor(CLIENTS) as pool:
            data = [f"data {number}" for number in range(REQUESTS)]
            signatures = list(pool.map(self.service.sign, data))
            for server in (self.service.server, *self.servers):
                ask = Service(server, self.project).ask
                answers = pool.map(
                    lambda pair, ask=ask: ask(form(project=self.project.path, sig_verify="true",
                                                   sig_data=pair[0], sig=pair[1]), FORM),
                    zip(data, signatures))
                self.assertEqual(set(answers), {text_answer("true")})

    def test_both_take_their_share(self):
        request = b"POST /sign.cgi HTTP/1.0\r\nHost: sign.example.org\r\nContent-Length: 1\r\n\r\nx"
        before = [starts(server) for server in self.servers]
        for _ in range(20):
            self.assertIn(b"'mode'", self.service.raw(request))
        for server, count in zip(self.servers, before):
            self.assertGreaterEqual(starts(server) - count, 10)

    def test_no_request_is_lost_when_one_is_taken_away_under_load(self):
        half = threading.Barrier(2)

        def sign(number):
            if number == REQUESTS:
                half.wait()
            return self.service.sign(f"data {number}")

        with ThreadPoolExecutor(CLIENTS) as pool:
            signed = pool.map(sign, range(2 * REQUESTS))
            half.wait()
            self.servers[0].__exit__()
            for number, signature in enumerate(signed):
                self.assertTrue(self.project.verifies(signature, f"data {number}".encode()))


if __name__ == "__main__":
    TestBalancer.kind = BALANCERS[sys.argv[1]]
    TestBalancer.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[2]).resolve()
    unittest.main(argv=sys.argv[:1])
