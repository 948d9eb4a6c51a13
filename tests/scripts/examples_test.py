"""Runs everything in examples/ against a web server with the programs.

    examples_test.py FOLDER [CLASS]    FOLDER holds the programs; SIGN_PROGRAM_FOLDER names another
"""

import base64
import os
import random
import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "tests" / "servers"))
from browser import SECONDS, start_browser  # noqa: E402
from servers import Lighttpd, free_port, temporary_folder  # noqa: E402
from service import Project  # noqa: E402
from stand_in_server import StandInServer  # noqa: E402

EXAMPLES = ROOT / "examples"
CLIENTS = ("client.sh", "client.py", "client.mjs")
CLIENTS_AND_KINDS = [("client.sh", []), *((client, kind) for client in CLIENTS[1:]
                                          for kind in ([], ["--form"]))]
SIGNATURE = r"[A-Za-z0-9+/]{4,56}={0,2}"
AWKWARD = "1 + 1 = 2 & \"so\" \\ 100% %41 'on'\n\tf\u00fcr \u20ac;\r\n \U0001f58b\x01\n"
NO_DATA = "Either 'data' or 'file' parameter is required"
NO_MODE = "'mode' parameter missing or invalid"


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


class CurlCommands(Served):
    def curl_commands(self):
        """The answers of curl.sh: in their order, under the headings that it prints."""
        status, output, errors = self.run_example(
            "curl.sh", self.url, str(self.project.path), str(self.project.file))
        self.assertEqual((status, errors), (0, ""))
        paragraphs = [part.split("\n", 1) for part in output.strip().split("\n\n")]
        return [part for part in paragraphs if not part[0].startswith("== ")]

    def test_answer_as_their_headings_say(self):
        told = 0
        for heading, answer in self.curl_commands():
            with self.subTest(heading):
                expected = re.search(r"\((true|false|refused)\):$", heading)
                if expected is None:
                    continue
                told += 1
                if expected[1] == "refused":
                    self.assertEqual(answer, f"{NO_MODE} (status 400)")
                else:
                    self.assertIn(answer, (expected[1], f'{{"valid":{expected[1]}}}'))
        self.assertEqual(told, 16)

    def test_sign_the_bytes_that_they_name(self):
        answers = dict(self.curl_commands()[::-1])  # of headings that occur twice, the first counts
        letter = b"Dear reader,\0\xff\n"
        signed = {
            "Sign a text:": b"1 + 1 = 2",
            "Sign a file of the server:": self.project.file.read_bytes(),
            "Sign the bytes of a file of this machine:": letter,
            "Sign a file of the server, and be answered in bare text:":
                self.project.file.read_bytes(),
            "Sign the six bytes ABCDEF, written in base64 "
            "(on one line: a line break would be refused):": b"ABC\0DEF",
            'Sign a text until there is a "+" in the signature:': b"hello",
        }
        for heading, data in signed.items():
            with self.subTest(heading):
                self.assertRegex(answers[heading], rf"\A{SIGNATURE}\Z")
                self.assertTrue(self.project.verifies(answers[heading], data))
        self.assertIn("+", answers['Sign a text until there is a "+" in the signature:'])
        self.assertRegex(answers["Sign a text, with the name of the result in front:"],
                         rf"\Asignature:{SIGNATURE}\Z")
        self.assertRegex(answers["Right: the bare type:"],
                         rf'\A\{{"signature":"{SIGNATURE}"\}}\Z')

    def test_show_the_refusals(self):
        answers = dict(self.curl_commands())
        self.assertEqual(answers["Sign nothing:"], f"{NO_DATA} (status 400)")
        self.assertEqual(answers["Verify without a signature:"],
                         "'signature' parameter is required (status 400)")
        self.assertEqual(answers["Sign under a project that is not there:"],
                         "Signature generation failed (status 400)")
        self.assertEqual(answers["Verify under it, which is no refusal:"], "false (status 200)")

    def test_end_with_the_words_of_a_refusal(self):
        status, _, errors = self.run_example("curl.sh", self.url, "/nonexistent")
        self.assertEqual(status, 1)
        self.assertTrue(errors.endswith("Signature generation failed\n"), errors)

    def test_end_when_the_server_is_dead(self):
        status, _, errors = self.run_example("curl.sh", f"http://127.0.0.1:{free_port()}/sign.cgi")
        self.assertEqual(status, 1)
        self.assertIn("curl: (7)", errors)


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
        words = "no answer of the program, but HTTP status "
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
            (200, "application/json", b"[1]", {}),
            (200, "application/json", b"null", {}),
        )
        for status, content_type, body, headers in answers:
            with StandInServer(status, content_type, body, headers) as server:
                for client, kind in CLIENTS_AND_KINDS:
                    with self.subTest(client, kind=kind):
                        self.fails(client, kind, 4, f"{words}{status}", *request, url=server.url)

    def test_find_a_verdict_in_no_other_answer(self):
        words = "no answer of the program, but HTTP status 200"
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
                self.fails(client, [], 4, "no answer of the program, but HTTP status 413: too "
                           "large", "sign", *words, given=content)

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


VALID = "Signature is valid"


