"""What a server answers that lacks something: never the program's own bytes.

    misconfigured_test.py FOLDER     FOLDER holds the built programs
"""

import os
import sys
import tempfile
import unittest
from pathlib import Path

from servers import ApacheEvent, Nginx
from service import Service


class ApacheWithoutCgi(ApacheEvent):
    CGI = "authn_core"  # any other module


class NginxAlone(Nginx):
    def start_fcgiwrap(self):
        pass


class TestMisconfigured(unittest.TestCase):
    programs = None

    def answers_of(self, kind, names):
        with tempfile.TemporaryDirectory() as name:
            folder = Path(name)
            folder.chmod(0o755)
            with kind(self.programs, folder) as server:
                return [Service(server, None).ask(b"x", name=name) for name in names]

    def test_apache_without_a_module_for_cgi_programs_does_not_hand_them_out(self):
        for answer in self.answers_of(ApacheWithoutCgi, ("sign.cgi", "nph-sign.cgi")):
            self.assertEqual(answer.status, 503)
            self.assertNotIn(b"ELF", answer.body)

    def test_nginx_without_fcgiwrap_says_so(self):
        (answer,) = self.answers_of(NginxAlone, ("sign.cgi",))
        self.assertEqual(answer.status, 502)


if __name__ == "__main__":
    TestMisconfigured.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
