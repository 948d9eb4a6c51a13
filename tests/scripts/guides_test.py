"""Runs the commands of the guides that a person follows from the top to the end.

    guides_test.py FOLDER     the folder of the programs; SIGN_PROGRAM_FOLDER names another
"""

import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

DOCS = Path(__file__).resolve().parents[2] / "docs"
# Commands, and what they print if the page shows it.
STEP = re.compile(r"^```sh\n(.*?)^```\n(?:\n```\n(.*?)^```\n)?", re.MULTILINE | re.DOTALL)
SECONDS_FOR_A_STEP = 60


class Guide(unittest.TestCase):
    programs = None

    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def steps_of(self, page):
        """Under each heading, the commands and what they print, in their order."""
        sections = re.split(r"^##+ (.*)$", (DOCS / page).read_text(encoding="utf-8"),
                            flags=re.MULTILINE)
        return {heading: STEP.findall(text)
                for heading, text in zip(sections[1::2], sections[2::2])}

    def run_commands(self, commands):
        return subprocess.run(["sh", "-ec", commands], cwd=self.folder, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=SECONDS_FOR_A_STEP,
                              env={"PATH": f"{self.programs}:{os.environ['PATH']}"}, check=False)

    def follow(self, steps):
        for commands, expected in steps:
            done = self.run_commands(commands)
            self.assertEqual((done.returncode, done.stderr), (0, ""), commands)
            if expected:
                self.assertEqual(done.stdout, expected, commands)

    def refuses(self, steps, words):
        """That one of the steps fails, and says why."""
        failed = [done for done in (self.run_commands(commands) for commands, _ in steps)
                  if done.returncode != 0]
        self.assertEqual(len(failed), 1)
        self.assertIn(words, failed[0].stdout + failed[0].stderr)


class Releases(Guide):
    def setUp(self):
        super().setUp()
        (self.folder / "dist").mkdir()
        for name in ("program-1.0.tar.gz", "-option-like", "two words", "sum\\s"):
            (self.folder / "dist" / name).write_bytes(os.urandom(5000))
        self.steps = self.steps_of("releases.md")
        for heading in ("The key", "One signature for all files"):
            self.follow(self.steps[heading])

    def test_verify_in_each_way(self):
        for heading in ("Verifying with projectctl", "Verifying with OpenSSL",
                        "A signature for each file"):
            with self.subTest(heading):
                self.assertNotEqual(self.steps[heading], [])
                self.follow(self.steps[heading])

    def test_are_refused_when_a_file_is_altered(self):
        each_file = self.steps["A signature for each file"]
        self.follow(each_file)
        (self.folder / "dist" / "two words").write_bytes(b"other")
        self.refuses(self.steps["Verifying with projectctl"], "two words: FAILED")
        self.refuses(self.steps["Verifying with OpenSSL"], "two words: FAILED")
        done = self.run_commands(each_file[-1][0].splitlines()[-1])
        self.assertEqual((done.returncode, done.stdout), (1, "two words: FAILED\n"))

    def test_are_refused_when_the_list_is_altered(self):
        with (self.folder / "SHA256SUMS").open("a", encoding="ascii") as sums:
            sums.write(f"{'0' * 64}  more\n")
        self.refuses(self.steps["Verifying with projectctl"], "false")
        self.refuses(self.steps["Verifying with OpenSSL"], "Signature Verification Failure")


if __name__ == "__main__":
    Guide.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
