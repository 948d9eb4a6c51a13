"""The judge of the coverage, on exports as llvm-cov writes them."""

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
from mutation.judged_folders import FOLDERS_LEFT_OUT  # noqa: E402

CONDITIONS = 10
SOURCE = "".join(f"if (a{i}) {{}}\n" for i in range(CONDITIONS))


def folders_of_the_product():
    """Those that the build makes what is installed of."""
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    built = [line.removeprefix("add_subdirectory(").rstrip(")") for line in text.splitlines()
             if line.startswith("add_subdirectory(")]
    return [folder for folder in built
            if folder not in ("bench", "packaging", *FOLDERS_LEFT_OUT)]


def condition(line, column, end_column, taken, passed):
    """A condition on one line, as llvm-cov writes it."""
    return [line, column, line, end_column, taken, passed, 0, 0, 4]


class Coverage(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        (self.root / "docs").mkdir()
        self.lines = {folder: 100 for folder in folders_of_the_product()}
        # Each condition is taken both ways.
        self.conditions = {folder: [condition(i + 1, 5, 7, 4, 5) for i in range(CONDITIONS)]
                           for folder in self.lines}
        self.source = SOURCE
        self.told = ""

    def exported(self, folder):
        source = self.root / folder / "inner" / "a.cpp"
        source.parent.mkdir(parents=True, exist_ok=True)
        source.write_text(self.source, encoding="utf-8")
        name = self.root / "build" / ".." / folder / "inner" / "a.cpp"
        return {"filename": str(name), "branches": self.conditions[folder],
                "summary": {"lines": {"count": 100, "covered": self.lines[folder]}}}

    def judged(self):
        files = [self.exported(folder) for folder in self.lines]
        files.append({"filename": "/usr/include/vector", "summary": {}, "branches": []})
        export = self.root / "coverage.json"
        export.write_text(json.dumps({"data": [{"files": files}]}), encoding="utf-8")
        (self.root / "docs" / "testing.md").write_text(self.told, encoding="utf-8")
        with mock.patch.object(coverage_report, "ROOT", self.root), \
                contextlib.redirect_stdout(io.StringIO()) as printed:
            return coverage_report.main(export), printed.getvalue()

    def test_is_good_when_all_runs(self):
        status, printed = self.judged()
        self.assertEqual(status, 0)
        self.assertCountEqual(printed.splitlines(), [
            f"{folder}: 100 of 100 lines, 20 of 20 branches" for folder in self.lines])

    def test_fails_with_a_line_of_any_folder_that_does_not_run(self):
        for folder in self.lines:
            with self.subTest(folder=folder), mock.patch.dict(self.lines, {folder: 99}):
                status, printed = self.judged()
                self.assertEqual(status, 1)
                self.assertIn(f"{folder}/inner/a.cpp: lines that do not run\n", printed)

    def test_fails_with_too_few_branches_of_any_folder(self):
        for folder, conditions in self.conditions.items():
            self.told = ""
            for number, status in ((0, 0), (1, 1)):
                conditions[number][4] = 0
                self.told += f"| `{folder}/inner/a.cpp` | `a{number}` | true | no input can |\n"
                with self.subTest(folder=folder, missed=number + 1):
                    self.assertEqual(self.judged()[0], status)
            for each in conditions:
                each[4] = 4

    def test_fails_without_any_line_of_a_folder(self):
        del self.lines["frontend"]
        self.assertEqual(self.judged()[0], 1)

    def test_fails_with_a_side_that_the_document_does_not_tell_of(self):
        self.conditions["core"][1][5] = 0
        status, printed = self.judged()
        self.assertEqual(status, 1)
        self.assertIn("not in docs/testing.md: core/inner/a.cpp: a1: false\n", printed)
        self.told = "| `core/inner/a.cpp` | `a1` | false | no input can |\n"
        self.assertEqual(self.judged()[0], 0)

    def test_fails_with_a_side_that_runs_after_all(self):
        self.told = "| `core/inner/a.cpp` | `a0` | true | no input can |\n"
        status, printed = self.judged()
        self.assertEqual(status, 1)
        self.assertIn("runs, but docs/testing.md has it: core/inner/a.cpp: a0: true\n", printed)

    def test_adds_up_the_instances_of_a_template(self):
        self.conditions["core"] = [condition(1, 5, 7, 3, 0), condition(1, 5, 7, 0, 1)]
        status, printed = self.judged()
        self.assertEqual(status, 0)
        self.assertIn("core: 100 of 100 lines, 2 of 2 branches\n", printed)

    def test_leaves_out_the_conditions_that_verify_is_given(self):
        self.source = ("core::verify(a && (b ||\n    c)); if (d) {}\n"
                       "curveVerify(e ? 1 : 2);\nverify(f && g(1));\n")
        never = [(1, 14, 15), (1, 20, 21), (2, 5, 6), (4, 8, 9), (4, 13, 17)]
        runs = [(2, 14, 15), (3, 13, 14)]
        self.conditions = {folder: [] for folder in self.lines}
        self.conditions["core"] = [condition(*place, 4, 0) for place in never + runs]
        status, printed = self.judged()
        self.assertEqual(status, 1)
        self.assertIn("core: 100 of 100 lines, 2 of 4 branches\n", printed)
        told = [line for line in printed.splitlines() if line.startswith("not in")]
        self.assertEqual(told, [f"not in docs/testing.md: core/inner/a.cpp: {code}: false"
                                for code in "de"])


if __name__ == "__main__":
    unittest.main()
