"""The recorder behind check-release.sh, driven by stand-in checks in a repository of their own."""

import json
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "scripts"))
from release import page  # noqa: E402
from release.check import RUNS, Check, Found, NoFigures, chosen  # noqa: E402
from release.checks import CHECKS, FUZZ_TARGETS  # noqa: E402

SCRIPTS = ("check-release.sh", "record_figures.py", "release/check.py", "release/page.py",
           "release/records.py", "release/tree.py")
STAND_INS = '''\
from release.check import Check, Found

CHECKS = (
    Check("samples", "echo {count} samples, seed {seed}", (Found(r"^(\\\\d+ samples), .*$"),),
          sizes={"count": (100, 5)}),
    Check("other", "bash scripts/other.sh", (Found(r"^(\\\\d+ others)$"),)),
)
'''.replace("\\\\", "\\")
GOOD = "echo 3 others"


class Repository(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name) / "tree"
        for name in SCRIPTS:
            (self.root / "scripts" / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / "scripts" / name, self.root / "scripts" / name)
        self.write("scripts/release/checks.py", STAND_INS)
        self.write("scripts/install-packages.sh", "#!/bin/sh\n")
        (self.root / "scripts" / "install-packages.sh").chmod(0o755)
        self.write("scripts/other.sh", GOOD)
        for name in ("docs/testing.md", "core/a.cpp", "README.md"):
            self.write(name, "text\n")
        self.write(".gitignore", "/build/\n")
        self.git("init", "--quiet")
        self.commit()

    def write(self, name, text):
        file = self.root / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")

    def git(self, *words):
        identity = ("-c", "user.name=a", "-c", "user.email=a@example.org")
        return subprocess.run(["git", *identity, *words], cwd=self.root, check=True,
                              capture_output=True, text=True).stdout.strip()

    def commit(self):
        self.git("add", "--all")
        self.git("commit", "--quiet", "--allow-empty", "--message=a")
        return self.head()

    def head(self):
        return self.git("rev-parse", "HEAD")

    def check_release(self, *words, seed="7"):
        return subprocess.run([self.root / "scripts" / "check-release.sh", *words], check=False,
                              env=os.environ | {"SIGN_TEST_SEED": seed}, capture_output=True,
                              text=True)

    def left_by(self, check, kind="json"):
        return self.root / "build" / "check-release" / f"{check}.{kind}"

    def page(self):
        return self.root / page.PAGE

    def assert_refuses(self, reason, *words):
        end = self.check_release(*words)
        self.assertNotEqual(end.returncode, 0)
        self.assertIn(reason, end.stderr)
        self.assertNotIn("Traceback", end.stderr)
        self.assertFalse(self.page().exists())

    def assert_leaves_no_record(self, reason):
        """Of the check that is other.sh, of which there is a record already."""
        self.assert_refuses(reason, "other")
        self.assertFalse(self.left_by("other").exists())


