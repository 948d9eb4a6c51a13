"""An administrator's own lines, as docs/access.md has them, at a server.

    access_test.py SERVER FOLDER    SERVER as in KINDS; FOLDER holds the built programs
"""

import base64
import contextlib
import os
import re
import select
import socket
import ssl
import subprocess
import sys
import unittest
from pathlib import Path

import servers
from guide_blocks import blocks
from service import FORM, Project, Service, form

SECONDS = 20
SECONDS_OF_SILENCE = 0.5
HERE, COLLEAGUE, STRANGER = "127.0.0.1", "127.0.0.2", "127.0.0.3"
NAME = "Host: sign.example.org"
PROGRAM = 400  # what the program says to a request without a mode
BODY = b"a=b"
AT_ONCE = 16


class Apache(servers.ApacheEvent):
    MODULES = (*servers.Apache.MODULES, "auth_basic", "authn_core", "authn_file", "authz_user",
               "socache_shmcb", "ssl")


class Lighttpd(servers.Lighttpd):
    pass


class Nginx(servers.Nginx):
    pass


KINDS = {kind.__name__: kind for kind in (Apache, Lighttpd, Nginx)}


def head(*headers, length=len(BODY)):
    return "\r\n".join(["POST /sign.cgi HTTP/1.1", "Connection: close", f"Content-Type: {FORM}",
                        f"Content-Length: {length}", *headers, "", ""]).encode()


def status_of(answer):
    """What a server writes first; nothing where it writes none."""
    status = re.match(rb"HTTP/1\.[01] (\d{3}) ", answer)
    return int(status[1]) if status else None


def read_all(connection):
    return b"".join(iter(lambda: connection.recv(65536), b""))


def with_password(text):
    return "Authorization: Basic " + base64.b64encode(text.encode()).decode()


