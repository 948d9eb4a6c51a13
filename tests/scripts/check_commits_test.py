#!/usr/bin/env python3
"""Runs scripts/check_commits.py on repositories with good and with bad messages."""

import subprocess
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "scripts" / "check_commits.py"
GOOD = "core: divide once\n\nWhy, and how it was checked."
IDENTITY = ["-c", "user.name=Somebody", "-c", "user.email=somebody@example.com"]


class CheckCommits(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = folder.name
        self.git("init", "-q")
        self.commit("What came before the release")
        release = self.git("rev-parse", "HEAD").strip()
        self.write(f"## Next\n\n## 1.0.0, 2026-11-21 ({release[:7]})\n")

    def git(self, *words):
        return subprocess.run(["git", "-C", self.root, *IDENTITY, *words], check=True,
                              capture_output=True, text=True).stdout

    def write(self, changelog):
        Path(self.root, "CHANGELOG.md").write_text(changelog, encoding="utf-8")

    def commit(self, message):
        self.git("commit", "-q", "--allow-empty", "--cleanup=verbatim", "-m", message)

    def check(self):
        return subprocess.run([SCRIPT, self.root], capture_output=True, text=True)

    def test_good_messages_pass(self):
        for subject in ("core: divide once", "core, docs: need one division less",
                        "tests/unit: " + "x" * 60):
            self.commit(subject + "\n\nWhy.")
        end = self.check()
        self.assertEqual((end.returncode, end.stdout), (0, ""))

    def test_each_breach_is_told(self):
        for message, breach in (
            ("core: " + "x" * 67 + "\n\nWhy.", "73 characters"),
            ("Divide once\n\nWhy.", "not 'area: summary'"),
            ("core: divided once\n\nWhy.", "not in the imperative"),
            ("core: dividing once\n\nWhy.", "not in the imperative"),
            ("core: divide once.\n\nWhy.", "full stop"),
            ("core: divide once", "no body"),
            ("core: divide once\n\n", "no body"),
            ("core: divide once\nWhy.", "no body"),
        ):
            with self.subTest(message=message):
                self.commit(message)
                end = self.check()
                self.assertEqual(end.returncode, 1)
                self.assertEqual(end.stdout.count("\n"), 1, end.stdout)
                self.assertIn(breach, end.stdout)
                self.git("reset", "-q", "--hard", "HEAD~1")

    def test_all_commits_count_where_the_release_is_not_there(self):
        self.write("## 1.0.0, 2026-11-21 (0123456789)\n")
        self.commit(GOOD)
        self.assertIn("What came before the release", self.check().stdout)

    def test_a_changelog_that_names_no_release_is_refused(self):
        self.write("## 1.0.0\n")
        self.assertEqual(self.check().returncode, 1)

    def test_an_archive_has_no_commits(self):
        with tempfile.TemporaryDirectory() as folder:
            Path(folder, "CHANGELOG.md").write_text("## 1.0.0, 2026-11-21 (0123456)\n")
            self.assertEqual(subprocess.run([SCRIPT, folder]).returncode, 0)


if __name__ == "__main__":
    unittest.main()
