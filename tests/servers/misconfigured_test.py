"""What a server answers that lacks something: never the program's own bytes.

    misconfigured_test.py FOLDER     FOLDER holds the built programs
"""

import os
import sys
import unittest
from pathlib import Path

from servers import ApacheEvent, Lighttpd, Nginx, runs_as_root, temporary_folder
from service import Service


class ApacheWithoutCgi(ApacheEvent):
    CGI = "authn_core"  # any other module


class NginxAlone(Nginx):
    def start_fcgiwrap(self):
        pass


class Apart:
    """What starts programs sees a constant file in the place of the kernel's random device."""

    def start(self, command, **options):
        if Path(command[0]).name != "nginx":
            constant = self.write("constant", "x" * 4096)
            is_root = runs_as_root() and "user" not in options
            command = ["unshare", "--mount", *([] if is_root else ["--map-root-user"]), "sh", "-ec",
                       f'mount --bind {constant} /dev/urandom; exec "$@"', "sh", *command]
        super().start(command, **options)


class LighttpdApart(Apart, Lighttpd):
    pass


class NginxApart(Apart, Nginx):
    pass


class TestMisconfigured(unittest.TestCase):
    programs = None

    def answers_of(self, kind, names):
        with temporary_folder() as folder:
            with kind(self.programs, folder) as server:
                answers = [Service(server, None).ask(b"x", name=name) for name in names]
                self.said = server.all_it_said()
                return answers

    def test_apache_without_a_module_for_cgi_programs_does_not_hand_them_out(self):
        for answer in self.answers_of(ApacheWithoutCgi, ("sign.cgi", "nph-sign.cgi")):
            self.assertEqual(answer.status, 503)
            self.assertNotIn(b"ELF", answer.body)

    def test_nginx_without_fcgiwrap_says_so(self):
        (answer,) = self.answers_of(NginxAlone, ("sign.cgi",))
        self.assertEqual(answer.status, 502)

    def test_without_the_kernels_random_device_no_program_is_started(self):
        for kind, names, status in ((LighttpdApart, ("sign.cgi", "nph-sign.cgi"), 500),
                                    (NginxApart, ("sign.cgi",), 502)):
            for answer in self.answers_of(kind, names):
                with self.subTest(kind.__name__):
                    self.assertEqual(answer.status, status)
                    self.assertNotIn(b"'mode'", answer.body)
            with self.subTest(kind.__name__):
                self.assertIn("limited: random device: not the kernel's", self.said)


if __name__ == "__main__":
    TestMisconfigured.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
