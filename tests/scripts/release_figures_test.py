"""The script behind check-release.sh: the table of figures."""

import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "scripts"))
import record_figures  # noqa: E402

TABLE = (f"text\n\n{record_figures.HEAD}"
         "| suite | old | a | 1 |\n| fuzz: x | 3 runs | b | 2 |\n\nend\n")


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


if __name__ == "__main__":
    unittest.main()
