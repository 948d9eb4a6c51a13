"""Runs scripts/check-service.sh against the served program, and against everything else.

    check_service_test.py FOLDER    the folder of the programs; SIGN_PROGRAM_FOLDER names another
"""

import os
import re
import shutil
import socket
import ssl
import subprocess
import sys
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "servers"))
from servers import Lighttpd, free_port, runs_as_root, temporary_folder  # noqa: E402
from stand_in_server import StandInServer  # noqa: E402

SCRIPT = ROOT / "scripts" / "check-service.sh"
PROJECT = ROOT / "deploy" / "check.project"
INSTALLED = "/usr/share/sign-cgi/check.project"
SECONDS = 60
OK, WARNING, CRITICAL, UNKNOWN = range(4)
WORDS = ("OK", "WARNING", "CRITICAL", "UNKNOWN")
STEPS = ("a request that must be refused", "the signature", "an altered signature")
STEPS_OF_SIGNING = (STEPS[0], "signing", *STEPS[1:])

# What stand-in programs begin with: the program's answers, and the request as it came.
PRELUDE = r"""#!/bin/sh
answer() { printf 'Status: %s\r\nContent-Type: text/plain\r\n\r\n%b' "$1" "$2"; }
refuse() { answer '400 Bad Request' "'signature' parameter is required"; }
request=$(cat)
has_signature() { case $request in *'&sig='*) true ;; *) false ;; esac; }
"""


