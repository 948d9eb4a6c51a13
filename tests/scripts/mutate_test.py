"""Asks scripts/mutate.py for the mutants of small sources, and has stand-in tests judge some."""

import contextlib
import io
import re
import sys
import tempfile
import time
import unittest
from pathlib import Path
from unittest import mock

ROOT = Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "scripts"))
import mutate  # noqa: E402
from mutation import commands, judged_folders  # noqa: E402
from mutation.judged_folders import DEFAULT_FOLDERS, FOLDERS, FOLDERS_LEFT_OUT, TESTS  # noqa: E402
from mutation.mutants import mutants_of  # noqa: E402
from mutation.sample import choose  # noqa: E402
from mutation.tokens import code_tokens  # noqa: E402
from mutation.verdict import KILLED, NOT_COMPILED, SURVIVED, Verdict  # noqa: E402

# It has three mutants: `<=`, `>=`, and one that returns {}.
LESS = "bool less(int a, int b) {\n    return a < b;\n}\n"


def changes(source):
    """The mutants as pairs of the text replaced and what stands in its place."""
    return [(source[m.start : m.end], m.replacement) for m in mutants_of("core/a.cpp", source)]


class Tokens(unittest.TestCase):
    def assert_tokens(self, source, expected):
        self.assertEqual([token.text for token in code_tokens(source)], expected)

    def test_leave_out_comments_and_directives(self):
        self.assert_tokens("a; // b\n/* c\n; */ d;\n", ["a", ";", "d", ";"])
        self.assert_tokens("#include <a>\n  #define B 1 + \\\n 2\nc\n", ["c"])

    def test_of_a_string_are_one_whatever_is_in_it(self):
        self.assert_tokens(r'"a // \" b" c', [r'"a // \" b"', "c"])
        self.assert_tokens('R"x(a)" // b)x" c', ['R"x(a)" // b)x"', "c"])
        self.assert_tokens(r"'\'' '\"' \"'\"".replace("\\\"", '"'), [r"'\''", "'\"'", '"\'"'])

    def test_of_numbers_keep_separators_and_suffixes(self):
        self.assert_tokens("1'000u 0xFFULL 1e-3", ["1'000u", "0xFFULL", "1e-3"])

    def test_of_operators_are_the_longest_that_fit(self):
        self.assert_tokens("a<<=b>>c->d::e++", "a <<= b >> c -> d :: e ++".split())

    def test_are_refused_where_none_begins(self):
        for source in ('a "b\n"', "a @ b", "'"):
            with self.subTest(source=source), self.assertRaises(ValueError):
                code_tokens(source)


