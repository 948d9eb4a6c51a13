"""Asks scripts/mutate.py for the mutants of small sources, and has stand-in tests judge some."""

import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
SCRIPT = ROOT / "scripts" / "mutate.py"
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "scripts"))
from mutation.mutants import mutants_of  # noqa: E402
from mutation.sample import choose  # noqa: E402
from mutation.tokens import code_tokens  # noqa: E402

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


class Record(unittest.TestCase):
    def test_of_equivalent_mutants_names_mutants_of_the_program(self):
        result = subprocess.run(
            [sys.executable, "-B", SCRIPT, "--list", "--count", "1"],
            capture_output=True,
            text=True,
            check=False,
        )
        self.assertEqual((result.returncode, result.stderr), (0, ""))


class Judging(unittest.TestCase):
    """Of a source whose tests are `grep` for what must not be changed."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        self.write("core/less.cpp", LESS)

    def write(self, name, text):
        file = self.root / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(text, encoding="utf-8")

    def run_script(self, *options, build="true", test="grep -q 'return a < b;' core/less.cpp"):
        return subprocess.run(
            [sys.executable, "-B", SCRIPT, "--root", self.root, "--folders", "core", "--seed", "1"]
            + ["--build", build, "--test", test, *options],
            capture_output=True,
            text=True,
            check=False,
        )

    def assert_ends(self, result, status, counts, share):
        self.assertIn(counts, result.stdout, result.stderr)
        self.assertIn(f"\n{share:.2f} % killed, wanted ", result.stdout)
        self.assertEqual((result.returncode, result.stderr), (status, ""))

    def test_passes_when_all_are_killed(self):
        result = self.run_script()
        self.assert_ends(result, 0, "3 killed, 0 survived, 0 equivalent", 100)
        self.assertEqual(len(re.findall(r"^\d/3 killed: test ", result.stdout, re.MULTILINE)), 3)

    def test_fails_when_one_survives(self):
        result = self.run_script(test="grep -q 'return a <=* b;' core/less.cpp")
        self.assert_ends(result, 1, "2 killed, 1 survived, 0 equivalent", 200 / 3)
        survivor = r"(?m)^\d/3 survived \[\w+ core/less.cpp:2: comparison: `<` -> `<=`\]"
        self.assertRegex(result.stdout, survivor)

    def test_passes_with_a_survivor_above_the_threshold(self):
        test = "grep -q 'return a <=* b;' core/less.cpp"
        self.assert_ends(self.run_script("--threshold", "66", test=test), 0, "1 survived", 200 / 3)
        self.assert_ends(self.run_script("--threshold", "67", test=test), 1, "1 survived", 200 / 3)

    def test_does_not_count_a_survivor_on_record(self):
        self.write(
            "tests/mutation/equivalent.txt",
            "core/less.cpp\n- return a < b;\n+ return a <= b;\n= a and b\n= differ.\n",
        )
        result = self.run_script(test="grep -q 'return a <=* b;' core/less.cpp")
        self.assert_ends(result, 0, "2 killed, 0 survived, 1 equivalent", 100)
        self.assertIn("equivalent: a and b differ. [", result.stdout)

    def test_ends_on_a_record_of_no_mutant(self):
        for entry in (
            "core/less.cpp\n- return a > b;\n+ return a >= b;\n= reason\n",
            "core/less.cpp\n- return a < b;\n+ return a <= b;\n",
        ):
            with self.subTest(entry=entry):
                self.write("tests/mutation/equivalent.txt", entry)
                result = self.run_script()
                self.assertEqual((result.returncode, result.stdout), (1, ""))
                self.assertIn("mutate.py: equivalent.txt: no ", result.stderr)

    def test_does_not_count_what_does_not_build(self):
        result = self.run_script(build="! grep -q '{};' core/less.cpp")
        self.assert_ends(result, 0, "2 killed, 0 survived, 0 equivalent", 100)
        self.assertIn("1 not compiled", result.stdout)

    def test_fails_when_too_few_count(self):
        build = "! grep -q '{};' core/less.cpp"
        self.assert_ends(self.run_script("--least", "2", build=build), 0, "2 killed", 100)
        result = self.run_script("--least", "3", build=build)
        self.assert_ends(result, 1, "2 killed", 100)
        self.assertTrue(result.stdout.endswith("\n2 count, wanted 3\n"))

    def test_counts_a_test_without_end_as_killed(self):
        result = self.run_script(
            "--seconds", "1", test="! grep -q '<=' core/less.cpp || sleep 60", build="true"
        )
        self.assert_ends(result, 1, "1 killed, 2 survived", 100 / 3)
        self.assertRegex(result.stdout, r"(?m)^\d/3 killed: time \[.*`<=`\]")

    def test_refuses_tests_that_fail_without_a_mutant(self):
        result = self.run_script(test="false")
        self.assertNotEqual(result.returncode, 0)
        self.assertIn("fails without any mutant: false", result.stderr)

    def test_leaves_the_tree_and_its_copy_as_they_were(self):
        self.run_script()
        for place in ("core", "build/mutate/tree/core"):
            self.assertEqual((self.root / place / "less.cpp").read_text(encoding="utf-8"), LESS)

    def test_goes_on_with_what_the_last_report_left_open(self):
        self.run_script(test="grep -q 'return a <=* b;' core/less.cpp")
        result = self.run_script("--resume", test="! grep -q '>=' core/less.cpp")
        self.assert_ends(result, 1, "2 killed, 1 survived, 0 equivalent", 200 / 3)
        result = self.run_script("--resume", test="! grep -q '<=' core/less.cpp")
        self.assert_ends(result, 0, "3 killed, 0 survived, 0 equivalent", 100)

    def test_writes_what_it_prints_into_the_report(self):
        result = self.run_script("--jobs", "2")
        report = (self.root / "build/mutate/report.txt").read_text(encoding="utf-8")
        self.assertEqual(report.splitlines()[1:], result.stdout.splitlines()[2:])


if __name__ == "__main__":
    unittest.main()
