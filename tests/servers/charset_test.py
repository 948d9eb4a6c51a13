"""JSON with a charset, at a server with the lines of docs/deployment.md for it.

    charset_test.py SERVER FOLDER    SERVER as in servers.py; FOLDER holds the built programs
"""

import json
import os
import sys
import unittest
from pathlib import Path

from guide_blocks import blocks
from servers import SERVERS, Apache, Lighttpd, temporary_folder
from service import FORM, JSON, Project, Service, form, text_answer


def following_the_guide(kind, programs, folder):
    class Following(kind):
        MODULES = (*Apache.MODULES, "headers")

    whole = 'server.modules += ( "mod_setenv" )' if kind is Lighttpd else ""
    return Following(programs, folder, whole=whole,
                     own=blocks("JSON with a charset", kind.language, "deployment.md")[0])


class TestCharset(unittest.TestCase):
    kind = None
    programs = None

    def setUp(self):
        self.folder = self.enterContext(temporary_folder())
        self.project = Project(self.programs / "projectctl", self.folder)
        self.body = json.dumps({"mode": "generateSignature", "project": str(self.project.path),
                                "signature": {"data": "x"}}).encode()

    def test_is_json_with_the_lines_of_the_guide(self):
        with following_the_guide(self.kind, self.programs, self.folder) as server:
            service = Service(server, self.project)
            for name in ("sign.cgi", "nph-sign.cgi") if server.nph else ("sign.cgi",):
                for content_type in (JSON, "application/json; charset=utf-8",
                                     "application/json;charset=UTF-8",
                                     "Application/JSON ; charset=utf-8"):
                    with self.subTest(name, content_type=content_type):
                        answer = service.ask(self.body, content_type, name)
                        self.assertEqual((answer.status, answer.content_type), (200, JSON))
                        text = json.loads(answer.body)["signature"]
                        self.assertTrue(self.project.verifies(text, b"x"))
                # Nothing else becomes JSON.
                request = form(project=self.project.path, sig_verify="true", sig_data="x", sig="x")
                for content_type in (FORM, "application/jsonx; x", "text/x; application/json; x"):
                    with self.subTest(name, content_type=content_type):
                        self.assertEqual(service.ask(request, content_type, name),
                                         text_answer("false"))


if __name__ == "__main__":
    TestCharset.kind = SERVERS[sys.argv[1]]
    TestCharset.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[2]).resolve()
    unittest.main(argv=sys.argv[:1])
