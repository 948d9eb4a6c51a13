"""The comparison itself: it has to find what differs, and to tell how to repeat it."""

import argparse
import collections
import random
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import compare_requests
import request_maker
import request_material
import signature_engine
import signature_scheme
from answer import SignatureAnswer
from response_writer import response
from rules import ENDS, RULES

COMPARE = Path(__file__).resolve().parent / "compare_requests.py"
COUNT = 100


def is_answered_rightly(report):
    """Whether the report of a refusal for invalid JSON has found that one due."""
    return ("body=b'Invalid JSON data'" in report and "Status: 400" in report
            and "nph" not in report)


class Programs(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def compared(self, *arguments, script, explaining):
        """The exit status and the output of the comparison with programs that are these scripts."""
        for name, text in (("sign.cgi", script), ("nph-sign.cgi", script),
                           ("projectctl", explaining)):
            (self.folder / name).write_text(f"#!/bin/sh\n{text}\n", encoding="utf-8")
            (self.folder / name).chmod(0o755)
        end = subprocess.run([sys.executable, "-B", COMPARE, "--program", self.folder, *arguments],
                             env={}, check=False, capture_output=True, text=True, timeout=300)
        self.assertEqual(end.stderr, "")
        return end.returncode, end.stdout

    def test_that_say_nothing_differ_in_every_request(self):
        exit_status, output = self.compared("--count", f"{COUNT}", "--seed", "1",
                                            script="kill -ABRT $$", explaining="kill -ABRT $$")
        self.assertEqual(exit_status, 1)
        self.assertIn(f" {COUNT} differ\n", output)

    def test_that_refuse_everything_are_right_only_where_that_is_due_and_explained(self):
        refusal = response(False, b"400 Bad Request", b"text/plain", b"Invalid JSON data").decode()
        explanation = ('{"status":"400 Bad Request","body":"Invalid JSON data",'
                       '"rule":"json.syntax"}')
        scripts = {"script": f"printf %s '{refusal}'\nexit 255",
                   "explaining": f"printf %s '{explanation}'"}
        exit_status, output = self.compared("--count", f"{COUNT}", "--seed", "1", **scripts)
        differing = [int(number) for number in re.findall(r"request (\d+) differs", output)]
        self.assertEqual(exit_status, 1)
        self.assertTrue(0 < len(differing) < COUNT, output)
        explained_wrongly = [report for report in output.split("\n\n")
                             if is_answered_rightly(report)]
        self.assertNotEqual(explained_wrongly, [])
        for report in explained_wrongly:
            self.assertNotIn("Answer(rule='json.syntax'", report)
        once_more, output = self.compared("--count", "1", "--seed", "1",
                                          "--first", f"{differing[0]}", **scripts)
        self.assertEqual(once_more, 1)
        self.assertIn(f"seed 1, request {differing[0]} differs", output)


class Missing(unittest.TestCase):
    def test_is_each_answer_and_each_rule_that_never_came(self):
        def missing(left_out, **arguments):
            answers = [*compare_requests.ANSWERS, compare_requests.ENDED]
            counts = [collections.Counter(name for name in names if name not in left_out)
                      for names in (answers, RULES | ENDS)]
            arguments = {"count": compare_requests.ENOUGH_FOR_EVERYTHING,
                         "without_ends": False} | arguments
            return compare_requests.missing(*counts, argparse.Namespace(**arguments))

        answer, ended = compare_requests.ANSWERS[3], compare_requests.ENDED
        self.assertEqual(missing([]), [])
        for name in (answer, ended, *RULES, *ENDS):
            self.assertEqual(missing([name]), [name])
        self.assertEqual(missing(["key.no-bits", answer], count=100), [])
        self.assertEqual(missing([ended, *ENDS], without_ends=True), [])
        self.assertEqual(missing(["key.no-bits"], without_ends=True), ["key.no-bits"])


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
