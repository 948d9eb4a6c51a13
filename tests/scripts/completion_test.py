"""Completes command lines of projectctl in bash, and compares what is offered with its help.

    completion_test.py FOLDER     the folder of the programs; SIGN_PROGRAM_FOLDER names another
"""

import itertools
import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

COMPLETION = Path(__file__).resolve().parents[2] / "completions" / "projectctl"
COMMANDS = ("create", "show", "check", "strip", "sign", "verify", "explain", "export", "convert")
VALUES = {
    ("create", "--base"): {"random", "standard"},
    ("convert", "--from"): {"text", "der", "hex"},
    ("convert", "--to"): {"text", "der", "hex"},
    ("explain", "--data-encoding"): {"plain", "base64"},
    ("explain", "--content-type"): {"application/json", "application/x-www-form-urlencoded"},
    ("explain", "--content-length"): set(),
    ("explain", "--data"): set(),
    ("explain", "--signature"): set(),
}
FILE_OPTIONS = {("create", "--from-scalar"), ("sign", "--output"), ("verify", "--signature-file"),
                ("verify", "--check"), ("explain", "--body"), ("explain", "--project"),
                ("explain", "--file"), ("convert", "--digest-of")}
# Commands whose options exclude or need each other, and the operands that they may have.
OPERANDS = {"explain": [[]], "convert": [[], ["AAAA"]], "verify": [["x"], ["x", "AAAA"]]}
SCRIPT = """
source "$1"
COMP_CWORD=$2
shift 2
COMP_WORDS=("$@")
"$(complete -p projectctl | sed 's/.*-F \\([^ ]*\\).*/\\1/')"
printf '%s\\n' "${COMPREPLY[@]}"
"""