class TestAccess(unittest.TestCase):
    kind = None
    programs = None

    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(servers.temporary_folder())
        cls.project = Project(cls.programs / "projectctl", cls.folder)

    def lines(self, heading):
        """Those of the page for this server; the network that it lets in is one colleague's."""
        return [text.replace("192.0.2.0/24", COLLEAGUE + "/32")
                for text in blocks(heading, self.kind.language)]

    def letting_in(self):
        return self.lines("Letting others in")[0]

    def serve(self, **lines):
        server = self.kind(self.programs, self.folder, **lines)
        server.own.mkdir(exist_ok=True)
        self.prepare(server.own)
        return Service(self.enterContext(server), self.project)

    def prepare(self, own):
        """Puts files where the administrator's are."""

    def status(self, service, *headers, source=HERE, body=BODY):
        return status_of(service.raw(head(*headers, length=len(body)) + body, source=source))

    def test_without_own_lines_only_this_machine_gets_in(self):
        service = self.serve()
        self.assertEqual(self.status(service, "Host: localhost"), PROGRAM)
        self.assertEqual(self.status(service, "Host: localhost", source=COLLEAGUE), 403)
        self.assertEqual(self.status(service, NAME), 421)

    def test_others_get_in_and_pages_and_strangers_do_not(self):
        service = self.serve(own=self.letting_in())
        for source in (HERE, COLLEAGUE):
            for name in (NAME, "Host: localhost"):
                self.assertEqual(self.status(service, name, source=source), PROGRAM)
            self.assertEqual(self.status(service, "Host: x.example.org", source=source), 421)
            for said in ("Sec-Fetch-Site: cross-site", "Origin: http://evil.example"):
                self.assertEqual(self.status(service, NAME, said, source=source), 403)
        self.assertEqual(self.status(service, NAME, source=STRANGER), 403)

    def test_a_password_is_one_more_condition(self):
        commands = re.search(r"(?m)^printf .*$", (servers.ROOT / "docs/access.md").read_text())[0]

        def prepare(own):
            passwords = own / "passwords"
            subprocess.run(["sh", "-ec", commands.replace("-apr1)", "-apr1 secret)").replace(
                "/etc/sign-cgi", str(own))], check=True)
            passwords.chmod(0o644)

        self.prepare = prepare
        own = self.lines("A password")[0]
        service = self.serve(own=self.letting_in() + own)
        for source in (HERE, COLLEAGUE):
            for headers in ((), (with_password("alice:wrong"),), (with_password("bob:secret"),)):
                self.assertEqual(self.status(service, NAME, *headers, source=source), 401)
            self.assertEqual(self.status(service, NAME, with_password("alice:secret"),
                                         source=source), PROGRAM)
        self.assertIn(self.status(service, NAME, source=STRANGER), (401, 403))
        self.assertEqual(self.status(service, NAME, with_password("alice:secret"),
                                     source=STRANGER), 403)
        signed = service.ask(form(project=self.project.path, sig_create="true", sig_data="x"),
                             headers={"Authorization": with_password("alice:secret")[15:]})
        self.assertTrue(self.project.verifies(signed.body.decode(), b"x"))

        # What the page warns of: without these lines, Apache takes one or the other.
        if self.kind is Apache:
            bare = re.sub(r'(?m)^</?Files.*\n| *AuthMerging And\n', "", own)
            self.assertEqual(self.status(self.serve(own=self.letting_in() + bare), NAME,
                                         source=COLLEAGUE), PROGRAM)

    def make_certificates(self, own):
        """An authority with a client of its, the server's, and a client of another authority."""
        def openssl(*words):
            subprocess.run(["openssl", *words], check=True, capture_output=True, cwd=own)

        new = ["-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", "9"]
        for name in ("clients", "server", "other"):
            openssl("req", "-x509", *new, "-subj", f"/CN={name}", "-keyout", f"{name}.key",
                    "-out", f"{name}.pem")
        for name, authority in (("alice", "clients"), ("mallory", "other")):
            openssl("req", *new, "-subj", f"/CN={name}", "-keyout", f"{name}.key",
                    "-out", f"{name}.request")
            openssl("x509", "-req", "-in", f"{name}.request", "-CA", f"{authority}.pem", "-CAkey",
                    f"{authority}.key", "-CAcreateserial", "-days", "9", "-out", f"{name}.pem")

    def status_over_tls(self, port, source, certificate=None):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_CLIENT)
        context.check_hostname, context.verify_mode = False, ssl.CERT_NONE
        if certificate:
            context.load_cert_chain(f"{certificate}.pem", f"{certificate}.key")
        with contextlib.suppress(ssl.SSLError, ConnectionResetError), \
                socket.create_connection((HERE, port), SECONDS, (source, 0)) as connection, \
                context.wrap_socket(connection) as client:
            client.sendall(head(NAME) + BODY)
            return status_of(read_all(client))
        return None

    def test_a_client_shows_a_certificate(self):
        own, site = self.lines("Client certificates")
        port = servers.free_port()
        place = "site" if self.kind is not Apache else "whole"
        if self.kind is Apache:
            site = f"Listen {HERE}:{port}\n" + site.replace("*:443", f"*:{port}")
        site = site.replace('":443"', f'"{HERE}:{port}"').replace(
            "listen 443 ssl", f"listen {HERE}:{port} ssl")
        self.prepare = self.make_certificates
        service = self.serve(own=self.letting_in() + own, **{place: site})
        files = service.server.own
        self.assertEqual(self.status_over_tls(port, COLLEAGUE, files / "alice"), PROGRAM)
        refused = (None, ) if self.kind is Lighttpd else (400, 403, None)
        for certificate in (None, files / "mallory"):
            self.assertIn(self.status_over_tls(port, COLLEAGUE, certificate), refused)
        self.assertEqual(self.status_over_tls(port, STRANGER, files / "alice"), 403)
        for source in (HERE, COLLEAGUE):
            self.assertEqual(self.status(service, NAME, source=source), 403)

    def test_nobody_asks_for_more_than_a_share(self):
        heading = "How much a caller can ask for"
        if self.kind is Nginx:
            whole, own, _ = self.lines(heading)
            # So slowly that none is given back meanwhile.
            service = self.serve(own=self.letting_in() + own,
                                 whole=whole.replace("rate=20r/s", "rate=1r/m"))
            statuses = [self.status(service, NAME) for _ in range(45)]
            self.assertEqual(statuses, [PROGRAM] * 41 + [429] * 4)
            self.assertEqual(self.status(service, NAME, source=COLLEAGUE), PROGRAM)
            return
        service = self.serve(whole=self.lines(heading)[0])

        def begin():
            connection = self.enterContext(
                socket.create_connection((HERE, service.server.port), SECONDS))
            connection.sendall(head("Host: localhost") + BODY[:-1])
            return connection

        held = [begin() for _ in range(AT_ONCE)]
        late = begin()
        late.sendall(BODY[-1:])
        self.assertEqual(select.select([late], [], [], SECONDS_OF_SILENCE)[0], [])
        held[0].sendall(BODY[-1:])
        for connection in (held[0], late):
            self.assertEqual(status_of(read_all(connection)), PROGRAM)

    def test_a_body_can_have_another_limit(self):
        service = self.serve(own=self.lines("How much a caller can ask for")[-1])
        for length, status in ((1 << 16, PROGRAM), ((1 << 16) + 1, 413)):
            self.assertEqual(self.status(service, "Host: localhost", body=b"x" * length), status)

    def test_a_log_has_a_line_for_each_request(self):
        server_lines = {Apache: ("whole",), Lighttpd: ("own",), Nginx: ("whole", "own")}[self.kind]
        log = self.folder / f"log-of-{self.kind.__name__}"
        texts = [re.sub(r"/var/log/\w+/sign\.log", str(log), text) for text in self.lines("The log")]
        log.touch()
        servers.give_to_account(log)
        lines = {"own": "", "whole": ""} | dict(zip(server_lines, texts))
        if self.kind is Lighttpd:
            lines["whole"] = 'server.modules += ( "mod_accesslog" )'
        service = self.serve(**lines)
        signature = service.sign("x")
        service.ask(form(project=self.project.path, sig_verify="true", sig_data="x", sig=signature))
        service.ask(b"x")
        self.status(service, "Host: localhost", source=STRANGER)
        self.status(service, "Host: evil.example")
        service.server.__exit__()  # that writes what it has kept back
        time = r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d[+-]\d\d:?\d\d"
        duration = r"\d+\.\d{3}" if self.kind is Nginx else r"\d+"
        told = [re.fullmatch(rf"{time} (\S+) - (\d+) (\d+) ({duration})", line).groups()
                for line in log.read_text(encoding="utf-8").splitlines()]
        # A line is written when its request has ended, and so may the next one be before it.
        self.assertCountEqual([(client, status) for client, status, _, _ in told],
                              [(HERE, "200"), (HERE, "200"), (HERE, "400"), (STRANGER, "403"),
                               (HERE, "421")])
        served = [(size, float(duration)) for _, status, size, duration in told if status == "200"]
        self.assertCountEqual([size for size, _ in served], [str(len(signature)), "4"])
        self.assertTrue(all(duration > 0 for _, duration in served), told)


if __name__ == "__main__":
    TestAccess.kind = KINDS[sys.argv[1]]
    TestAccess.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[2]).resolve()
    unittest.main(argv=sys.argv[:1] + sys.argv[3:])
