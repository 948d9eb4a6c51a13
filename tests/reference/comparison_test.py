"""The comparison itself: it has to find what differs, and to tell how to repeat it."""

import random
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import request_maker
import request_material
import signature_engine
import signature_scheme
from answer import SignatureAnswer
from response_writer import response

COMPARE = Path(__file__).resolve().parent / "compare_requests.py"
COUNT = 60


class Programs(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def compared(self, script, *arguments):
        """The exit status and the output of the comparison with a program that is this script."""
        for name in ("sign.cgi", "nph-sign.cgi"):
            (self.folder / name).write_text(f"#!/bin/sh\n{script}\n", encoding="utf-8")
            (self.folder / name).chmod(0o755)
        end = subprocess.run([sys.executable, "-B", COMPARE, "--program", self.folder, *arguments],
                             env={}, check=False, capture_output=True, text=True, timeout=60)
        self.assertEqual(end.stderr, "")
        return end.returncode, end.stdout

    def test_that_say_nothing_differ_in_every_request_with_an_answer(self):
        exit_status, output = self.compared("kill -ABRT $$", "--count", f"{COUNT}", "--seed", "1",
                                            "--kinds")
        endings = re.findall(r"^ *(\d+) no response$", output, re.MULTILINE)
        self.assertEqual(exit_status, 1)
        self.assertIn(f"{COUNT - sum(map(int, endings))} differ\n", output)

    def test_that_refuse_everything_are_right_only_where_that_is_due(self):
        refusal = response(False, b"400 Bad Request", b"text/plain", b"Invalid JSON data").decode()
        script = f"printf %s '{refusal}'\nexit 255"
        exit_status, output = self.compared(script, "--count", f"{COUNT}", "--seed", "1")
        differing = [int(number) for number in re.findall(r"request (\d+) differs", output)]
        self.assertEqual(exit_status, 1)
        self.assertTrue(0 < len(differing) < COUNT, output)
        for report in output.split("\n\n"):
            self.assertFalse("body=b'Invalid JSON data'" in report and "Status: 400" in report
                             and "nph" not in report, report)
        once_more, output = self.compared(script, "--count", "1", "--seed", "1",
                                          "--first", f"{differing[0]}")
        self.assertEqual(once_more, 1)
        self.assertIn(f"seed 1, request {differing[0]} differs", output)


class Requests(unittest.TestCase):
    def test_are_the_same_for_the_same_seed_and_number(self):
        with tempfile.TemporaryDirectory() as first, tempfile.TemporaryDirectory() as second:
            materials = [request_material.made_in(folder, random.Random("x"))
                         for folder in (first, second)]
            files = [{path.name: path.read_bytes() for path in Path(folder).iterdir()
                      if path.is_file() and path.stat().st_size < 2**20}
                     for folder in (first, second)]
        self.assertEqual(*materials)
        self.assertEqual(*files)
        made = [[request_maker.request("x", number, material) for number in range(200)]
                for material in materials]
        self.assertEqual(*made)
        self.assertNotEqual(made[0][0], request_maker.request("y", 0, materials[0]))


class Acceptance(unittest.TestCase):
    def setUp(self):
        # The base point is off the curve, and the program makes signatures nevertheless.
        due = signature_engine.SignatureDue((5, 9), 7, b"message")
        self.answer = SignatureAnswer(b"text/plain", b"signature:", b"", due)
        self.text = signature_scheme.signed((5, 9), 7, b"message", 12345)
        self.other = signature_scheme.signed((5, 9), 8, b"message", 12345)

    def output(self, body):
        return response(False, b"200 OK", b"text/plain", body)

    def test_of_a_signature_looks_at_all_of_the_response(self):
        good = self.output(b"signature:" + self.text)
        self.assertTrue(self.answer.accepts(False, good, 0))
        self.assertFalse(self.answer.accepts(True, good, 0))
        self.assertFalse(self.answer.accepts(False, good, 255))
        for other in (good + b"\n", good[:-1], good.replace(b"66", b"67"), self.output(self.text),
                      self.output(b"signature:" + self.text[:-4]), b"", good + good,
                      good.replace(b"\r\n", b"\n"), self.output(b"signature:" + self.other)):
            self.assertFalse(self.answer.accepts(False, other, 0), other)


if __name__ == "__main__":
    unittest.main()