class Records(Repository):
    def test_tell_what_ran_on_which_commit_and_what_it_gave(self):
        end = self.check_release("samples")
        self.assertEqual((end.returncode, end.stderr), (0, ""))
        self.assertEqual(end.stdout, "100 samples, seed 7\nsamples: 100 samples\n")
        record = json.loads(self.left_by("samples").read_text(encoding="utf-8"))
        digest = subprocess.run(["sha256sum", self.left_by("samples", "log")], check=True,
                                capture_output=True, text=True).stdout.split()[0]
        self.assertRegex(record.pop("ended"), r"^\d{4}-\d\d-\d\d \d\d:\d\d$")
        self.assertEqual(record, {
            "check": "samples", "run": "long", "commit": self.head(), "seed": 7,
            "command": "echo 100 samples, seed 7", "status": 0, "log": digest,
            "figures": "100 samples"})

    def test_of_a_short_run_are_marked_and_have_smaller_samples(self):
        self.assertEqual(self.check_release("--short", "samples").returncode, 0)
        record = json.loads(self.left_by("samples").read_text(encoding="utf-8"))
        self.assertEqual((record["run"], record["figures"]), ("short", "5 samples"))

    def test_need_a_tree_without_changes_before_the_check_begins(self):
        self.write("scripts/other.sh", "touch build/has-begun; " + GOOD)
        self.commit()
        for name in ("docs/testing.md", "docs/new.md", "docs/release-figures.md", "core/a.cpp",
                     "core/new.cpp", "new/new.cpp", "README.md", "scripts/record_figures.py"):
            with self.subTest(name=name):
                file = self.root / name
                before = file.read_bytes() if file.exists() else None
                file.parent.mkdir(exist_ok=True)
                with open(file, "ab") as changed:
                    changed.write(b"\n")
                end = self.check_release("other")
                self.assertNotEqual(end.returncode, 0)
                self.assertIn(f"other: the tree is not that of a commit: {name};", end.stderr)
                self.assertFalse(self.left_by("other").exists())
                self.assertFalse((self.root / "build" / "has-begun").exists())
                file.unlink()
                if before is not None:
                    file.write_bytes(before)
                    file.chmod(0o755 if name.endswith(".sh") else 0o644)
        self.assertEqual(self.check_release("other").returncode, 0)

    def test_need_no_file_to_be_missing_or_staged(self):
        (self.root / "docs" / "testing.md").unlink()
        self.assert_leaves_no_record("the tree is not that of a commit: docs/testing.md;")
        self.git("checkout", "--quiet", "docs/testing.md")
        self.write("core/a.cpp", "other\n")
        self.git("add", "core/a.cpp")
        self.assert_leaves_no_record("the tree is not that of a commit: core/a.cpp;")

    def test_are_not_left_by_checks_that_end_in_another_way(self):
        for script, reason in (
                (f"{GOOD}; exit 3", "other: ended with 3; its output is in build/check-release/other.log"),
                (f"{GOOD}; kill -KILL $$", "other: ended with -9; its output is in build/check-release/other.log"),
                ("echo other", "other: no figures: 0 lines of its output"),
                (f"{GOOD}; {GOOD}", "other: no figures: 2 lines of its output"),
                (f"{GOOD}; echo >>docs/testing.md", "is not that of a commit: docs/testing.md;"),
                (f"{GOOD}; touch new", "is not that of a commit: new;"),
                (f"{GOOD}; git -c user.name=a -c user.email=a@b commit -q --allow-empty -m b",
                 "other: another commit was checked out meanwhile;"),
                (f"{GOOD}; git checkout -q HEAD~",
                 "other: another commit was checked out meanwhile;")):
            with self.subTest(script=script):
                self.write("scripts/other.sh", GOOD)
                self.commit()
                self.assertEqual(self.check_release("other").returncode, 0)
                self.write("scripts/other.sh", script)
                self.commit()
                self.assert_leaves_no_record(reason)
                self.git("reset", "--quiet", "--hard")
                (self.root / "new").unlink(missing_ok=True)

    def test_are_not_left_when_the_recorder_is_killed(self):
        self.assertEqual(self.check_release("other").returncode, 0)
        os.mkfifo(self.root / "build" / "end")
        self.write("scripts/other.sh", f"echo begun; cat build/end; {GOOD}")
        self.commit()
        with subprocess.Popen([self.root / "scripts" / "check-release.sh", "other"],
                              stdout=subprocess.PIPE, text=True) as process:
            self.assertEqual(process.stdout.readline(), "begun\n")
            process.kill()
        (self.root / "build" / "end").write_bytes(b"")
        self.assertFalse(self.left_by("other").exists())

    def test_are_of_checks_that_there_are(self):
        self.assert_refuses("no check third; there are samples, other", "third")


