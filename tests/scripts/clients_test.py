"""Runs the clients of examples/ against a web server with the programs."""

import base64
import os
import random
import subprocess
import sys

from served_examples import EXAMPLES, NO_DATA, SIGNATURE, Served, main
from browser import SECONDS
from servers import free_port
from stand_in_server import StandInServer

CLIENTS = ("client.sh", "client.py", "client.mjs")
CLIENTS_AND_KINDS = [("client.sh", []), *((client, kind) for client in CLIENTS[1:]
                                          for kind in ([], ["--form"]))]
AWKWARD = "1 + 1 = 2 & \"so\" \\ 100% %41 'on'\n\tf\u00fcr \u20ac;\r\n \U0001f58b\x01\n"


class Clients(Served):
    def signs(self, client, kind, what, value):
        status, output, errors = self.run_example(
            client, *kind, "sign", str(self.project.path), what, value)
        self.assertEqual((status, errors), (0, ""))
        self.assertRegex(output, rf"\A{SIGNATURE}\n\Z")
        return output.strip()

    def verifies(self, client, kind, what, value, signature):
        status, output, errors = self.run_example(
            client, *kind, "verify", str(self.project.path), what, value, signature)
        self.assertEqual(errors, "")
        self.assertIn((status, output), ((0, "true\n"), (1, "false\n")))
        return status == 0

    def fails(self, client, kind, status, words, *operands, url=None, given=b""):
        done = self.run_example(client, *kind, *operands, url=url, given=given)
        self.assertEqual((done[0], done[1]), (status, ""), done)
        self.assertTrue(done[2].splitlines()[-1].startswith(f"{client}: {words}"), done[2])

    def test_sign_and_verify_text_of_every_kind(self):
        for client, kind in CLIENTS_AND_KINDS:
            with self.subTest(client, kind=kind):
                signature = self.signs(client, kind, "data", AWKWARD)
                self.assertTrue(self.project.verifies(signature, AWKWARD.encode()))
                self.assertTrue(self.verifies(client, kind, "data", AWKWARD, signature))
                self.assertFalse(self.verifies(client, kind, "data", AWKWARD + "\n", signature))

    def test_sign_and_verify_a_file_of_the_server(self):
        for client, kind in CLIENTS_AND_KINDS:
            with self.subTest(client, kind=kind):
                signature = self.signs(client, kind, "file", str(self.project.file))
                self.assertTrue(self.project.verifies(signature, self.project.file.read_bytes()))
                self.assertTrue(
                    self.verifies(client, kind, "file", str(self.project.file), signature))
                self.assertFalse(
                    self.verifies(client, kind, "file", str(self.project.path), signature))

    def test_find_a_wrong_signature_false(self):
        signature = "AA"
        while signature[0] == signature[1]:
            signature = self.project.sign(b"hello")
        wrong = signature[1] + signature[0] + signature[2:]
        for client, kind in CLIENTS_AND_KINDS:
            with self.subTest(client, kind=kind):
                self.assertFalse(self.verifies(client, kind, "data", "hello", wrong))
                self.assertFalse(self.verifies(client, kind, "data", "hullo", signature))
                self.assertFalse(self.verifies(client, kind, "data", "hello", "no signature"))

    def test_verify_base64_data_in_the_writing_in_which_it_was_signed(self):
        text = base64.b64encode(b"ABCDEF").decode()
        for client, kind in CLIENTS_AND_KINDS:
            with self.subTest(client, kind=kind):
                signature = self.signs(client, kind, "base64", text)
                self.assertTrue(self.project.verifies(signature, b"ABC\0DEF"))
                self.assertTrue(self.verifies(client, kind, "base64", text, signature))
                self.assertFalse(self.verifies(client, kind, "data", "ABCDEF", signature))

    def test_cut_off_the_name_that_stands_in_front_of_a_signature(self):
        signature = self.project.sign(b"hello")
        for client, kind in CLIENTS_AND_KINDS:
            with self.subTest(client, kind=kind):
                self.assertTrue(
                    self.verifies(client, kind, "data", "hello", f"signature:{signature}"))

    def test_send_plus_and_equals_in_a_signature(self):
        signature = ""
        while "+" not in signature or "=" not in signature:
            signature = self.project.sign(b"hello")
        for client, kind in CLIENTS_AND_KINDS:
            with self.subTest(client, kind=kind):
                self.assertTrue(self.verifies(client, kind, "data", "hello", signature))

    def test_send_a_type_without_a_charset_for_json(self):
        with StandInServer(200, "application/json", b'{"signature":"AAAA"}') as server:
            for client in CLIENTS[1:]:
                with self.subTest(client):
                    done = self.run_example(client, "sign", "p", "data", "x", url=server.url)
                    self.assertEqual(done, (0, "AAAA\n", ""))
        self.assertEqual(server.content_types, ["application/json"] * len(CLIENTS[1:]))

    def test_tell_what_the_program_refuses(self):
        for client, kind in CLIENTS_AND_KINDS:
            with self.subTest(client, kind=kind):
                self.fails(client, kind, 3, "refused: Signature generation failed",
                           "sign", "/nonexistent", "data", "x")
                self.fails(client, kind, 3, f"refused: {NO_DATA}",
                           "sign", str(self.project.path), "data", "")
                self.fails(client, kind, 3, "refused: Invalid base64 data",
                           "sign", str(self.project.path), "base64", "QUJ")
                self.fails(client, kind, 3, "refused: 'signature' parameter is required",
                           "verify", str(self.project.path), "data", "x", "")

    def test_tell_apart_what_is_no_answer_of_the_program(self):
        words = "no answer from the program: HTTP status "
        request = ("sign", "p", "data", "x")
        for client, kind in CLIENTS_AND_KINDS:
            with self.subTest(client, kind=kind):
                self.fails(client, kind, 4, words + "404", *request, url=self.server.url("other"))
                self.fails(client, kind, 4, words + "200 text/html", *request,
                           url=self.server.url(""))
        answers = (
            (400, "text/html", b"<p>Bad request", {}),
            (502, "text/plain", b"no program", {}),
            (302, "text/plain", b"moved", {"Location": self.url}),
            (200, "text/plain", b"", {}),
            (200, "application/json", b'{"valid":true}', {}),
            (200, "application/json", b'{"signature":""}', {}),
            (200, "text/plain", b"signature:", {}),
            (200, "application/json", b"[1]", {}),
            (200, "application/json", b"null", {}),
        )
        for status, content_type, body, headers in answers:
            with StandInServer(status, content_type, body, headers) as server:
                for client, kind in CLIENTS_AND_KINDS:
                    with self.subTest(client, kind=kind):
                        self.fails(client, kind, 4, f"{words}{status}", *request, url=server.url)

    def test_tell_an_answer_that_is_cut_short(self):
        for status in (200, 400):
            with StandInServer(status, "text/plain", b"Sig", {"Content-Length": "99"}) as server:
                for client, kind in CLIENTS_AND_KINDS:
                    with self.subTest(client, kind=kind, status=status):
                        self.fails(client, kind, 4, f"no answer from {server.url}", "sign", "p",
                                   "data", "x", url=server.url)

    def test_find_a_verdict_in_no_other_answer(self):
        words = "no answer from the program: HTTP status 200"
        for body in (b"true", b"valid:maybe", b'{"valid":2}', b'{"valid":"true', b"signature:AAAA"):
            with StandInServer(200, "text/plain", body) as server:
                for client, kind in CLIENTS_AND_KINDS:
                    with self.subTest(client, kind=kind):
                        self.fails(client, kind, 4, words, "verify", "p", "data", "x", "AAAA",
                                   url=server.url)

    def test_sign_and_verify_local_bytes(self):
        content = b"\0\xff\r\n+&=%@ " + bytes(range(256)) + b"\n"
        file = self.folder / "local bytes = @ -"
        file.write_bytes(content)
        text = base64.b64encode(b"ABCDEF")
        file_of_base64 = self.folder / "local base64"
        file_of_base64.write_bytes(text)
        for client, kind in CLIENTS_AND_KINDS:
            for what, value, given, signed in (("data", f"@{file}", b"", content),
                                               ("data", "-", content, content),
                                               ("base64", f"@{file_of_base64}", b"", b"ABC\0DEF"),
                                               ("base64", "-", text, b"ABC\0DEF")):
                with self.subTest(client, kind=kind, what=what, value=value):
                    words = (str(self.project.path), what, value)
                    status, output, errors = self.run_example(client, *kind, "sign", *words,
                                                              given=given)
                    self.assertEqual((status, errors), (0, ""))
                    self.assertTrue(self.project.verifies(output.strip(), signed))
                    self.assertEqual(
                        self.run_example(client, *kind, "verify", *words, output.strip(),
                                         given=given), (0, "true\n", ""))
            with self.subTest(client, kind=kind):
                self.fails(client, kind, 2, "", "sign", "p", "data", f"@{self.folder}/none")
                self.fails(client, kind, 2, "", "sign", "p", "data", f"@{self.folder}")

    def test_send_3_300_000_random_bytes_and_tell_that_4_000_000_are_too_many(self):
        content = random.randbytes(4_000_000)
        words = (str(self.project.path), "data", "-")
        for client in CLIENTS:
            with self.subTest(client):
                status, output, errors = self.run_example(client, "sign", *words,
                                                          given=content[:3_300_000])
                self.assertEqual((status, errors), (0, ""))
                self.assertTrue(self.project.verifies(output.strip(), content[:3_300_000]))
                self.fails(client, [], 4, "no answer from the program: HTTP status 413, "
                           "request too large; put ", "sign", *words, given=content)

    def test_sign_no_other_bytes_than_an_argument_has(self):
        for client, kind in CLIENTS_AND_KINDS:
            with self.subTest(client, kind=kind):
                status, output, _ = self.run_example(
                    client, *kind, "sign", str(self.project.path), "data", b"caf\xe9")
                self.assertEqual(output != "", status == 0)
                if status == 0:
                    self.assertTrue(self.project.verifies(output.strip(), b"caf\xe9"))
        self.fails("client.mjs", [], 2, "an argument is not UTF-8", "sign", "p", "data", b"caf\xe9")

    def test_tell_that_the_server_is_dead(self):
        url = f"http://127.0.0.1:{free_port()}/sign.cgi"
        for client, kind in CLIENTS_AND_KINDS:
            with self.subTest(client, kind=kind):
                self.fails(client, kind, 4, f"no answer from {url}", "sign", "p", "data", "x",
                           url=url)

    def test_tell_their_usage(self):
        calls = ([], ["sign"], ["sign", "p", "data"], ["sign", "p", "text", "x"],
                 ["sign", "p", "data", "x", "y"], ["verify", "p", "data", "x"],
                 ["verify", "p", "data", "x", "y", "z"], ["create", "p", "data", "x"],
                 ["--json", "sign", "p", "data", "x"], ["constructor", "p", "data", "x"],
                 ["--form"], ["--form", "--form", "sign", "p", "data", "x"])
        for client in CLIENTS:
            for words in calls:
                with self.subTest(client, words=words):
                    form = "" if client == "client.sh" else "[--form] "
                    self.fails(client, [], 2, f"usage: {client} {form}sign|verify", *words)

    def test_serve_as_modules(self):
        python = ("import client\n"
                  "text = client.sign({0!r}, 'data', 'x', form=True)\n"
                  "print(client.verify({0!r}, 'data', 'x', text),"
                  " client.verify({0!r}, 'data', 'y', text))")
        script = ("import {{ sign, verify }} from './client.mjs';\n"
                  "const text = await sign({0!r}, 'data', 'x', true);\n"
                  "console.log(await verify({0!r}, 'data', 'x', text),"
                  " await verify({0!r}, 'data', 'y', text));")
        commands = ([sys.executable, "-B", "-c", python],
                    ["node", "--input-type=module", "-e", script])
        for *command, text in commands:
            with self.subTest(command[0]):
                done = subprocess.run(
                    [*command, text.format(str(self.project.path))], cwd=EXAMPLES,
                    env={**os.environ, "SIGN_URL": self.url}, capture_output=True, text=True,
                    timeout=SECONDS, check=False)
                self.assertEqual((done.stdout.lower(), done.stderr), ("true false\n", ""))


if __name__ == "__main__":
    main()