class Mutants(unittest.TestCase):
    def test_of_a_small_source_are_exactly_these(self):
        source = """\
#include <array>
// if (a < b) { return 1; }
static_assert(sizeof(int) == 4, "x");
template <typename T>
int f(const T& a, std::array<int, 2>&& b, char* c) {
    verify(a.size() < 9 && c);
    int sum = 0;
    if (a.size() < 3 && !c) {
        sum += *c * 5;
        g(&sum);
    }
    auto rest = [&] { return sum << 1; };
    return c ? rest() : -1;  // -2
}
"""
        self.assertEqual(
            changes(source),
            [
                ("2", "1"),
                ("2", "3"),
                ("0", "1"),
                ("a.size() < 3 && !c", "!(a.size() < 3 && !c)"),
                ("a.size() < 3 && !c", "(a.size() < 3 && !c) && false"),
                ("a.size() < 3 && !c", "(a.size() < 3 && !c) || true"),
                ("<", "<="),
                ("<", ">="),
                ("3", "2"),
                ("3", "4"),
                ("&&", "||"),
                ("!", ""),
                ("sum += *c * 5", ""),
                ("+=", "-="),
                ("+=", "="),
                ("*", "/"),
                ("5", "4"),
                ("5", "6"),
                ("g(&sum)", ""),
                ("sum << 1", "{}"),
                ("<<", ">>"),
                ("1", "0"),
                ("1", "2"),
                ("c ? rest() : -1", "{}"),
                ("rest() : -1", "-1 : rest()"),
                ("-", ""),
                ("1", "0"),
                ("1", "2"),
            ],
        )

    def test_of_texts_and_characters_are_other_ones(self):
        self.assertEqual(changes('auto a = "bc";'), [('"bc"', '"b"')])
        self.assertEqual(changes(r'auto a = "b\n";'), [(r'"b\n"', '"b"')])
        self.assertEqual(changes('auto a = "";'), [('""', '"x"')])
        self.assertEqual(changes("auto a = 'b';"), [("'b'", "'c'")])
        self.assertEqual(changes(r"auto a = '\0';"), [(r"'\0'", r"'\1'")])

    def test_of_hexadecimal_numbers_differ_in_one_bit(self):
        self.assertEqual(changes("auto a = 0x0FUL;"), [("0x0FUL", "0x0EUL")])

    def test_remove_statements_and_no_declarations(self):
        body = ["int a;", "a = 1;", "T b(a);", "++a;", "*b = a;", "g();", "return;"]
        source = "\n".join(["void f() {", *body, "}"])
        removed = [old for old, new in changes(source) if new == ""]
        self.assertEqual(removed, ["a = 1", "++a", "*b = a", "g()", "return"])

    def test_never_touch_declared_operators_and_destructors(self):
        body = ["A(A&&) = delete;", "~A();", "A* operator*();", "bool operator==(const A&);"]
        self.assertEqual(changes("\n".join(["struct A {", *body, "};"])), [])

    def test_differ_from_the_source_in_their_place_alone(self):
        for file in sorted((ROOT / "core").glob("*.cpp")):
            source = file.read_text(encoding="utf-8")
            for mutant in mutants_of("core/" + file.name, source):
                changed = mutant.applied(source)
                self.assertNotEqual(changed, source)
                self.assertEqual(changed[: mutant.start], source[: mutant.start])
                self.assertTrue(changed.endswith(source[mutant.end :]))
                self.assertEqual(changed.count("\n"), source.count("\n"), mutant)

    def test_keep_their_names_when_lines_move(self):
        names = [mutant.name for mutant in mutants_of("core/a.cpp", LESS)]
        moved = [mutant.name for mutant in mutants_of("core/a.cpp", "// more\n\n" + LESS)]
        self.assertEqual(names, moved)
        twice = [mutant.name for mutant in mutants_of("core/a.cpp", LESS + LESS)]
        self.assertEqual(len(set(twice)), 2 * len(names))


class Sample(unittest.TestCase):
    def setUp(self):
        small = mutants_of("core/small.cpp", LESS)
        large = mutants_of("core/large.cpp", LESS * 50)
        self.mutants = small + large

    def test_meets_every_file_and_follows_the_size(self):
        files = [mutant.file for mutant in choose(self.mutants, 40, seed=1)]
        self.assertEqual(len(files), 40)
        self.assertGreaterEqual(files.count("core/small.cpp"), 3)
        self.assertGreater(files.count("core/large.cpp"), 30)

    def test_repeats_with_its_seed(self):
        first, again, other = (choose(self.mutants, 20, seed) for seed in (1, 1, 2))
        self.assertEqual(first, again)
        self.assertNotEqual(first, other)

    def test_is_everything_when_more_is_wanted(self):
        self.assertEqual(len(choose(self.mutants, 10000, seed=1)), len(self.mutants))


def ended(*words):
    """The exit status of the script, or its message, and what it printed."""
    with contextlib.redirect_stdout(io.StringIO()) as printed:
        try:
            return mutate.main(list(map(str, words))), printed.getvalue()
        except SystemExit as end:
            return end.code, printed.getvalue()


class Record(unittest.TestCase):
    def test_of_equivalent_mutants_names_mutants_of_the_program_and_the_tools(self):
        for folders in (DEFAULT_FOLDERS, ("tools",), FOLDERS):
            with self.subTest(folders=folders):
                status, _ = ended("--list", "--count", 1, "--folders", *folders)
                self.assertEqual(status, 0)


