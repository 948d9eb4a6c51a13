"""JSON with a charset, at a server with the lines of docs/deployment.md for it.

    charset_test.py SERVER FOLDER    SERVER as in servers.py; FOLDER holds the built programs
"""

import json
import os
import re
import sys
import unittest
from pathlib import Path

from servers import INSTALLED, ROOT, SERVERS, Apache, temporary_folder
from service import FORM, JSON, Project, Service, form, text_answer

REPLACED_IN_NGINX = "    fastcgi_param CONTENT_TYPE $content_type;\n"


def guide(language):
    """The lines for a server in the guide's section."""
    text = (ROOT / "docs" / "deployment.md").read_text(encoding="utf-8")
    section = re.search(r"(?ms)^## JSON with a charset\n(.*?)^## ", text).group(1)
    return re.search(rf"(?ms)^```{language}\n(.*?)^```$", section).group(1)


def following_the_guide(kind):
    class Following(kind):
        MODULES = (*Apache.MODULES, "headers")

        def configuration(self, name):
            text = super().configuration(name)
            if name == "nginx.conf":
                if text.count(REPLACED_IN_NGINX) != 1:
                    raise ValueError("nginx.conf has no line for CONTENT_TYPE")
                return text.replace(REPLACED_IN_NGINX, guide("nginx"))
            if not name.endswith(".conf"):
                return text
            own = guide("apache" if issubclass(kind, Apache) else "lighttpd")
            return text + own.replace(INSTALLED, str(self.programs))

    return Following


class TestCharset(unittest.TestCase):
    kind = None
    programs = None

    def setUp(self):
        self.folder = self.enterContext(temporary_folder())
        self.project = Project(self.programs / "projectctl", self.folder)
        self.body = json.dumps({"mode": "generateSignature", "project": str(self.project.path),
                                "signature": {"data": "x"}}).encode()

    def test_is_json_with_the_lines_of_the_guide(self):
        with following_the_guide(self.kind)(self.programs, self.folder) as server:
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
