"""What the tests of the units share: a container with the installed system, and requests to it."""

import contextlib
import time
import unittest
from pathlib import Path

from container import Container
from held_request import HeldRequest
from service import FORM, SECONDS_FOR_AN_ANSWER

UNITS = "usr/lib/systemd/system"
SERVICE, SOCKET = "sign-fcgiwrap@cgi.service", "sign-fcgiwrap@cgi.socket"
LAUNCHER = "/usr/libexec/sign-cgi/limited"
PROGRAM = "/usr/libexec/sign-cgi/sign.cgi"
AT_ONCE = 8
SECONDS = 30


def wait_until(condition, what):
    """The first answer of a condition that holds."""
    deadline = time.monotonic() + SECONDS
    while not (answer := condition()):
        if time.monotonic() > deadline:
            raise AssertionError(f"in vain waited for {what}")
        time.sleep(0.02)
    return answer


class Units(unittest.TestCase):
    """A container of its own for each class of tests."""

    layers = None  # of the installed system
    folder = None
    groups = None
    change = None  # of the installed system, before it boots

    @classmethod
    def setUpClass(cls):
        container = Container(cls.layers, cls.folder / cls.__name__, cls.groups)
        if cls.change:
            cls.change.apply(container.root)
        cls.prepare(container.root)
        cls.machine = cls.enterClassContext(container)
        cls.socket = Path(f"/proc/{cls.machine.first}/root/run/sign-fcgiwrap/cgi.socket")
        cls.account = int(cls.machine.run("id", "-u", "sign-cgi"))

    @classmethod
    def prepare(cls, root):
        pass

    def check_next_user(self, account, folder):
        """Makes the next system user, who has the number of a removed one, and cannot read its folder."""
        self.machine.run("adduser", "--system", "--group", "--no-create-home", "next")
        self.assertEqual(int(self.machine.run("id", "-u", "next")), account)
        self.machine.run("setpriv", "--reuid=next", "--regid=next", "--init-groups",
                         "ls", str(folder), status=2)
        self.machine.run("deluser", "next")

    def show(self, name):
        return self.machine.run("systemctl", "show", f"--property={name}", "--value",
                                SERVICE).strip()

    def request(self, length, program=LAUNCHER):
        """A request over the socket, whose body has not come yet."""
        request = HeldRequest(self.socket, SECONDS_FOR_AN_ANSWER, SCRIPT_FILENAME=program,
                              REQUEST_METHOD="POST", CONTENT_TYPE=FORM,
                              CONTENT_LENGTH=str(length))
        self.addCleanup(request.close)
        return request

    def programs(self):
        """The processes that have become sign.cgi."""
        found = []
        for folder in Path("/proc").glob("[0-9]*"):
            with contextlib.suppress(OSError):
                words = (folder / "cmdline").read_bytes().split(b"\0")
                if PROGRAM.encode() in words:
                    found.append(folder)
        return found

    def wait_for_programs(self, count):
        wait_until(lambda: len(self.programs()) == count, f"{count} programs")
        return self.programs()

    def setUp(self):
        self.wait_for_programs(0)
