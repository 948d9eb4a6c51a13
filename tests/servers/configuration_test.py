"""What single lines of a server's configuration do, and that each is missed where it is another.

    configuration_test.py SERVER FOLDER    SERVER as in servers.py; FOLDER holds the built programs
"""

import os
import select
import socket
import sys
import time
import unittest
from pathlib import Path

import fastcgi
from servers import (DEPLOY, SERVERS, ApacheEvent, ApachePrefork, Lighttpd, Nginx, give_to_account,
                     has_ipv6, temporary_folder)
from service import FORM

SECONDS = 20
SECONDS_OF_SILENCE = 0.5
SECONDS_TO_NOTICE = 5
BODY = b"a=b"
NO_MODE = b"'mode' parameter missing or invalid"
SLEEPER = """#!/bin/sh
echo $$ >"${0%/*}/pid"
exec sleep 50
"""


def changed(kind, old, new):
    """A server whose configuration has another text in the place of one."""
    class Changed(kind):
        def configuration(self, name):
            return super().configuration(name).replace(old, new)

    found = sum((DEPLOY / name).read_text(encoding="utf-8").count(old) for name in kind.FILES)
    if found != 1:
        raise ValueError(f"{kind.FILES} have '{old}' {found} times")
    return Changed


def head(*headers):
    return "\r\n".join(["POST /sign.cgi HTTP/1.1", "Host: localhost", "Connection: close",
                        f"Content-Type: {FORM}", f"Content-Length: {len(BODY)}", *headers,
                        "", ""]).encode()


def connect(server, address="127.0.0.1"):
    return socket.create_connection((address, server.port), SECONDS)


def wait_until(condition, seconds, what):
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError(f"in vain waited for {what}")
        time.sleep(0.02)


class TestConfiguration(unittest.TestCase):
    kind = None
    programs = None

    def setUp(self):
        self.folder = self.enterContext(temporary_folder())

    def lets_in_both_addresses_of_this_machine(self, kind):
        with kind(self.programs, self.folder) as server:
            for address in ("127.0.0.1", "::1") if has_ipv6() else ("127.0.0.1",):
                with connect(server, address) as client:
                    client.sendall(head() + BODY)
                    answer = b"".join(iter(lambda: client.recv(65536), b""))
                self.assertRegex(answer, rb"\AHTTP/1\.[01] 400 (?s:.*)" + NO_MODE)

    def obeys_no_file_in_the_folder_of_the_programs(self, kind):
        with kind(self.programs, self.folder) as server:
            (server.programs / ".htaccess").write_text("Require all denied\n", encoding="ascii")
            with connect(server) as client:
                client.sendall(head() + BODY)
                self.assertRegex(client.recv(65536), rb"\AHTTP/1\.[01] 400 ")

    def ends_a_program_whose_client_leaves(self, kind):
        sleeper = self.folder / "sleeper"
        sleeper.mkdir(exist_ok=True)
        (sleeper / "sign.cgi").write_text(SLEEPER, encoding="ascii")
        (sleeper / "sign.cgi").chmod(0o755)
        (sleeper / "limited").write_bytes((self.programs / "limited").read_bytes())
        (sleeper / "limited").chmod(0o755)
        with kind(sleeper, self.folder) as server:
            give_to_account(server.programs)
            pid = server.programs / "pid"
            with connect(server) as client:
                # lighttpd watches a client that it has had to wait for.
                client.sendall(head("Expect: 100-continue"))
                self.assertRegex(client.recv(65536), rb"\AHTTP/1\.1 100 ")
                client.sendall(BODY)
                wait_until(lambda: pid.exists() and pid.read_text(), SECONDS, "the program")
            program = Path("/proc", pid.read_text().strip())
            wait_until(lambda: not program.exists(), SECONDS_TO_NOTICE, "its end")

    def hands_on_a_whole_request_and_nothing_else(self, kind):
        """Stands in the place of fcgiwrap, and looks at what comes."""
        class Alone(kind):
            def start_fcgiwrap(self):
                path = self.folder / "fcgiwrap.socket"
                self.listener = socket.socket(socket.AF_UNIX)
                self.listener.bind(str(path))
                self.listener.listen()
                give_to_account(path)

        with Alone(self.programs, self.folder) as server, server.listener, \
                connect(server) as client:
            client.sendall(head("Proxy: x", "Path: x", "LD-Preload: x") + BODY[:-1])
            self.assertEqual(([], [], []),
                             select.select([server.listener], [], [], SECONDS_OF_SILENCE))
            client.sendall(BODY[-1:])
            server.listener.settimeout(SECONDS)
            with server.listener.accept()[0] as application:
                said = {fastcgi.PARAMS: b"", fastcgi.STDIN: b""}
                for kind_of_record, content in fastcgi.read_records(application):
                    if kind_of_record in said:
                        said[kind_of_record] += content
                    if kind_of_record == fastcgi.STDIN and not content:
                        break
        self.assertEqual(said[fastcgi.STDIN], BODY)
        self.assertEqual(dict(fastcgi.pairs(said[fastcgi.PARAMS])), {
            b"SCRIPT_FILENAME": bytes(server.programs / "limited"),
            b"GATEWAY_INTERFACE": b"CGI/1.1", b"SERVER_PROTOCOL": b"HTTP/1.1",
            b"REQUEST_METHOD": b"POST", b"CONTENT_TYPE": FORM.encode(),
            b"CONTENT_LENGTH": b"%d" % len(BODY)})

    def test_does_what_its_lines_say(self):
        checks = [check for kinds, _, _, check in PLANTED if self.kind in kinds]
        for check in dict.fromkeys(checks):
            with self.subTest(check.__name__):
                check(self, self.kind)

    def test_is_missed_where_a_line_is_another(self):
        for kinds, old, new, check in PLANTED:
            if self.kind in kinds:
                with self.subTest(old, new=new), self.assertRaises(AssertionError):
                    check(self, changed(self.kind, old, new))


APACHE = (ApacheEvent, ApachePrefork)
PLANTED = [
    (APACHE, "AllowOverride None", "AllowOverride All",
     TestConfiguration.obeys_no_file_in_the_folder_of_the_programs),
    ((Lighttpd,), ', "tcp-fin-propagate" => "SIGTERM"', "",
     TestConfiguration.ends_a_program_whose_client_leaves),
    ((Nginx,), "fastcgi_pass_request_headers off", "fastcgi_pass_request_headers on",
     TestConfiguration.hands_on_a_whole_request_and_nothing_else),
    ((Nginx,), "fastcgi_request_buffering on", "fastcgi_request_buffering off",
     TestConfiguration.hands_on_a_whole_request_and_nothing_else),
]
if has_ipv6():
    PLANTED += [
        (APACHE, "    Require ip ::1\n", "",
         TestConfiguration.lets_in_both_addresses_of_this_machine),
        ((Nginx,), "allow ::1;\n", "",
         TestConfiguration.lets_in_both_addresses_of_this_machine),
        ((Lighttpd,), '$HTTP["remoteip"] != "::1"', '$HTTP["remoteip"] != "::2"',
         TestConfiguration.lets_in_both_addresses_of_this_machine),
    ]
else:
    print("this machine has no ::1, so that no server was asked there")


if __name__ == "__main__":
    TestConfiguration.kind = SERVERS[sys.argv[1]]
    TestConfiguration.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[2]).resolve()
    unittest.main(argv=sys.argv[:1])
