"""Two servers behind one nginx, which share nothing but a project file, answer as one.

    balancer_test.py FOLDER     FOLDER holds the built programs
"""

import os
import re
import sys
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from servers import Lighttpd, Nginx, NginxBalancer, temporary_folder
from service import FORM, Project, Service, form, text_answer

REQUESTS = 100


class TestBalancer(unittest.TestCase):
    programs = None

    def setUp(self):
        self.folder = self.enterContext(temporary_folder())
        self.project = Project(self.programs / "projectctl", self.folder)
        # Two of a kind differ in nothing that a client sees: two kinds show who has answered.
        self.servers = [self.enterContext(kind(self.programs, self.folder))
                        for kind in (Lighttpd, Nginx)]
        balancer = self.enterContext(NginxBalancer(self.servers, self.folder))
        self.service = Service(balancer, self.project)

    def test_each_verifies_what_either_signed(self):
        with ThreadPoolExecutor(8) as pool:
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
        served = [re.search(rb"\r\nServed-By: \S*:(\d+)\r\n", self.service.raw(
            b"POST /sign.cgi HTTP/1.0\r\nContent-Length: 1\r\n\r\nx")).group(1) for _ in range(20)]
        for server in self.servers:
            self.assertEqual(served.count(b"%d" % server.port), 10)

    def test_one_goes_on_when_the_other_is_gone(self):
        self.servers[0].__exit__()
        for number in range(20):
            signature = self.service.sign(f"data {number}")
            self.assertTrue(self.project.verifies(signature, f"data {number}".encode()))


if __name__ == "__main__":
    TestBalancer.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
