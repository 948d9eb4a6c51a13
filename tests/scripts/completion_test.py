"""Completes command lines of projectctl in bash, and compares what is offered with its help.

    completion_test.py FOLDER     the folder of the programs; SIGN_PROGRAM_FOLDER names another
"""

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
FILE_OPTIONS = {("create", "--from-scalar"), ("explain", "--body"), ("explain", "--project"),
                ("explain", "--file"), ("convert", "--digest-of")}
SCRIPT = """
source "$1"; shift
COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
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
        lines = re.findall(r"^  (?:-h,)?(--[a-z-]+)( [A-Za-z|0-9]+)?(?= |$)", cls.help_of(command),
                           re.MULTILINE)
        return {option: value != "" for option, value in lines}

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        for name in ("letter.txt", "my.project", "my other.project"):
            Path(folder.name, name).touch()

    def offered(self, *words):
        result = subprocess.run(["bash", "-c", SCRIPT, "bash", COMPLETION, "projectctl", *words],
                                cwd=self.folder, check=True, capture_output=True, text=True)
        self.assertEqual(result.stderr, "")
        return set(result.stdout.split("\n")) - {""}

    def test_the_help_has_options(self):
        self.assertEqual(self.options["create"],
                         {"--help": False, "--base": True, "--from-scalar": True})
        self.assertEqual(len(self.options["explain"]), 11)

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

    def test_offers_no_option_that_the_program_refuses_beside_another(self):
        for command in ("explain", "convert"):
            for first, has_value in self.options[command].items():
                given = [first, self.value_of(command, first)] if has_value else [first]
                offered = self.offered(command, *given, "-")
                for second in set(self.options[command]) - {first, "--help"}:
                    if first == "--help":
                        continue
                    more = ([second, self.value_of(command, second)]
                            if self.options[command][second] else [second])
                    message = subprocess.run(
                        [self.programs / "projectctl", command, *given, *more], cwd=self.folder,
                        capture_output=True, text=True, check=False).stderr
                    with self.subTest(command=command, first=first, second=second):
                        if f"{first} excludes {second}" in message or \
                                f"{second} excludes {first}" in message:
                            self.assertNotIn(second, offered)

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

    def test_offers_nothing_behind_an_unknown_command(self):
        self.assertEqual(self.offered("remove", "-"), set())


if __name__ == "__main__":
    Completion.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
