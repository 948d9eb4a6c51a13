"""Runs examples/curl.sh against a web server with the programs."""

import base64
import re

from served_examples import NO_DATA, SIGNATURE, Served, main
from servers import free_port

NO_MODE = "'mode' parameter missing or invalid"


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
        self.assertEqual(answers["Verify under it, which is not refused:"], "false (status 200)")

    def test_end_with_the_words_of_a_refusal(self):
        status, _, errors = self.run_example("curl.sh", self.url, "/nonexistent")
        self.assertEqual(status, 1)
        self.assertTrue(errors.endswith("Signature generation failed\n"), errors)

    def test_end_when_the_server_is_dead(self):
        status, _, errors = self.run_example("curl.sh", f"http://127.0.0.1:{free_port()}/sign.cgi")
        self.assertEqual(status, 1)
        self.assertIn("curl: (7)", errors)


if __name__ == "__main__":
    main()