class Page(Served):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.browser = start_browser(cls)

    def setUp(self):
        self.open(self.browser)

    def open(self, browser):
        browser.get(self.server.url(""))
        project = browser.find_element("id", "project")
        project.clear()
        project.send_keys(str(self.project.path))

    def field(self, name):
        return self.browser.find_element("id", name)

    def fill(self, name, text):
        self.field(name).clear()
        self.field(name).send_keys(text)

    def choose(self, what):
        self.browser.find_element("css selector", f"input[value={what}]").click()

    def answer(self, before):
        """The next answer: `before` asks for it."""
        self.browser.execute_script("document.getElementById('answer').textContent = ''")
        before()
        return WebDriverWait(self.browser, SECONDS).until(
            lambda _: (text := self.field("answer").text) and not text.endswith("\u2026") and text)

    def press(self, button):
        return self.answer(self.browser.find_element("name", f"sig_{button}").click)

    def sign(self):
        """The signature that the page got, which it puts into its field as well."""
        shown = re.fullmatch(rf"Signed: ({SIGNATURE})", self.press("create"))
        self.assertIsNotNone(shown, self.field("answer").text)
        self.assertEqual(self.field("sig").get_attribute("value"), shown[1])
        return shown[1]

    def primary(self):
        return self.browser.find_element("css selector", "button.primary").text

    def test_signs_and_verifies_text(self):
        text = "1 + 1 = 2 & f\u00fcr 100%\nline two"
        self.fill("data", text)
        self.assertTrue(self.project.verifies(self.sign(), text.encode()))
        self.assertEqual(self.press("verify"), VALID)
        self.fill("data", "1 + 1 = 3")
        self.assertEqual(self.press("verify"), "Signature is not valid")

    def test_signs_and_verifies_a_file_of_the_server(self):
        self.choose("file")
        self.fill("file", str(self.project.file))
        self.assertTrue(self.project.verifies(self.sign(), self.project.file.read_bytes()))
        self.assertEqual(self.press("verify"), VALID)
        self.fill("file", str(self.project.path))
        self.assertEqual(self.press("verify"), "Signature is not valid")

    def test_signs_and_verifies_the_bytes_of_a_local_file(self):
        local = self.folder / "local file"
        self.choose("upload")
        self.assertEqual(self.press("create"), "Choose a file first")
        for content in (bytes(range(256)) * 3, b"%41+ =&\r\n", random.randbytes(3_000_000)):
            local.write_bytes(content)
            self.field("upload").send_keys(str(local))
            self.assertTrue(self.project.verifies(self.sign(), content))
            self.assertEqual(self.press("verify"), VALID)

    def test_tells_that_a_local_file_is_too_large(self):
        local = self.folder / "large"
        self.choose("upload")
        for size, answer in ((4_000_000, "The server refused the request (413: too large)"),
                             (9_000_000, "large is too large to send: a larger file belongs on "
                                         "the server")):
            local.write_bytes(random.randbytes(size))
            self.field("upload").send_keys(str(local))
            self.assertEqual(self.press("create"), answer)

    def test_sends_what_is_chosen_alone(self):
        self.fill("data", "hello")
        self.choose("file")
        self.fill("file", str(self.project.file))
        self.assertTrue(self.project.verifies(self.sign(), self.project.file.read_bytes()))
        self.choose("data")
        self.assertTrue(self.project.verifies(self.sign(), b"hello"))

    def test_verifies_a_signature_from_elsewhere_with_plus_and_equals_in_it(self):
        signature = ""
        while "+" not in signature or "=" not in signature:
            signature = self.project.sign(b"hello")
        self.fill("data", "hello")
        for text in (signature, f"signature:{signature}", f" {signature} "):
            with self.subTest(text):
                self.fill("sig", text)
                self.assertEqual(self.press("verify"), VALID)

    def test_copies_a_signature(self):
        self.fill("data", "hello")
        self.assertFalse(self.field("copy").is_displayed())
        signature = self.sign()
        self.field("copy").click()
        self.assertEqual(self.field("copy").text, "Copied")
        self.fill("data", "")
        self.field("data").send_keys(Keys.CONTROL, "v")
        self.assertEqual(self.field("data").get_attribute("value"), signature)

    def test_takes_an_answer_away_when_a_field_changes(self):
        self.fill("data", "hello")
        self.sign()
        for change in (lambda: self.field("data").send_keys("!"),
                       lambda: self.field("sig").send_keys("A"),
                       lambda: self.choose("file")):
            self.press("verify")
            self.assertTrue(self.field("answer").is_displayed())
            change()
            self.assertFalse(self.field("answer").is_displayed())
            self.assertFalse(self.field("copy").is_displayed())

    def test_drops_an_answer_to_fields_that_have_changed_meanwhile(self):
        self.fill("data", "hello")
        self.browser.execute_script("""
            const send = window.fetch;
            window.fetch = (...request) => new Promise((resolve) => {
                window.goOn = () => resolve(send(...request));
            });""")
        button = self.browser.find_element("name", "sig_create")
        button.click()
        WebDriverWait(self.browser, SECONDS).until(
            lambda _: self.browser.execute_script("return window.goOn !== undefined"))
        self.assertFalse(button.is_enabled())
        self.assertEqual(self.field("answer").text, "Signing\u2026")
        self.field("data").send_keys("!")
        self.browser.execute_script("window.goOn()")
        WebDriverWait(self.browser, SECONDS).until(lambda _: button.is_enabled())
        self.assertFalse(self.field("answer").is_displayed())
        self.assertEqual(self.field("sig").get_attribute("value"), "")

    def test_has_one_primary_button_which_the_enter_key_presses(self):
        self.fill("data", "hello")
        self.assertEqual(self.primary(), "Sign")
        answer = self.answer(lambda: self.field("project").send_keys(Keys.ENTER))
        self.assertRegex(answer, "^Signed: ")
        self.assertEqual(self.primary(), "Verify")
        signature = self.field("sig").get_attribute("value")
        self.assertEqual(self.answer(lambda: self.field("sig").send_keys(Keys.ENTER)), VALID)
        self.assertEqual(self.field("sig").get_attribute("value"), signature)
        self.fill("sig", "")
        self.field("sig").send_keys(" ")
        self.assertEqual(self.primary(), "Sign")

    def test_shows_a_refusal(self):
        refused = "The program refused the request: "
        self.assertEqual(self.press("create"), f"{refused}{NO_DATA}")
        self.assertEqual(self.press("verify"), f"{refused}'signature' parameter is required")

    def test_tells_apart_what_is_no_answer_of_the_program(self):
        self.fill("data", "hello")
        self.fill("sig", "AAAA")
        form = self.browser.find_element("tag name", "form")
        for action, answer in (
                ("/other", "The server refused the request (404: nothing is there)"),
                ("/", "The answer is not the program's"),
                (f"http://127.0.0.1:{free_port()}/sign.cgi", "The server cannot be reached")):
            self.browser.execute_script("arguments[0].action = arguments[1]", form, action)
            self.assertEqual(self.press("create"), answer)
        self.assertEqual(self.field("sig").get_attribute("value"), "AAAA")

    def test_is_walked_through_by_keyboard(self):
        self.field("project").click()
        order = []
        for _ in range(5):
            self.browser.switch_to.active_element.send_keys(Keys.TAB)
            active = self.browser.switch_to.active_element
            order.append(active.get_attribute("id") or active.get_attribute("name"))
        self.assertEqual(order, ["what", "data", "sig", "sig_create", "sig_verify"])
        self.fill("data", "hello")
        button = self.browser.find_element("name", "sig_create")
        self.assertRegex(self.answer(lambda: button.send_keys(Keys.SPACE)), "^Signed: ")

    def test_has_a_label_on_every_field(self):
        fields = self.browser.find_elements("css selector", "input, textarea")
        self.assertEqual(len(fields), 8)
        for what in ("data", "upload", "file"):
            self.choose(what)
            self.assertNotEqual(self.field(what).accessible_name, "")
        for field in fields:
            if field.is_displayed():
                self.assertNotEqual(field.accessible_name, "", field.get_attribute("id"))
        self.fill("project", "x")
        self.press("create")
        self.assertEqual(self.field("answer").aria_role, "status")

    def test_has_its_answer_in_view_on_every_screen(self):
        self.addCleanup(self.browser.execute_cdp_cmd, "Emulation.clearDeviceMetricsOverride", {})
        for width, height in ((1920, 937), (1280, 720), (360, 640), (320, 640)):
            with self.subTest(width=width, height=height):
                self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
                    "width": width, "height": height, "deviceScaleFactor": 1,
                    "mobile": width < 500})
                self.fill("sig", "")
                self.fill("data", "hello")
                self.sign()
                place, wide = self.browser.execute_script(
                    "const { top, bottom } = document.getElementById('answer')"
                    ".getBoundingClientRect();"
                    "return [[top, bottom], document.documentElement.scrollWidth]")
                self.assertEqual(wide, width)
                self.assertGreaterEqual(place[0], 0)
                self.assertLessEqual(place[1], height)

    def test_works_without_its_script(self):
        browser = start_browser(type(self), **{
            "profile.managed_default_content_settings.javascript": 2})

        def submit(signature, button):
            self.open(browser)
            browser.find_element("id", "data").send_keys("a + b\nc")
            browser.find_element("id", "sig").send_keys(signature)
            browser.find_element("name", button).click()
            return WebDriverWait(browser, SECONDS).until(
                lambda _: browser.current_url == self.url
                and browser.find_element("tag name", "body").text)

        signature = submit("", "sig_create")
        self.assertRegex(signature, rf"\A{SIGNATURE}\Z")
        self.assertTrue(self.project.verifies(signature, b"a + b\r\nc"))
        self.assertEqual(submit(signature, "sig_verify"), "true")
        self.assertEqual(submit("AAAA", "sig_verify"), "false")
        self.assertEqual(submit("", "sig_verify"), "'signature' parameter is required")


if __name__ == "__main__":
    Served.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    # The server is on this machine: nothing goes through a proxy.
    for variable in [name for name in os.environ if name.lower().endswith("_proxy")]:
        del os.environ[variable]
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]])
