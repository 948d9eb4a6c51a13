"""Uses examples/page in a browser, from a web server with the programs."""

import random
import re

from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

from served_examples import NO_DATA, SIGNATURE, Served, main
from browser import SECONDS, start_browser
from servers import free_port

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
                ("/other", "The server refused the request (404: nothing found there)"),
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
    main()
