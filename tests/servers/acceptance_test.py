"""What must hold behind every web server, run against one of them.

    acceptance_test.py SERVER FOLDER    SERVER as in servers.py; FOLDER holds the built programs
"""

import base64
import json
import os
import random
import re
import shutil
import socket
import sys
import threading
import time
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from urllib.parse import quote

import servers
from service import FORM, JSON, Project, Service, ask_on, form, json_answer, text_answer
from told_answers import told_answers

CLIENTS = 16
REQUESTS = 2000
REPLACEMENTS = 500
MOST_BYTES = 8 << 20
SECONDS_OF_LIMIT = 60
SECONDS_BEYOND = 15
# Those of `limited`, which nothing raises again. httpd's are soft, and it leaves the core limit to
# its unit.
LIMITS = {"cpu time": 60, "data size": 512 << 20, "core file size": 0}
HTTPD_LIMITS = {"cpu time": 60, "address space": (2 << 30) + (512 << 20)}
LARGE_FILE = 700 << 20
STAND_IN = """#!/bin/sh
if [ "$(cat)" = limits ]; then
    limits=$(cat /proc/self/limits)
    printf 'Status: 200 OK\\r\\nContent-Type: text/plain\\r\\n'
    printf 'Content-Length: %d\\r\\n\\r\\n%s' ${#limits} "$limits"
    exit 0
fi
# Hangs, deaf to all that can be heard.
trap '' TERM HUP INT PIPE
echo $$ >"${0%/*}/hanging.pid"
while :; do sleep 1; done
"""