class JudgedFolders(unittest.TestCase):
    """Held to the files that the build is made of."""

    def test_are_those_with_sources_of_what_is_installed(self):
        with_sources = {file.relative_to(ROOT).parts[0] for file in ROOT.glob("*/**/*.cpp")}
        self.assertEqual(set(FOLDERS), with_sources - {"bench", "build", "fuzz", "tests", *FOLDERS_LEFT_OUT})

    def test_have_tests_that_are_built(self):
        built = set()
        for file in (ROOT / "tests").rglob("CMakeLists.txt"):
            built |= set(re.findall(r"^sign_add_tests\((\w+)", file.read_text(), re.MULTILINE))
        self.assertEqual(set(TESTS), set(FOLDERS))
        self.assertLessEqual({test for tests in TESTS.values() for test in tests}, built)
        self.assertLessEqual(set(judged_folders.SCRIPTS), set(TESTS))

    def test_are_in_a_program_that_is_built(self):
        for program, folders in judged_folders.GROUPS.items():
            text = (ROOT / folders[-1] / "CMakeLists.txt").read_text(encoding="utf-8")
            self.assertIn(f"add_executable({program}", text)

    def test_are_searched_for_sources_to_the_bottom(self):
        sources = mutate.sources_of(mutate.arguments(["--folders", "tools"]))
        for name in ("tools/projectctl.cpp", "tools/files/whole_file.cpp", "tools/report.h"):
            self.assertIn(name, sources)


class Commands(unittest.TestCase):
    def run_shell(self, text, **limits):
        return commands.run(["sh", "-c", text], folder=ROOT, **{"seconds": 60, **limits})

    def test_end_with_their_status_and_the_end_of_their_output(self):
        run = self.run_shell("echo out; echo err >&2; exit 3")
        self.assertEqual((run.status, run.output), (3, "out\nerr\n"))

    def test_are_ended_with_their_children_when_their_time_is_over(self):
        start = time.monotonic()
        for limits in ({"seconds": 0.2}, {"silence": 0.2}):
            run = self.run_shell("echo $$; sleep 60 & sleep 60", **limits)
            self.assertIsNone(run.status)
            self.assertFalse(Path(f"/proc/{int(run.output)}").exists())
        self.assertLess(time.monotonic() - start, 30)

    def test_have_no_more_memory_than_they_are_given(self):
        taking = [sys.executable, "-c", "bytearray(1 << 30)"]
        self.assertEqual(commands.run(taking, folder=ROOT, seconds=60).status, 0)
        self.assertNotEqual(commands.run(taking, folder=ROOT, seconds=60, memory=1 << 28).status, 0)


class StandIn:
    """Judges by what is in the place of `a < b`."""

    verdicts: dict = {}

    def __init__(self, tree, *_):
        self.tree = tree

    def prepare(self):
        pass

    def judge(self, mutant):
        text = (self.tree / mutant.file).read_text(encoding="utf-8")
        for code, verdict in self.verdicts.items():
            if code in text:
                return verdict
        return Verdict(KILLED, "test")


