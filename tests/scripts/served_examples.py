"""A web server with the programs, for the tests of what is in examples/. Each is called with FOLDER,
which holds the programs; SIGN_PROGRAM_FOLDER names another.
"""

import os
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "servers"))
from browser import SECONDS  # noqa: E402
from servers import Lighttpd, temporary_folder  # noqa: E402
from service import Project  # noqa: E402

EXAMPLES = ROOT / "examples"
SIGNATURE = r"[A-Za-z0-9+/]{4,56}={0,2}"
NO_DATA = "Either 'data' or 'file' parameter is required"


class Served(unittest.TestCase):
    """A server with the programs and the page, and a project that it can read."""

    programs = None

    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(temporary_folder())
        cls.project = Project(cls.programs / "projectctl", cls.folder)
        static = shutil.copytree(EXAMPLES / "page", cls.folder / "page")
        cls.server = cls.enterClassContext(Lighttpd(cls.programs, cls.folder, static))
        cls.url = cls.server.url("sign.cgi")

    def run_example(self, name, *words, url=None, given=b""):
        """The exit status and what is written to both streams."""
        done = subprocess.run(
            [EXAMPLES / name, *words], env={**os.environ, "SIGN_URL": url or self.url},
            input=given, capture_output=True, timeout=SECONDS, check=False)
        return done.returncode, done.stdout.decode(), done.stderr.decode()


def main():
    Served.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    # The server is on this machine: nothing goes through a proxy.
    for variable in [name for name in os.environ if name.lower().endswith("_proxy")]:
        del os.environ[variable]
    unittest.main(argv=sys.argv[:1])