class CheckService(unittest.TestCase):
    programs = None

    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(temporary_folder())
        cls.project = cls.copy_of_the_project("check.project")
        cls.server = cls.enterClassContext(Lighttpd(cls.programs, cls.folder))
        (cls.server.static / "page.html").write_text("<!DOCTYPE html>\n<title>A page</title>\n")
        cls.url = cls.server.url("sign.cgi")
        # The same server with whatever stand_in puts in the place of the program.
        cls.other = cls.enterClassContext(Lighttpd(cls.programs, cls.folder))

    @classmethod
    def copy_of_the_project(cls, name, change=lambda data: data):
        path = cls.folder / name
        path.write_bytes(change(PROJECT.read_bytes()))
        path.chmod(0o644)
        return path

    def stand_in(self, script):
        """The address of this program."""
        path = self.other.programs / "sign.cgi"
        new = path.with_suffix(".new")
        new.write_text(PRELUDE + script)
        new.chmod(0o755)
        new.rename(path)
        return self.other.url("sign.cgi")

    def check(self, *words, shell=(), **options):
        """The state and the text of the one line that the check prints, and its time."""
        done = subprocess.run([*shell, SCRIPT, *words], stdin=subprocess.DEVNULL, text=True,
                              capture_output=True, timeout=SECONDS, check=False, **options)
        self.assertEqual(done.stderr, "")
        line = re.fullmatch(r"sign\.cgi ([A-Z]+): ([^|\n]+) \| time=([0-9.]+)s;([0-9.]*);([0-9.]*)"
                            r";0;[0-9.]+\n", done.stdout)
        self.assertIsNotNone(line, done.stdout)
        self.assertEqual(line[1], WORDS[done.returncode])
        return done.returncode, line[2], float(line[3])

    def finds(self, words, step, *arguments):
        """That the check is critical with these words, in this step."""
        state, text, _ = self.check(*arguments)
        self.assertEqual(state, CRITICAL, text)
        self.assertTrue(text.startswith(words), text)
        steps = STEPS_OF_SIGNING if "--sign" in arguments else STEPS
        self.assertTrue(text.endswith(f"(step {step}, {steps[step - 1]})"), text)

    def finds_with(self, script, words, step, *arguments):
        with self.subTest(words, script=script):
            self.finds(words, step, self.stand_in(script), "-p", self.project, *arguments)

    def test_finds_the_served_program_well(self):
        names = ["sign.cgi", "nph-sign.cgi"] if self.server.nph else ["sign.cgi"]
        for name in names:
            for shell in ((), ("bash", "--posix")):
                with self.subTest(name, shell=shell):
                    state, text, time = self.check(
                        self.server.url(name), "-p", self.project, shell=shell)
                    self.assertEqual(state, OK, text)
                    self.assertGreater(time, 0)

    def test_takes_its_options_in_any_order(self):
        state, text, _ = self.check("-t", "20", "-c", "15", self.url, "-w", "10.5",
                                    "-p", self.project, "--", "--noproxy", "*")
        self.assertEqual(state, OK, text)

    def test_has_a_sound_project_that_only_verifies(self):
        done = subprocess.run([self.programs / "projectctl", "check", self.project],
                              capture_output=True, text=True, check=True)
        self.assertTrue(done.stdout.endswith(": sound, for verifying only\n"), done.stdout)

    def test_finds_a_dead_server(self):
        self.finds("server: no connection: curl: (7)", 1,
                   f"http://127.0.0.1:{free_port()}/sign.cgi")

    def test_finds_a_name_that_is_not_known(self):
        self.finds("server: its name is not found: curl: (6)", 1, "http://sign.invalid/sign.cgi")

    def test_finds_a_server_that_hangs(self):
        with socket.socket() as listener:
            listener.bind(("127.0.0.1", 0))
            listener.listen()
            self.finds("server: connected, but no answer within 1 s", 1,
                       f"http://127.0.0.1:{listener.getsockname()[1]}/sign.cgi", "-t", "1")

    def test_finds_a_server_that_does_not_speak_http(self):
        with socket.socket() as listener:
            listener.bind(("127.0.0.1", 0))
            listener.listen()
            url = f"http://127.0.0.1:{listener.getsockname()[1]}/sign.cgi"
            check = subprocess.Popen([SCRIPT, url], stdout=subprocess.PIPE, text=True)
            connection, _ = listener.accept()
            with connection:
                connection.recv(1)
                connection.sendall(b"220 ready\r\n")
            output, _ = check.communicate(timeout=SECONDS)
        self.assertEqual(check.returncode, CRITICAL)
        self.assertIn("server: the connection broke: curl: (1)", output)

    def test_finds_a_certificate_that_is_not_trusted(self):
        key, certificate = self.folder / "key.pem", self.folder / "certificate.pem"
        subprocess.run(
            ["openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-subj", "/CN=here",
             "-addext", "subjectAltName=IP:127.0.0.1", "-keyout", key, "-out", certificate],
            check=True, capture_output=True)
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(certificate, key)
        with StandInServer(404, "text/plain", b"", context=context) as server:
            self.finds("server: no secure connection: curl: (60)", 1, server.url)
            self.finds("url: nothing is there", 1, server.url, "--", "--cacert", certificate)

    def test_finds_a_url_that_is_not_the_programs(self):
        self.finds("url: nothing is there (status 404)", 1, self.server.url("other"))
        self.finds("url: this is not the program: status 200, type text/html", 1,
                   self.server.url("page.html"))
        expected = (
            (301, "url: the server sends the client elsewhere (status 301)"),
            (401, "url: this client is not let in (status 401)"),
            (403, "url: this client is not let in (status 403)"),
            (405, "url: this is not the program: status 405, type text/html, '<p>'"),
            (400, "url: this is not the program: status 400, type text/html, '<p>'"),
            (421, "url: the server does not answer for this host name (status 421)"),
            (500, "program: it fails, or cannot be started (status 500)"),
            (502, "server: it gets no answer from the program (status 502)"),
            (503, "server: it gets no answer from the program (status 503)"),
            (504, "server: it gets no answer from the program (status 504)"),
        )
        for status, words in expected:
            with self.subTest(status), StandInServer(status, "text/html", b"<p>") as server:
                self.finds(words, 1, server.url)

    def test_finds_a_program_that_hangs(self):
        self.finds_with("exec sleep 30", "server: connected, but no answer within 1 s", 1,
                        "-t", "1")
        self.finds_with("has_signature && exec sleep 30; refuse",
                        "program: no answer within 3 s", 2, "-t", "3")

    def test_finds_a_program_that_fails(self):
        fails = "program: it fails, or cannot be started (status 500)"
        self.finds_with("exit 1", fails, 1)
        self.finds_with("kill -ABRT $$", fails, 1)
        self.finds_with("answer '500 Server Error' 'Invalid mode'", fails, 1)
        self.finds_with("has_signature && exit 1; refuse", fails, 2)

    def test_finds_a_program_with_wrong_answers(self):
        wrong = "program: a wrong answer: status "
        altered = "case $request in *'sig=0o54y'*) {} ;; *'sig='*) answer '200 OK' true ;; " \
                  "*) refuse ;; esac"
        cases = (
            ("answer '200 OK' true", "200, type text/plain, 'true'", 1),
            ("answer '200 OK' false", "200, type text/plain, 'false'", 1),
            ("answer '400 Bad Request' 'signature is required'",
             "400, type text/plain, 'signature is required'", 1),
            ("answer '200 OK' \"'signature' parameter is required\"",
             "200, type text/plain, ''signature' parameter is required'", 1),
            ("answer '400 Bad Request' \"'signature' parameter is required\\n\"",
             "400, type text/plain, ''signature' parameter is required?'", 1),
            ("answer '200 OK' 'a|b\\nc\\0d\\0377'", "200, type text/plain, 'a b?c?d?'", 1),
            ("refuse", "400, type text/plain, ''signature' parameter is required'", 2),
            ("if has_signature; then answer '200 OK' 'true\\n'; else refuse; fi",
             "200, type text/plain, 'true?'", 2),
            ("if has_signature; then answer '200 OK' 'valid:true'; else refuse; fi",
             "200, type text/plain, 'valid:true'", 2),
            (altered.format("answer '200 OK' no"), "200, type text/plain, 'no'", 3),
        )
        for script, words, step in cases:
            self.finds_with(script, wrong + words, step)

    def test_finds_a_program_that_writes_no_response(self):
        for script in ("printf 'garbage\\n\\n'", "printf '\\001\\002\\003'", "echo Segmentation"):
            with self.subTest(script):
                state, text, _ = self.check(self.stand_in(script), "-p", self.project)
                self.assertEqual(state, CRITICAL)
                self.assertRegex(text, "^program: ")

    def test_finds_a_program_that_says_true_to_everything(self):
        self.finds_with("if has_signature; then answer '200 OK' true; else refuse; fi",
                        "program: it accepts a signature that is not valid", 3)

    def test_takes_a_program_that_says_false_to_everything_for_a_broken_project(self):
        self.finds_with("if has_signature; then answer '200 OK' false; else refuse; fi",
                        f"project: {self.project} is ", 2)

    def test_finds_an_answer_that_is_far_too_long(self):
        for size, words in ((50_000, "program: a wrong answer"),
                            (5_000_000, "url: an answer of over 64 KiB")):
            with StandInServer(200, "text/plain", b"x" * size) as server:
                self.finds(words, 1, server.url)

    def test_finds_an_answer_that_is_cut(self):
        self.finds_with("printf 'Status: 200 OK\\r\\nContent-Length: 9\\r\\n\\r\\ntrue'",
                        "server: the connection broke: curl: (18)", 1)

    def test_finds_a_project_that_does_not_serve(self):
        def flipped(data):
            return data[:150] + bytes([data[150] ^ 1]) + data[151:]

        closed = self.copy_of_the_project("closed.project")
        closed.chmod(0o600 if runs_as_root() else 0)
        another = self.made_project("another.project")
        paths = (
            self.folder / "missing.project",
            self.copy_of_the_project("flipped.project", flipped),
            self.copy_of_the_project("cut.project", lambda data: data[:-1]),
            self.copy_of_the_project("empty.project", lambda data: b""),
            closed,
            another,
            self.folder,
            "a name with 'quotes', + and &",
        )
        for path in paths:
            with self.subTest(path):
                self.finds(f"project: {path} is missing, damaged, not readable by the server's user, or "
                           "another project", 2, self.url, "-p", path)

    def made_project(self, name, mode=0o644):
        path = self.folder / name
        subprocess.run([self.programs / "projectctl", "create", path], check=True)
        path.chmod(mode)
        return path

    def test_signs_and_verifies_under_a_project_of_ones_own(self):
        project = self.made_project("own.project")
        for _ in range(3):
            state, text, _ = self.check(self.url, "--sign", "-p", project)
            self.assertEqual(state, OK, text)
            self.assertTrue(text.startswith("refused, signed, verified and rejected"), text)

    def test_finds_a_project_that_does_not_sign(self):
        closed = self.made_project("closed-own.project", 0o600 if runs_as_root() else 0)
        for path in (self.folder / "missing.project", closed, self.project):
            with self.subTest(path):
                self.finds(f"project: {path} is missing, damaged, not readable by the server's user, or "
                           "can only verify", 2, self.url, "--sign", "-p", path)

    def test_finds_machines_with_different_projects(self):
        self.finds_with(
            "case $request in *sig_create*) answer '200 OK' AAAA;; *'&sig='*) answer '200 OK' "
            "false;; *) refuse;; esac",
            f"project: what is signed under {self.project} is not valid under it", 3, "--sign")

    def test_finds_a_program_that_answers_no_signature(self):
        for answer in ("", "AAAA\\n", "no signature", "A" * 57):
            self.finds_with(f"case $request in *sig_create*) answer '200 OK' '{answer}';; "
                            "*) refuse;; esac", "program: a wrong answer", 2, "--sign")

    def test_finds_an_altered_signature_that_is_taken_for_valid(self):
        for signature in ("AAAA", "BAAA"):
            self.finds_with(f"case $request in *sig_create*) answer '200 OK' {signature};; "
                            "*'&sig='*) answer '200 OK' true;; *) refuse;; esac",
                            "program: it accepts a signature that is not valid", 4, "--sign")

    def test_looks_for_the_project_where_the_package_puts_it(self):
        script = f"case $request in 'project={INSTALLED.replace('/', '%2F')}&'*) refuse ;; esac"
        self.finds("program: a wrong answer: status 400", 2, self.stand_in(script))

    def test_takes_a_text_with_a_charset(self):
        url = self.stand_in(f"printf %s \"$request\" | '{self.server.programs}/sign.cgi' |"
                            " sed 's/^Content-Type: [a-z/]*/&; charset=x/'")
        state, text, _ = self.check(url, "-p", self.project)
        self.assertEqual(state, OK, text)

    def test_warns_of_slow_answers(self):
        url = self.stand_in(
            f"sleep 0.3; printf %s \"$request\" | '{self.server.programs}/sign.cgi'")
        for words, expected in (
                ((), OK), (("-w", "30"), OK), (("-c", "30"), OK), (("-w", "30", "-c", "40"), OK),
                (("-w", "0.2"), WARNING), (("-w", "0.2", "-c", "30"), WARNING),
                (("-c", "0.2"), CRITICAL), (("-w", "0.1", "-c", "0.2"), CRITICAL),
                (("-w", "0.2", "-c", "0.2"), CRITICAL)):
            with self.subTest(words):
                state, text, time = self.check(url, "-p", self.project, "-t", "50", *words)
                self.assertEqual(state, expected)
                self.assertGreaterEqual(time, 0.3)
                self.assertEqual(text.startswith("slow: "), expected != OK)

    def test_limits_the_time_of_all_requests_together(self):
        url = self.stand_in("sleep 2; has_signature && { answer '200 OK' true; exit; }; refuse")
        self.finds("program: no answer within 3 s", 2, url, "-t", "3")

    def test_tells_wrong_usage(self):
        expected = (
            ((), "no URL is given"),
            (("",), "no URL is given"),
            (("sign.cgi",), "sign.cgi is not an http or https URL"),
            (("ftp://x/",), "ftp://x/ is not an http or https URL"),
            (("http://x/", "http://y/"), "there is more than one URL"),
            (("-x", "http://x/"), "there is no option -x"),
            (("http://x/", "-w"), "-w needs a value"),
            (("http://x/", "-t", "0"), "'0' is not a time in seconds"),
            (("http://x/", "-w", "5s"), "'5s' is not a time in seconds"),
            (("http://x/", "-c", "-1"), "'-1' is not a time in seconds"),
            (("http://x/", "-t", "1\n1"), "'1 1' is not a time in seconds"),
            (("http://x/", "-t", "1.2.3"), "'1.2.3' is not a time in seconds"),
            (("http://x/", "-t", "1234567890123"), "'1234567890123' is not a time in seconds"),
            (("http://x/", "-w", "3", "-c", "2"),
             "the time for WARNING is above that for CRITICAL"),
            (("http://x/", "-p", ""), "no project is given"),
            (("http://x/", "--sign"), "--sign needs -p and your own project"),
        )
        for words, text in expected:
            with self.subTest(words):
                state, said, _ = self.check(*words)
                self.assertEqual(state, UNKNOWN)
                self.assertTrue(said.startswith(f"{text}; usage: check-service.sh URL"), said)

    def test_tells_what_curl_cannot_do(self):
        state, text, _ = self.check(self.url, "--", "--no-such-option")
        self.assertEqual(state, UNKNOWN)
        self.assertTrue(text.startswith("curl cannot ask: curl: option --no-such-option"), text)

    def test_tells_that_curl_is_missing(self):
        tools = self.folder / "tools"
        tools.mkdir()
        for tool in ("sh", "awk", "tr"):
            (tools / tool).symlink_to(shutil.which(tool))
        state, text, _ = self.check(self.url, env={"PATH": str(tools)})
        self.assertEqual((state, text), (UNKNOWN, "curl is not installed"))

    def test_prints_its_help(self):
        for word in ("-h", "--help"):
            done = subprocess.run([SCRIPT, word], capture_output=True, text=True, check=False)
            self.assertEqual((done.returncode, done.stderr), (UNKNOWN, ""))
            self.assertIn("\n  check-service.sh URL [--sign] [-p PROJECT]", done.stdout)
            self.assertNotIn("#", done.stdout)
            self.assertNotIn("set -u", done.stdout)

    def test_leaves_no_file_behind(self):
        folder = self.folder / "temporary"
        folder.mkdir()
        for url in (self.url, self.server.url("other")):
            self.check(url, "-p", self.project, env={**os.environ, "TMPDIR": str(folder)})
        self.assertEqual(list(folder.iterdir()), [])


if __name__ == "__main__":
    CheckService.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    # The server is on this machine: nothing goes through a proxy.
    for variable in [name for name in os.environ if name.lower().endswith("_proxy")]:
        del os.environ[variable]
    unittest.main(argv=sys.argv[:1])