class Page(Repository):
    def setUp(self):
        super().setUp()
        self.assertEqual(self.check_release("samples").returncode, 0)
        self.assertEqual(self.check_release("other", seed="8").returncode, 0)

    def written(self):
        self.assertEqual(self.check_release("--write").returncode, 0)
        return self.page().read_text(encoding="utf-8")

    def test_is_written_of_checks_that_ran_in_parts(self):
        text = self.written()
        self.assertIn("This is a long run.", text)
        self.assertIn(f"\n`{self.head()}`\n", text)
        rows = re.findall(r"^\| (.*) \| [-0-9: ]+ \|$", text, re.MULTILINE)
        self.assertEqual(rows, ["samples | 100 samples | 7", "other | 3 others | -"])
        self.assertEqual([record.check for record in page.records_of(text)], ["samples", "other"])

    def test_is_written_by_a_run_of_all_checks(self):
        end = self.check_release("--short")
        self.assertEqual(end.returncode, 0, end.stderr)
        self.assertIn("**This is a short run:", self.page().read_text(encoding="utf-8"))

    def test_is_not_written_by_a_run_of_which_a_check_fails(self):
        self.write("scripts/other.sh", "false")
        self.commit()
        self.assert_refuses("other: ended with 1;")

    def test_is_not_written_while_a_check_is_missing(self):
        self.left_by("other").unlink()
        self.assert_refuses("check-release: other: no record; run the check\n", "--write")
        self.assertEqual(self.check_release("other").returncode, 0)
        self.left_by("other", "log").unlink()
        self.assert_refuses("check-release: other: no record; run the check\n", "--write")

    def test_is_not_written_of_two_commits(self):
        first = self.head()
        self.write("docs/testing.md", "other\n")
        self.commit()
        self.assertEqual(self.check_release("other").returncode, 0)
        self.assert_refuses(f"samples: recorded at commit {first[:10]}, and another one is checked",
                            "--write")

    def test_is_not_written_when_the_tree_has_changed_since(self):
        self.write("docs/testing.md", "other\n")
        self.assert_refuses("the tree is not that of a commit: docs/testing.md;", "--write")

    def test_is_not_written_of_a_long_and_a_short_run(self):
        self.assertEqual(self.check_release("--short", "samples").returncode, 0)
        self.assert_refuses("samples: recorded by a short run;", "--write")
        self.assert_refuses("other: recorded by a long run;", "--write", "--short")

    def test_is_not_written_of_a_record_that_was_typed(self):
        good = json.loads(self.left_by("samples").read_text(encoding="utf-8"))
        for changes in ({"figures": "101 samples"}, {"seed": 9}, {"status": 1}, {"status": "0"},
                        {"log": "0" * 64}, {"check": "other"}, {"commit": "0" * 40},
                        {"command": "echo 100 samples"}, {"run": "longer"}, {"more": 1}):
            with self.subTest(changes=changes):
                self.left_by("samples").write_text(json.dumps(good | changes), encoding="utf-8")
                self.assert_refuses("check-release: samples: ", "--write")
        self.left_by("samples").write_text("101 samples\n", encoding="utf-8")
        self.assert_refuses("samples: its record cannot be read; run the check again", "--write")
        self.left_by("samples").write_text(json.dumps(good), encoding="utf-8")
        self.left_by("samples", "log").write_text("101 samples, seed 7\n", encoding="utf-8")
        self.assert_refuses("samples: its record is not that of its output;", "--write")

    def test_is_told_from_one_that_was_edited(self):
        text = self.written()
        row = re.search(r"^\| samples \|.*\n", text, re.MULTILINE)[0]
        record = re.search(r'^\{"check": "other".*\n', text, re.MULTILINE)[0]
        for other in (text.replace("| 100 samples |", "| 101 samples |"), text + row,
                      text.replace(row, ""), text.replace(row, row + row),
                      text.replace("100 samples", "101 samples"), text.replace(record, ""),
                      text.replace(record, record.replace(self.head(), "0" * 40)),
                      text.replace(self.head(), "0" * 40), text.replace("```json", "```"),
                      text.replace('"other", "run"', '"other", "ran"'), "", text[:-2] + "\n"):
            with self.subTest(other=other):
                self.assertNotEqual(other, text)
                self.assertRaises(ValueError, page.records_of, other)


class Figures(unittest.TestCase):
    def test_are_read_of_every_line_that_is_wanted(self):
        check = Check("a", "", (Found(r"^(\d+) of (\d+)$", r"\1/\2", lines=2, joined=" and "),
                                Found(r"^seen (\w+)$", lines=None)), "{}; {}")
        self.assertEqual(check.figures("1 of 2\nseen x\n3 of 4\n"), "1/2 and 3/4; x")
        self.assertEqual(check.figures("1 of 2\nseen x\n3 of 4\nseen y\n"), "1/2 and 3/4; x, y")
        for output in ("", "1 of 2\nseen x\n", "1 of 2\n3 of 4\n", "1 of 2 \n3 of 4\nseen x\n"):
            with self.subTest(output=output):
                self.assertRaises(NoFigures, check.figures, output)


class Checks(unittest.TestCase):
    """Those of this project."""

    def test_have_names_of_their_own_and_commands_for_both_runs(self):
        self.assertEqual(len({check.name for check in CHECKS}), len(CHECKS))
        for check in CHECKS:
            for run in RUNS:
                self.assertEqual(subprocess.run(["bash", "-n", "-c", check.command(run, 5)],
                                                check=False).returncode, 0)
                self.assertNotRegex(check.command(run, 5), r"\{|\}")

    def test_are_the_fuzz_targets_that_there_are(self):
        corpora = sorted(folder.name for folder in (ROOT / "fuzz" / "corpus").iterdir())
        self.assertEqual(sorted(FUZZ_TARGETS), corpora)

    def test_are_chosen_by_name_or_by_kind(self):
        self.assertEqual(chosen(CHECKS, []), list(CHECKS))
        self.assertEqual([check.name for check in chosen(CHECKS, ["mutation:tools", "suite"])],
                         ["suite", "mutation:tools"])
        self.assertEqual(len(chosen(CHECKS, ["fuzz"])), len(FUZZ_TARGETS))
        self.assertRaises(ValueError, chosen, CHECKS, ["suite", "core_text"])

    def test_are_told_of_in_the_documents(self):
        text = (ROOT / "docs" / "testing.md").read_text(encoding="utf-8")
        for check in CHECKS:
            self.assertTrue(f"\n| {check.name.split(':')[0]} |" in text, check.name)


class CommittedFigures(unittest.TestCase):
    def test_stand_on_a_page_that_is_as_it_was_written(self):
        for file in ROOT.glob("docs/*.md"):
            text = file.read_text(encoding="utf-8")
            if file.relative_to(ROOT) == page.PAGE:
                page.records_of(text)
            else:
                self.assertFalse("| Check | Figures |" in text, file)


if __name__ == "__main__":
    unittest.main()