class Completion(unittest.TestCase):
    programs = None

    @classmethod
    def setUpClass(cls):
        cls.options = {command: cls.options_in_help(command) for command in COMMANDS}

    @classmethod
    def help_of(cls, *arguments):
        return subprocess.run([cls.programs / "projectctl", *arguments, "--help"], check=True,
                              capture_output=True, text=True).stdout

    @classmethod
    def options_in_help(cls, command):
        """The options of a command; those with a value map to True."""
        lines = re.findall(r"^  (?:-[a-z],)?(--[a-z-]+)( [A-Za-z|0-9]+)?(?= |$)", cls.help_of(command),
                           re.MULTILINE)
        return {option: value != "" for option, value in lines}

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        for name in ("letter.txt", "my.project", "my other.project"):
            Path(folder.name, name).touch()

    def offered(self, *words, after=()):
        """What completes the last of the words, with others behind the cursor."""
        result = subprocess.run(
            ["bash", "-c", SCRIPT, "bash", COMPLETION, str(len(words)), "projectctl", *words,
             *after],
            cwd=self.folder, check=True, capture_output=True, text=True)
        self.assertEqual(result.stderr, "")
        return set(result.stdout.split("\n")) - {""}

    def test_the_help_has_options(self):
        self.assertEqual(self.options["create"],
                         {"--help": False, "--base": True, "--from-scalar": True})
        self.assertEqual(len(self.options["explain"]), 12)

    def test_offers_all_commands(self):
        commands = set(re.findall(r"^  ([a-z]+) ", self.help_of().partition("Subcommands")[2],
                                  re.MULTILINE))
        self.assertEqual(commands, set(COMMANDS))
        self.assertEqual(self.offered(""), commands | {"--help", "--version"})
        self.assertEqual(self.offered("s"), {"show", "strip", "sign"})
        self.assertEqual(self.offered("--v"), {"--version"})

    def test_offers_each_option_of_each_command(self):
        for command in COMMANDS:
            with self.subTest(command=command):
                self.assertEqual(self.offered(command, "-"), set(self.options[command]))
            for option in self.options[command]:
                with self.subTest(command=command, option=option):
                    self.assertIn(option, self.offered(command, option[:-1]))

    def test_offers_no_option_twice(self):
        for command in COMMANDS:
            for option, has_value in self.options[command].items():
                with self.subTest(command=command, option=option):
                    given = [option, "value"] if has_value else [option]
                    self.assertNotIn(option, self.offered(command, *given, "-"))

    def accepts(self, command, arguments):
        """Whether the command line can be parsed, whatever the command then says to it."""
        result = subprocess.run([self.programs / "projectctl", command, *arguments],
                                cwd=self.folder, stdin=subprocess.DEVNULL, capture_output=True,
                                check=False)
        return b"see 'projectctl --help'" not in result.stderr

    def accepted_option_sets(self, command):
        """All sets of options that the program takes on one line, with some operands."""
        options = sorted(set(self.options[command]) - {"--help"})
        for size in range(len(options) + 1):
            for chosen in itertools.combinations(options, size):
                words = [word for option in chosen
                         for word in ([option, self.value_of(command, option)]
                                      if self.options[command][option] else [option])]
                if any(self.accepts(command, [*operands, *words])
                       for operands in OPERANDS[command]):
                    yield set(chosen)

    def test_offers_the_options_that_the_program_takes_beside_another(self):
        for command in OPERANDS:
            accepted = list(self.accepted_option_sets(command))
            for first, has_value in self.options[command].items():
                if first == "--help":
                    continue
                beside = set().union(*(options for options in accepted if first in options))
                given = [first, self.value_of(command, first)] if has_value else [first]
                with self.subTest(command=command, first=first):
                    self.assertEqual(self.offered(command, *given, "-"),
                                     beside - {first} | {"--help"})

    @staticmethod
    def value_of(command, option):
        return sorted(VALUES.get((command, option)) or {"x"})[0]

    def test_offers_the_values_of_each_option(self):
        for command in COMMANDS:
            for option, has_value in self.options[command].items():
                if not has_value:
                    continue
                with self.subTest(command=command, option=option):
                    if (command, option) in FILE_OPTIONS:
                        self.assertEqual(self.offered(command, option, "l"), {"letter.txt"})
                    else:
                        self.assertEqual(self.offered(command, option, ""),
                                         VALUES[command, option])

    def test_offers_files(self):
        for command in COMMANDS:
            expected = set() if command == "explain" else {"my.project", "my other.project"}
            with self.subTest(command=command):
                self.assertEqual(self.offered(command, "my"), expected)

    def test_offers_files_up_to_the_last_operand(self):
        for command, operands in {"create": 1, "show": 1, "check": 1, "export": 1, "convert": 1,
                                  "strip": 2, "verify": 3}.items():
            for given in range(1, operands + 1):
                with self.subTest(command=command, given=given):
                    signature_is_next = command == "verify" and given == 1
                    expected = given < operands and not signature_is_next
                    self.assertEqual(self.offered(command, *["x"] * given, "l"),
                                     {"letter.txt"} if expected else set())

    def test_offers_files_as_operands_of_sign_without_end(self):
        for given in (1, 2, 20):
            self.assertEqual(self.offered("sign", *["x"] * given, "l"), {"letter.txt"})

    def test_offers_what_is_verified_beside_the_file_of_a_signature(self):
        self.assertEqual(self.offered("verify", "--signature-file", "x", "x", "l"), {"letter.txt"})
        self.assertEqual(self.offered("verify", "--signature-file", "x", "x", "x", "l"), set())
        self.assertEqual(self.offered("verify", "--check", "x", "l"), {"letter.txt"})
        self.assertEqual(self.offered("verify", "--check", "x", "x", "l"), set())

    def test_tells_operands_from_the_values_of_options(self):
        self.assertEqual(self.offered("sign", "-o", "l"), {"letter.txt"})
        self.assertEqual(self.offered("create", "--base", "random", "l"), {"letter.txt"})
        self.assertEqual(self.offered("create", "x", "--base", "random", "l"), set())

    def test_offers_a_digest_or_a_signature(self):
        self.assertIn("--digest-of", self.offered("convert", "-"))
        self.assertNotIn("--digest-of", self.offered("convert", "AAAA", "-"))

    def test_completes_values_behind_an_equals_sign(self):
        self.assertEqual(self.offered("create", "--base", "="), {"random", "standard"})
        self.assertEqual(self.offered("create", "--base", "=", "s"), {"standard"})

    def test_offers_no_option_that_stands_behind_the_cursor(self):
        self.assertNotIn("--json", self.offered("show", "-", after=["--json"]))

    def test_offers_nothing_behind_an_unknown_command(self):
        self.assertEqual(self.offered("remove", "-"), set())


if __name__ == "__main__":
    Completion.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