class TestServer(unittest.TestCase):
    kind = None
    programs = None

    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(servers.temporary_folder())
        cls.start_stand_in()
        cls.server = cls.enterClassContext(cls.kind(cls.programs, cls.folder))
        cls.project = Project(cls.programs / "projectctl", cls.folder)
        cls.service = Service(cls.server, cls.project)
        cls.names = ("sign.cgi", "nph-sign.cgi") if cls.server.nph else ("sign.cgi",)

    @classmethod
    def start_stand_in(cls):
        """A server of a program that tells its limits, or hangs, as it does from now on."""
        programs = cls.folder / "stand-in"
        programs.mkdir()
        (programs / "sign.cgi").write_text(STAND_IN, encoding="ascii")
        (programs / "sign.cgi").chmod(0o755)
        shutil.copy(cls.programs / "limited", programs)
        server = cls.kind(programs, cls.folder)
        servers.give_to_account(server.programs)
        cls.stand_in = Service(cls.enterClassContext(server), None)
        pool = ThreadPoolExecutor(1)
        cls.addClassCleanup(pool.shutdown)
        cls.hanging_since = time.monotonic()
        cls.hanging = pool.submit(lambda: (cls.stand_in.ask(b"hang"), time.monotonic()))

    def setUp(self):
        self.assertTrue(self.server.runs(), self.server.all_it_said())
        seed = int(os.environ.get("SIGN_TEST_SEED") or random.SystemRandom().getrandbits(32))
        print(f"{self.id()}: SIGN_TEST_SEED={seed}")
        self.random = random.Random(seed)

    def running_programs(self):
        """Process numbers of the programs that this server has started."""
        found = []
        for folder in Path("/proc").glob("[0-9]*"):
            try:
                words = (folder / "cmdline").read_bytes().split(b"\0")
            except OSError:
                continue
            if any(word.startswith(os.fsencode(self.server.programs)) and b"sign.cgi" in word
                   and b"fcgiwrap" not in words[0] for word in words):
                found.append(int(folder.name))
        return found

    def check_that_all_is_well(self):
        """A signature is made and verified, and no program is left behind."""
        self.assertTrue(self.project.verifies(self.service.sign(b"all is well"), b"all is well"))
        deadline = time.monotonic() + 10
        while self.running_programs() and time.monotonic() < deadline:
            time.sleep(0.05)
        self.assertEqual(self.running_programs(), [])

    def test_signs_and_verifies_for_a_form(self):
        for name in self.names:
            with self.subTest(name):
                answer = self.service.ask_form(name, sig_create="true", sig_data="a+b & c=d")
                text = answer.body.decode()
                self.assertEqual(answer, text_answer(text))
                self.assertTrue(self.project.verifies(text, b"a+b & c=d"))
                for data, verdict in (("a+b & c=d", "true"), ("a b & c=d", "false")):
                    self.assertEqual(
                        self.service.ask_form(name, sig_verify="true", sig=text, sig_data=data),
                        text_answer(verdict))

    def test_signs_and_verifies_a_file_for_json(self):
        for name in self.names:
            with self.subTest(name):
                file = str(self.project.file)
                answer = self.service.ask_json("generateSignature", name, file=file)
                text = json.loads(answer.body)["signature"]
                self.assertEqual(answer, json_answer({"signature": text}))
                self.assertTrue(self.project.verifies(text, self.project.file.read_bytes()))
                self.assertEqual(
                    self.service.ask_json("verifySignature", name, file=file, signature=text),
                    json_answer({"valid": True}))
                self.assertEqual(
                    self.service.ask_json("verifySignature", name, data="other", signature=text),
                    json_answer({"valid": False}))

    def test_names_the_result_when_told_to(self):
        answer = self.service.ask_form(sig_create="true", sig_data="x", genpairs="true")
        name, _, text = answer.body.decode().partition(":")
        self.assertEqual((answer, name), (text_answer(f"signature:{text}"), "signature"))
        self.assertEqual(
            self.service.ask_form(sig_verify="true", sig_data="x", sig=text, genpairs="true"),
            text_answer("valid:true"))

    def test_hands_on_every_message(self):
        project = self.project.path
        sign, verify = {"project": project, "sig_create": "true"}, {"sig_verify": "true"}
        messages = [
            (b"[]", JSON, "Invalid JSON data"),
            (form(project=project), FORM, "'mode' parameter missing or invalid"),
            (b'{"mode":"sign"}', JSON, "'mode' parameter missing or invalid"),
            (form(sig_create="true"), FORM, "'project' parameter is required"),
            (form(project=project, **verify), FORM, "'signature' parameter is required"),
            (form(**sign), FORM, "Either 'data' or 'file' parameter is required"),
            (form(**sign, sig_data="x", sig_file="y"), FORM,
             "Either 'data' or 'file' parameter is required"),
            (form(**sign, sig_data="x", sig_data_encoding="urlencode"), FORM,
             "Signature encoding must be 'plain' or 'base64'"),
            (form(**sign, sig_data="x", sig_data_encoding="base64"), FORM, "Invalid base64 data"),
            (form(project="/nowhere", sig_create="true", sig_data="x"), FORM,
             "Signature generation failed"),
            (form(**sign, sig_file="/nowhere"), FORM, "Signature generation failed"),
            (b"", FORM, "Failed to parse input data"),
            (b"", JSON, "Invalid JSON data"),
        ]
        for name in self.names:
            for body, content_type, message in messages:
                with self.subTest(name=name, message=message, body=body):
                    self.assertEqual(self.service.ask(body, content_type, name),
                                     text_answer(message, status=400))

    def test_keeps_the_words_of_the_status(self):
        for name in self.names:
            for body, status in ((b"x", b"400 Bad Request"),
                                 (form(project=self.project.path, sig_verify="true", sig_data="x",
                                       sig="x"), b"200 OK")):
                with self.subTest(name=name, status=status):
                    head = (f"POST /{name} HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n"
                            f"Content-Type: {FORM}\r\nContent-Length: {len(body)}\r\n\r\n").encode()
                    self.assertRegex(self.service.raw(head + body),
                                     rb"\AHTTP/1\.[01] " + status + rb"\r\n")

    def test_keeps_every_byte_of_binary_data(self):
        every_byte = bytes(range(256))
        data = every_byte + self.random.randbytes(2000)
        for name in self.names:
            with self.subTest(name):
                answer = self.service.ask_form(name, sig_create="true", sig_data=data)
                self.assertTrue(self.project.verifies(answer.body.decode(), data), answer)

        # As they stand, but for those that mean something in a form and the zero byte.
        raw = bytes(byte for byte in every_byte if byte not in b"\0%&+")
        body = form(project=self.project.path, sig_create="true") + b"&sig_data=" + raw
        for name in self.names:
            with self.subTest(name, raw=True):
                answer = self.service.ask(body, FORM, name)
                self.assertTrue(self.project.verifies(answer.body.decode(), raw), answer)

    def test_data_in_base64_is_signed_with_its_extra_byte(self):
        answer = self.service.ask_json("generateSignature", encoding="base64",
                                       data=base64.b64encode(b"ABCDEF").decode())
        text = json.loads(answer.body)["signature"]
        self.assertTrue(self.project.verifies(text, b"ABC\0DEF"))
        self.assertFalse(self.project.verifies(text, b"ABCDEF"))

    def test_a_charset_in_the_content_type_makes_it_a_form(self):
        request = {"mode": "generateSignature", "project": str(self.project.path),
                   "signature": {"data": "x"}}
        self.assertEqual(
            self.service.ask(json.dumps(request).encode(), "application/json; charset=utf-8"),
            text_answer("'mode' parameter missing or invalid", status=400))

    def test_takes_bodies_of_every_size(self):
        rest = form(project=self.project.path, sig_create="true") + b"&sig_data="
        for size in (1, 2, 15):
            with self.subTest(size=size):
                self.assertEqual(self.service.ask(b"x" * size),
                                 text_answer("'mode' parameter missing or invalid", status=400))
        sizes = [len(rest) + 1, 4095, 4096, 4097, 8191, 8192, 8193, 16384, 65535, 65536, 65537,
                 1 << 20, MOST_BYTES - 1, MOST_BYTES, self.random.randrange(70000, MOST_BYTES)]
        for size in sizes:
            for name in self.names:
                with self.subTest(size=size, name=name):
                    data = self.random.randbytes(size - len(rest)).translate(None, b"\0%&+")
                    data += b"x" * (size - len(rest) - len(data))
                    answer = self.service.ask(rest + data, FORM, name)
                    self.assertTrue(self.project.verifies(answer.body.decode(), data), answer)

    def test_takes_a_json_body_of_8_mib(self):
        request = {"mode": "generateSignature", "project": str(self.project.path),
                   "signature": {"data": ""}}
        room = MOST_BYTES - len(json.dumps(request))
        request["signature"]["data"] = "x" * room
        answer = self.service.ask(json.dumps(request).encode(), JSON)
        self.assertEqual(answer.status, 200, answer)
        self.assertTrue(self.project.verifies(json.loads(answer.body)["signature"], b"x" * room))

    def test_refuses_a_body_above_the_limit(self):
        # The head alone: a server may answer to it and leave the body where it is.
        head = (f"POST /sign.cgi HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n"
                f"Content-Type: {FORM}\r\nContent-Length: {MOST_BYTES + 1}\r\n\r\n").encode()
        self.assertRegex(self.service.raw(head), rb"\AHTTP/1\.1 413 ")

    def test_answers_to_chunks_as_to_any_body_or_demands_a_length(self):
        body = form(project=self.project.path, sig_create="true", sig_data="x" * 3000)
        chunks = [body[at:at + 1000] for at in range(0, len(body), 1000)]
        connection = self.service.connect()
        connection.request("POST", "/sign.cgi", iter(chunks), {"Content-Type": FORM},
                           encode_chunked=True)
        response = connection.getresponse()
        answer = response.read().decode()
        connection.close()
        if issubclass(self.kind, servers.Apache):
            self.assertEqual(response.status, 411)
        else:
            self.assertEqual(response.status, 200)
            self.assertTrue(self.project.verifies(answer, b"x" * 3000))

    def test_serves_http_1_0(self):
        body = form(project=self.project.path, sig_create="true", sig_data="x")
        for name in self.names:
            with self.subTest(name):
                answer = self.service.raw(
                    f"POST /{name} HTTP/1.0\r\nContent-Type: {FORM}\r\n"
                    f"Content-Length: {len(body)}\r\n\r\n".encode() + body)
                head, _, text = answer.partition(b"\r\n\r\n")
                self.assertRegex(head, rb"\AHTTP/1\.[01] 200 OK\r\n")
                self.assertTrue(self.project.verifies(text.decode(), b"x"), answer)

    def test_serves_many_requests_over_one_connection(self):
        connection = self.service.connect()
        connection.connect()
        first = connection.sock
        text = self.service.sign(b"x")
        for turn in range(50):
            data = "x" if turn % 3 else "y"
            answer = ask_on(connection, form(project=self.project.path, sig_verify="true",
                                             sig_data=data, sig=text), FORM)
            self.assertEqual(answer, text_answer("true" if turn % 3 else "false"))
        self.assertIs(connection.sock, first)
        # After a refusal, httpd closes it.
        for _ in range(3):
            self.assertEqual(ask_on(connection, b"x", FORM),
                             text_answer("'mode' parameter missing or invalid", status=400))
        connection.close()

    def test_outlives_clients_that_leave(self):
        body = form(project=self.project.path, sig_create="true", sig_data="x" * 100000)
        head = (f"POST /sign.cgi HTTP/1.1\r\nHost: localhost\r\nContent-Type: {FORM}\r\n"
                f"Content-Length: {len(body)}\r\n\r\n").encode()
        request = head + body
        for _ in range(400):
            sent = self.random.choice([self.random.randrange(len(request)), len(request)])
            with socket.create_connection(("127.0.0.1", self.server.port)) as connection:
                connection.sendall(request[:sent])
                time.sleep(self.random.choice([0, 0, 0.002, 0.01]))
        self.check_that_all_is_well()

    def test_listens_to_this_machine_alone(self):
        body = form(project=self.project.path, sig_create="true", sig_data="x")
        for name in self.names:
            request = (f"POST /{name} HTTP/1.0\r\nContent-Type: {FORM}\r\n"
                       f"Content-Length: {len(body)}\r\n\r\n").encode() + body
            with self.subTest(name):
                self.assertRegex(self.service.raw(request), rb"\AHTTP/1\.[01] 200 ")
                self.assertRegex(self.service.raw(request, source="127.0.0.2"),
                                 rb"\AHTTP/1\.[01] 403 ")

    def test_serves_no_other_path(self):
        folder = quote(self.server.programs.name)
        paths = ["", "limited", folder, f"{folder}/", "sign.cgi/", "sign.cgi/x", "x/sign.cgi",
                 "nph-nph-sign.cgi", "signXcgi", "sign.cgi%00", f"%2e%2e/{folder}/limited",
                 f"..%2f{folder}/sign.cgi", "sign.cgi~", "Sign.cgi", "nph-limited"]
        for path in paths:
            with self.subTest(path):
                answer = self.service.ask(b"x", FORM, path)
                self.assertIn(answer.status, (400, 403, 404, 405))
                self.assertNotIn(b"'mode'", answer.body)
                connection = self.service.connect()
                connection.request("GET", f"/{path}")
                response = connection.getresponse()
                self.assertIn(response.status, (400, 403, 404))
                self.assertNotIn(b"limited", response.read().replace(path.encode(), b""))
                connection.close()

    def test_serves_16_clients_at_once(self):
        def serve_client(number):
            chance = random.Random(number)
            wrong = []
            connection = self.service.connect()
            for turn in range(REQUESTS // CLIENTS // 2):
                data = f"{number} {turn} {chance.random()}"
                name = self.names[turn % len(self.names)]
                answer = ask_on(connection, form(project=self.project.path, sig_create="true",
                                                 sig_data=data), FORM, f"/{name}")
                if answer.status != 200:
                    wrong.append(answer)
                    continue
                valid = turn % 4 != 0
                request = {"mode": "verifySignature", "project": str(self.project.path),
                           "signature": {"data": data if valid else "other",
                                         "signature": answer.body.decode()}}
                answer = ask_on(connection, json.dumps(request).encode(), JSON, f"/{name}")
                if answer != json_answer({"valid": valid}):
                    wrong.append(answer)
            connection.close()
            return wrong

        start = time.monotonic()
        with ThreadPoolExecutor(CLIENTS) as pool:
            wrong = [answer for answers in pool.map(serve_client, range(CLIENTS))
                     for answer in answers]
        print(f"{self.kind.__name__}: {REQUESTS} requests of {CLIENTS} clients, "
              f"{len(wrong)} wrong or failed, {REQUESTS / (time.monotonic() - start):.0f} a second")
        self.assertEqual(wrong, [])
        self.check_that_all_is_well()

    def test_a_project_that_is_replaced_is_the_old_one_or_the_new(self):
        both = [Project(self.programs / "projectctl", self.folder, name) for name in ("old", "new")]
        signatures = [project.sign(b"data") for project in both]
        contents = [project.path.read_bytes() for project in both]
        current, incoming = self.folder / "current.project", self.folder / "incoming.project"

        def put(content):
            incoming.write_bytes(content)
            incoming.chmod(0o600)
            servers.give_to_account(incoming)
            incoming.rename(current)

        done = threading.Event()
        put(contents[0])

        def ask_meanwhile(_):
            answers = []
            connection = self.service.connect()
            while not done.is_set():
                answers.append(ask_on(connection, form(project=current, sig_verify="true",
                                                       sig_data="data", sig=signatures[0]), FORM))
                answer = ask_on(connection, form(project=current, sig_create="true",
                                                 sig_data="data"), FORM)
                answers.append(answer if answer.status != 200 else
                               [project.verifies(answer.body.decode(), b"data")
                                for project in both])
            connection.close()
            return answers

        with ThreadPoolExecutor(4) as pool:
            asking = pool.map(ask_meanwhile, range(4))
            try:
                for turn in range(REPLACEMENTS):
                    put(contents[(turn + 1) % 2])
                    time.sleep(0.01)
            finally:
                done.set()
            answers = [answer for client in asking for answer in client]
        right = [text_answer("true"), text_answer("false"), [True, False], [False, True]]
        self.assertEqual([answer for answer in answers if answer not in right], [])
        # Each of the four was met, so both projects were in force meanwhile.
        self.assertEqual([answer for answer in right if answer not in answers], [])

    def test_signs_a_file_larger_than_its_memory(self):
        file = self.folder / "large"
        with open(file, "wb") as stream:
            stream.truncate(LARGE_FILE)
        answer = self.service.ask_form(sig_create="true", sig_file=file)
        signature = answer.body.decode()
        self.assertEqual(answer, text_answer(signature))
        self.assertEqual(self.service.ask_form(sig_verify="true", sig_file=file, sig=signature),
                         text_answer("true"))

    def test_a_program_has_limits(self):
        limits = {name: (soft, hard) for name, soft, hard in re.findall(
            r"^Max (.+?) {2,}(\S+) +(\S+)", self.stand_in.ask(b"limits").body.decode(), re.MULTILINE)}
        is_httpd = issubclass(self.kind, servers.Apache)
        for name, most in (HTTPD_LIMITS if is_httpd else LIMITS).items():
            soft, hard = limits[name]
            self.assertEqual(soft, str(most), name)
            if not is_httpd:
                self.assertEqual(hard, str(most), name)

    # Last in the order of the names, for it has been waited for since the start.
    def test_z_a_program_that_hangs_is_ended_by_the_limit(self):
        pid = int((self.stand_in.server.programs / "hanging.pid").read_text())
        answer, then = self.hanging.result()
        self.assertEqual(answer.status,
                         told_answers(self.kind)["the program takes longer than 60 seconds"])
        self.assertGreater(then - self.hanging_since, SECONDS_OF_LIMIT - 1)
        self.assertLess(then - self.hanging_since, SECONDS_OF_LIMIT + SECONDS_BEYOND)
        deadline = time.monotonic() + SECONDS_BEYOND
        while Path(f"/proc/{pid}").exists() and time.monotonic() < deadline:
            time.sleep(0.1)
        self.assertFalse(Path(f"/proc/{pid}").exists())
        # And the server has gone on.
        self.assertEqual(self.stand_in.ask(b"limits").status, 200)


if __name__ == "__main__":
    TestServer.kind = servers.SERVERS[sys.argv[1]]
    TestServer.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[2]).resolve()
    unittest.main(argv=sys.argv[:1])
