"""The scripts behind check-release.sh: the table of figures, and the judge of the coverage."""

import contextlib
import io
import json
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

ROOT = Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "scripts"))
import coverage_report  # noqa: E402
import record_figures  # noqa: E402

TABLE = (f"text\n\n{record_figures.HEAD}"
         "| suite | old | a | 1 |\n| fuzz: x | 3 runs | b | 2 |\n\nend\n")
SOURCE = "if (a && b) {\n    c();\n}\n"


class Figures(unittest.TestCase):
    def test_take_the_place_of_the_last_ones(self):
        text = record_figures.with_row(TABLE, "suite", "new", "c", 9)
        self.assertEqual(text, TABLE.replace("| suite | old | a | 1 |", "| suite | new | c | 9 |"))

    def test_of_a_new_check_stand_behind_the_others(self):
        text = record_figures.with_row(TABLE, "fuzz", "1 run", "c", 9)
        self.assertEqual(text, TABLE.replace("b | 2 |\n", "b | 2 |\n| fuzz | 1 run | c | 9 |\n"))

    def test_need_a_table(self):
        with self.assertRaises(ValueError):
            record_figures.with_row("text\n", "suite", "new", "c", 9)

    def test_have_their_table_in_the_document(self):
        text = record_figures.DOCUMENT.read_text(encoding="utf-8")
        self.assertIn("| a check | its figures |",
                      record_figures.with_row(text, "a check", "its figures", "c", 9))


class Commit(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        self.write("docs/testing.md")
        self.write("core/a.cpp")
        record_figures.git(self.root, "init", "--quiet")
        record_figures.git(self.root, "add", ".")
        record_figures.git(self.root, "-c", "user.name=a", "-c", "user.email=a@example.org",
                           "commit", "--quiet", "--message=a")
        self.commit = record_figures.git(self.root, "rev-parse", "--short=10", "HEAD")

    def write(self, name, text="text\n"):
        path = self.root / name
        path.parent.mkdir(exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def test_is_that_of_the_tree_whatever_the_table_holds(self):
        self.write("docs/testing.md", "other\n")
        self.assertEqual(record_figures.commit_of(self.root), self.commit)

    def test_is_marked_when_a_file_is_changed_or_new(self):
        self.write("core/b.cpp")
        self.assertEqual(record_figures.commit_of(self.root), self.commit + "+")
        (self.root / "core" / "b.cpp").unlink()
        self.write("core/a.cpp", "other\n")
        self.assertEqual(record_figures.commit_of(self.root), self.commit + "+")


class Coverage(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        for name in ("core", "docs"):
            (self.root / name).mkdir()
        (self.root / "core" / "a.cpp").write_text(SOURCE, encoding="utf-8")
        self.lines = self.branches = 100
        # Both conditions are taken both ways.
        self.conditions = [[1, 5, 1, 6, 4, 5, 0, 0, 4], [1, 10, 1, 11, 2, 2, 0, 0, 4]]
        self.told = ""

    def judged(self):
        summary = {"lines": {"count": 100, "covered": self.lines},
                   "branches": {"count": 100, "covered": self.branches}}
        files = [{"filename": str(self.root / "core" / "a.cpp"), "summary": summary,
                  "branches": self.conditions},
                 {"filename": "/usr/include/vector", "summary": {}, "branches": []}]
        export = self.root / "coverage.json"
        export.write_text(json.dumps({"data": [{"files": files}]}), encoding="utf-8")
        (self.root / "docs" / "testing.md").write_text(self.told, encoding="utf-8")
        with mock.patch.object(coverage_report, "ROOT", self.root), \
                contextlib.redirect_stdout(io.StringIO()) as printed:
            return coverage_report.main(export), printed.getvalue()

    def test_is_good_when_all_runs(self):
        self.assertEqual(self.judged(), (0, "lines: 100 of 100 (100.0 %)\n"
                                            "branches: 100 of 100 (100.0 %)\n"))

    def test_fails_with_a_line_that_does_not_run(self):
        self.lines = 99
        status, printed = self.judged()
        self.assertEqual(status, 1)
        self.assertIn("core/a.cpp: lines that do not run\n", printed)

    def test_fails_with_too_few_branches(self):
        self.branches = 94
        self.assertEqual(self.judged()[0], 1)
        self.branches = 95
        self.assertEqual(self.judged()[0], 0)

    def test_fails_with_a_side_that_the_document_does_not_tell_of(self):
        self.conditions[1][5] = 0
        status, printed = self.judged()
        self.assertEqual(status, 1)
        self.assertIn("not in docs/testing.md: core/a.cpp: b: false\n", printed)
        self.told = "| `core/a.cpp` | `b` | false | no input can |\n"
        self.assertEqual(self.judged()[0], 0)

    def test_fails_with_a_side_that_runs_after_all(self):
        self.told = "| `core/a.cpp` | `a` | true | no input can |\n"
        status, printed = self.judged()
        self.assertEqual(status, 1)
        self.assertIn("runs, but docs/testing.md has it: core/a.cpp: a: true\n", printed)

    def test_adds_up_the_instances_of_a_template(self):
        self.conditions += [[1, 5, 1, 6, 3, 0, 0, 0, 4], [1, 10, 1, 11, 0, 1, 0, 0, 4]]
        self.assertEqual(self.judged()[0], 0)


if __name__ == "__main__":
    unittest.main()
