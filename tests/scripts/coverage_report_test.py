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

SOURCE = "if (a && b) {\n    c();\n}\n"


def folders_of_the_product():
    """Those that the build makes what is installed of."""
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    built = [line.removeprefix("add_subdirectory(").rstrip(")") for line in text.splitlines()
             if line.startswith("add_subdirectory(")]
    return [folder for folder in built
            if folder not in ("bench", "packaging", *FOLDERS_LEFT_OUT)]


class Coverage(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        (self.root / "docs").mkdir()
        self.lines = {folder: 100 for folder in folders_of_the_product()}
        self.branches = dict(self.lines)
        # Both conditions are taken both ways.
        self.conditions = [[1, 5, 1, 6, 4, 5, 0, 0, 4], [1, 10, 1, 11, 2, 2, 0, 0, 4]]
        self.told = ""

    def exported(self, folder):
        source = self.root / folder / "inner" / "a.cpp"
        source.parent.mkdir(parents=True, exist_ok=True)
        source.write_text(SOURCE, encoding="utf-8")
        summary = {"lines": {"count": 100, "covered": self.lines[folder]},
                   "branches": {"count": 100, "covered": self.branches[folder]}}
        name = self.root / "build" / ".." / folder / "inner" / "a.cpp"
        return {"filename": str(name), "summary": summary,
                "branches": self.conditions if folder == "core" else []}

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
            f"{folder}: 100 of 100 lines, 100 of 100 branches" for folder in self.lines])

    def test_fails_with_a_line_of_any_folder_that_does_not_run(self):
        for folder in self.lines:
            with self.subTest(folder=folder), mock.patch.dict(self.lines, {folder: 99}):
                status, printed = self.judged()
                self.assertEqual(status, 1)
                self.assertIn(f"{folder}/inner/a.cpp: lines that do not run\n", printed)

    def test_fails_with_too_few_branches_of_any_folder(self):
        for folder in self.branches:
            for count, status in ((94, 1), (95, 0)):
                with self.subTest(folder=folder), mock.patch.dict(self.branches, {folder: count}):
                    self.assertEqual(self.judged()[0], status)

    def test_fails_without_any_line_of_a_folder(self):
        del self.lines["frontend"]
        self.assertEqual(self.judged()[0], 1)

    def test_fails_with_a_side_that_the_document_does_not_tell_of(self):
        self.conditions[1][5] = 0
        status, printed = self.judged()
        self.assertEqual(status, 1)
        self.assertIn("not in docs/testing.md: core/inner/a.cpp: b: false\n", printed)
        self.told = "| `core/inner/a.cpp` | `b` | false | no input can |\n"
        self.assertEqual(self.judged()[0], 0)

    def test_fails_with_a_side_that_runs_after_all(self):
        self.told = "| `core/inner/a.cpp` | `a` | true | no input can |\n"
        status, printed = self.judged()
        self.assertEqual(status, 1)
        self.assertIn("runs, but docs/testing.md has it: core/inner/a.cpp: a: true\n", printed)

    def test_adds_up_the_instances_of_a_template(self):
        self.conditions += [[1, 5, 1, 6, 3, 0, 0, 0, 4], [1, 10, 1, 11, 0, 1, 0, 0, 4]]
        self.assertEqual(self.judged()[0], 0)


if __name__ == "__main__":
    unittest.main()