class Judging(unittest.TestCase):
    """Of a source with three mutants, by a judge that kills those of which it is told nothing."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        self.write("core/less.cpp", LESS)
        for name, value in (("ROOT", self.root), ("ProjectJudge", StandIn)):
            patch = mock.patch.object(mutate, name, value)
            patch.start()
            self.addCleanup(patch.stop)

    def write(self, name, text):
        file = self.root / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")

    def judged(self, *options, **verdicts):
        """The end of a run with these verdicts on some of the three mutants."""
        codes = {"less_equal": "<=", "greater_equal": ">=", "braces": "{};"}
        told = {codes[name]: Verdict(outcome) for name, outcome in verdicts.items()}
        with mock.patch.object(StandIn, "verdicts", told):
            return ended("--folders", "core", "--seed", 1, *options)

    def assert_ends(self, end, status, counts, share):
        self.assertIn(counts, end[1])
        self.assertIn(f"\n{share:.2f} % killed, wanted ", end[1])
        self.assertEqual(end[0], status)

    def test_passes_when_all_are_killed(self):
        end = self.judged()
        self.assert_ends(end, 0, "3 killed, 0 survived, 0 equivalent", 100)
        self.assertEqual(len(re.findall(r"^\d/3 killed: test ", end[1], re.MULTILINE)), 3)

    def test_fails_when_one_survives(self):
        end = self.judged(less_equal=SURVIVED)
        self.assert_ends(end, 1, "2 killed, 1 survived, 0 equivalent", 200 / 3)
        survivor = r"(?m)^\d/3 survived \[\w+ core/less.cpp:2: comparison: `<` -> `<=`\]"
        self.assertRegex(end[1], survivor)

    def test_passes_with_a_survivor_above_the_threshold(self):
        for threshold, status in ((66, 0), (67, 1)):
            end = self.judged("--threshold", threshold, less_equal=SURVIVED)
            self.assert_ends(end, status, "1 survived", 200 / 3)

    def test_does_not_count_a_survivor_on_record(self):
        self.write(
            "tests/mutation/equivalent.txt",
            "core/less.cpp\n- return a < b;\n+ return a <= b;\n= a and b\n= differ.\n",
        )
        end = self.judged(less_equal=SURVIVED)
        self.assert_ends(end, 0, "2 killed, 0 survived, 1 equivalent", 100)
        self.assertIn("equivalent: a and b differ. [", end[1])

    def test_ends_on_a_record_of_no_mutant(self):
        for entry in (
            "core/less.cpp\n- return a > b;\n+ return a >= b;\n= reason\n",
            "core/less.cpp\n- return a < b;\n+ return a <= b;\n",
            "other/less.cpp\n- return a < b;\n+ return a <= b;\n= reason\n",
        ):
            with self.subTest(entry=entry):
                self.write("tests/mutation/equivalent.txt", entry)
                message, printed = self.judged()
                self.assertIn("mutate.py: equivalent.txt: no ", message)
                self.assertEqual(printed, "")

    def test_leaves_a_record_of_folders_that_are_not_judged_alone(self):
        self.write("tests/mutation/equivalent.txt",
                   "tools/less.cpp\n- return a < b;\n+ return a <= b;\n= reason\n")
        self.assertEqual(self.judged()[0], 0)

    def test_does_not_count_what_does_not_build(self):
        end = self.judged(braces=NOT_COMPILED)
        self.assert_ends(end, 0, "2 killed, 0 survived, 0 equivalent", 100)
        self.assertIn("1 not compiled", end[1])

    def test_fails_when_too_few_count(self):
        self.assert_ends(self.judged("--least", 2, braces=NOT_COMPILED), 0, "2 killed", 100)
        end = self.judged("--least", 3, braces=NOT_COMPILED)
        self.assert_ends(end, 1, "2 killed", 100)
        self.assertTrue(end[1].endswith("\n2 count, wanted 3\n"))

    def test_ends_when_tests_fail_without_a_mutant(self):
        with mock.patch.object(StandIn, "prepare", side_effect=RuntimeError("fails without")):
            self.assertRaises(RuntimeError, self.judged)

    def test_leaves_the_tree_and_its_copy_as_they_were(self):
        self.judged()
        for place in ("core", "build/mutate/tree/core"):
            self.assertEqual((self.root / place / "less.cpp").read_text(encoding="utf-8"), LESS)

    def test_goes_on_with_what_the_last_report_left_open(self):
        self.judged(less_equal=SURVIVED)
        end = self.judged("--resume", greater_equal=SURVIVED, less_equal=SURVIVED)
        self.assert_ends(end, 1, "2 killed, 1 survived, 0 equivalent", 200 / 3)
        end = self.judged("--resume", greater_equal=SURVIVED)
        self.assert_ends(end, 0, "3 killed, 0 survived, 0 equivalent", 100)

    def test_begins_anew_when_anything_in_the_tree_has_changed(self):
        self.judged()
        self.write("docs/other.md", "text\n")
        end = self.judged("--resume", greater_equal=SURVIVED)
        self.assert_ends(end, 1, "2 killed, 1 survived, 0 equivalent", 200 / 3)

    def test_writes_what_it_prints_into_the_report(self):
        end = self.judged("--jobs", 2)
        report = (self.root / "build/mutate/report-core.txt").read_text(encoding="utf-8")
        self.assertEqual(report.splitlines()[1:], end[1].splitlines()[2:])


if __name__ == "__main__":
    unittest.main()
