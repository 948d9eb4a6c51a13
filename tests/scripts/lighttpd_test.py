"""Serves the programs with deploy/lighttpd.conf on a loopback port and asks them through curl.

    lighttpd_test.py FOLDER     the folder of the programs; SIGN_PROGRAM_FOLDER names another
"""

import json
import os
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
CONFIGURATION = ROOT / "deploy" / "lighttpd.conf"
NAMES = ("sign.cgi", "nph-sign.cgi")
LIGHTTPD = shutil.which("lighttpd", path=os.environ["PATH"] + ":/usr/sbin")
SECONDS_TO_START = 20
SECONDS_TO_STOP = 20
SECONDS_FOR_A_REQUEST = 30


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Server:
    """lighttpd in the foreground, until stop."""

    def __init__(self, programs, folder):
        self.log = folder / "error.log"
        self.port = free_port()
        environment = {
            "PATH": os.environ["PATH"],
            "SIGN_PORT": str(self.port),
            "SIGN_PROGRAM_FOLDER": str(programs),
            "SIGN_SERVER_FOLDER": str(folder),
        }
        self.process = subprocess.Popen(
            [LIGHTTPD, "-D", "-f", CONFIGURATION],
            env=environment,
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
        )

    def wait_until_started(self):
        deadline = time.monotonic() + SECONDS_TO_START
        while time.monotonic() < deadline and self.process.poll() is None:
            if self.log.exists() and "server started" in self.log.read_text():
                return
            time.sleep(0.05)
        raise AssertionError("lighttpd did not start: " + self.stop()[1])

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        try:
            output, _ = self.process.communicate(timeout=SECONDS_TO_STOP)
        except subprocess.TimeoutExpired:
            self.process.kill()
            output, _ = self.process.communicate()
        return self.process.returncode, output.decode(errors="replace")


class ServedByLighttpd(unittest.TestCase):
    programs = None

    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        cls.project = cls.folder / "served.project"
        subprocess.run([cls.programs / "projectctl", "create", cls.project], check=True)
        cls.letter = cls.folder / "letter.txt"
        cls.letter.write_bytes(b"Dear reader\0,\n")
        cls.server = Server(cls.programs, cls.folder)
        cls.addClassCleanup(cls.server.stop)
        cls.server.wait_until_started()

    def curl(self, path, *arguments, body=b""):
        """The status, the content type and the body of an answer."""
        result = subprocess.run(
            ["curl", "-sS", "--noproxy", "*", "--max-time", str(SECONDS_FOR_A_REQUEST),
             "-w", "\n%{http_code} %{content_type}", *arguments,
             f"http://127.0.0.1:{self.server.port}/{path}"],
            input=body, capture_output=True, check=True, timeout=2 * SECONDS_FOR_A_REQUEST)
        answer, _, meta = result.stdout.decode().rpartition("\n")
        status, _, content_type = meta.partition(" ")
        return int(status), content_type, answer

    def ask_form(self, name, **parameters):
        arguments = [word for key, value in parameters.items()
                     for word in ("--data-urlencode", f"{key}={value}")]
        return self.curl(name, "--data-urlencode", f"project={self.project}", *arguments)

    def ask_json(self, name, mode, **signature):
        request = {"mode": mode, "project": str(self.project), "signature": signature}
        return self.curl(name, "-H", "Content-Type: application/json", "--data-binary", "@-",
                         body=json.dumps(request).encode())

    def test_signs_and_verifies_for_a_form(self):
        for name in NAMES:
            with self.subTest(name):
                status, content_type, text = self.ask_form(
                    name, sig_create="true", sig_data="a+b & c=d")
                self.assertEqual((status, content_type), (200, "text/plain"))
                self.assertRegex(text, r"\A[A-Za-z0-9+/]{4,56}={0,2}\Z")
                verify = {"sig_verify": "true", "sig": text}
                self.assertEqual(self.ask_form(name, sig_data="a+b & c=d", **verify),
                                 (200, "text/plain", "true"))
                self.assertEqual(self.ask_form(name, sig_data="a b & c=d", **verify),
                                 (200, "text/plain", "false"))

    def test_signs_and_verifies_for_json(self):
        for name in NAMES:
            with self.subTest(name):
                status, content_type, answer = self.ask_json(
                    name, "generateSignature", file=str(self.letter))
                self.assertEqual((status, content_type), (200, "application/json"))
                text = json.loads(answer)["signature"]
                self.assertEqual(
                    self.ask_json(name, "verifySignature", file=str(self.letter), signature=text),
                    (200, "application/json", '{"valid":true}'))
                self.assertEqual(
                    self.ask_json(name, "verifySignature", data="another", signature=text),
                    (200, "application/json", '{"valid":false}'))

    def test_one_name_verifies_what_the_other_signed(self):
        _, _, text = self.ask_form("nph-sign.cgi", sig_create="true", sig_data="hello")
        answer = self.ask_form("sign.cgi", sig_verify="true", sig_data="hello", sig=text)
        self.assertEqual(answer, (200, "text/plain", "true"))

    def test_hands_on_a_refusal(self):
        for name in NAMES:
            with self.subTest(name):
                self.assertEqual(
                    self.ask_form(name, sig_create="true"),
                    (400, "text/plain", "Either 'data' or 'file' parameter is required"))

    def test_serves_no_other_path(self):
        paths = ["", "projectctl", "CMakeCache.txt", "served.project", "sign.cgi/", "sign.cgi/x",
                 "x/sign.cgi", "nph-nph-sign.cgi", "signXcgi", "%2e%2e/sign.cgi/x"]
        for path in paths:
            with self.subTest(path):
                self.assertEqual(self.curl(path)[0], 403)

    def test_refuses_a_body_above_the_limit(self):
        most = 1024 * 1024
        for size, status in ((most, 400), (most + 1024, 413)):
            with self.subTest(size=size):
                answer = self.curl("sign.cgi", "-H", "Expect:", "--data-binary", "@-",
                                   body=b"x" * size)
                self.assertEqual(answer[0], status)

    def test_listens_on_one_address(self):
        with socket.socket() as probe:
            self.assertNotEqual(probe.connect_ex(("127.0.0.2", self.server.port)), 0)


if __name__ == "__main__":
    programs = os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]
    ServedByLighttpd.programs = Path(programs).resolve()
    unittest.main(argv=sys.argv[:1])
