"""Completes command lines of projectctl in a shell, and compares what is offered with its help.

    completion_test.py FOLDER bash|zsh|fish     the folder of the programs; SIGN_PROGRAM_FOLDER names
                                                another
"""

import itertools
import os
import pty
import re
import subprocess
import sys
import tempfile
import threading
import unittest
from pathlib import Path

COMPLETIONS = Path(__file__).resolve().parents[2] / "completions"
COMMANDS = ("create", "show", "check", "strip", "sign", "verify", "explain", "export", "convert",
            "digest")
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
                ("explain", "--file")}
# Commands whose options exclude or need each other, and the operands that they may have.
OPERANDS = {"explain": [[]], "convert": [["AAAA"]], "verify": [["x"], ["x", "AAAA"]]}

# Each of these prints "== " and a line for each line of the file "lines", and behind it what is offered.
# bash parts "--base=random" into three words.
BASH = f"""
source '{COMPLETIONS}/projectctl'
complete=$(complete -p projectctl | sed 's/.*-F \\([^ ]*\\).*/\\1/')
while IFS= read -r line; do
    mapfile -t COMP_WORDS < <(sed -E 's/=/ = /g; s/ +/\\n/g' <<<"$line")
    COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1))
    "$complete"
    printf '%s\\n' "== $line" "${{COMPREPLY[@]}}"
done <lines
"""
FISH = f"""
source '{COMPLETIONS}/projectctl.fish'
while read -l line
    echo "== $line"
    complete -C $line
end <lines
"""
# In zsh a line is completed where it is edited. What a completion only looks for is not offered.
ZSH = f"""
fpath=('{COMPLETIONS}' $fpath)
autoload -Uz compinit && compinit -D -u
compadd() {{
    if [[ ${{@[1,(i)(-|--)]}} == *-(O|A|D)\\ * ]]; then
        builtin compadd "$@"
        return
    fi
    local -a matched
    builtin compadd -A matched "$@"
    offered+=("$matched[@]")
    builtin compadd "$@"
}}
zle -C collect list-choices _main_complete
report() {{
    local line
    for line in ${{(f)"$(<lines)"}}; do
        BUFFER=$line CURSOR=$#line offered=()
        zle collect
        print -rl -- "== $line" $offered
    done >offered
    exit
}}
zle -N zle-line-init report
"""


def completed_in_bash(folder):
    return subprocess.run(["bash", "-c", BASH], cwd=folder, check=True, capture_output=True,
                          text=True).stdout


def completed_in_fish(folder):
    return subprocess.run(["fish", "--no-config", "-c", FISH], cwd=folder, check=True,
                          capture_output=True, text=True).stdout


def completed_in_zsh(folder):
    """zsh edits lines on a terminal alone. What it writes there is thrown away."""
    (folder / "setup").write_text(ZSH)
    ours, theirs = pty.openpty()

    def read():
        try:
            while os.read(ours, 4096):
                pass
        except OSError:
            pass  # the other end is closed

    reader = threading.Thread(target=read)
    reader.start()
    try:
        shell = subprocess.Popen(["zsh", "-f", "-i"], cwd=folder, stdin=theirs, stdout=theirs,
                                 stderr=theirs, start_new_session=True)
        os.write(ours, b"source ./setup\n")
        shell.wait(timeout=240)
    finally:
        os.close(theirs)
        reader.join()
        os.close(ours)
    return (folder / "offered").read_text()


COMPLETED_IN = {"bash": completed_in_bash, "zsh": completed_in_zsh, "fish": completed_in_fish}


class Completion(unittest.TestCase):
    programs = None
    shell = None

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
        lines = re.findall(r"^  (?:-[a-z], )?(--[a-z-]+)( [A-Za-z|0-9]+)?(?= |$)",
                           cls.help_of(command), re.MULTILINE)
        return {option: value != "" for option, value in lines}

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        for name in ("letter.txt", "my.project", "my other.project"):
            (self.folder / name).touch()

    def offered(self, lines):
        """What completes each of these lines; of options, the long names."""
        (self.folder / "lines").write_text("".join(f"{line}\n" for line in lines))
        text = COMPLETED_IN[self.shell](self.folder)
        found = {}
        for block in re.split(r"^== ", text, flags=re.MULTILINE)[1:]:
            line, *words = block.split("\n")
            words = {word.partition("\t")[0] for word in words} - {""}
            # A file in the shell's own quoting, and "--base=random" for "random".
            words = {re.sub(r"^--[a-z]+=", "", re.sub(r"\\(.)", r"\1", word)) for word in words}
            found[line] = {word for word in words if not re.fullmatch("-[a-z]", word)}
        self.assertEqual(list(found), list(lines))
        return found

    def assert_offers(self, expected):
        found = self.offered(expected)
        for line, words in expected.items():
            with self.subTest(line):
                self.assertEqual(found[line], set(words))

    def test_the_help_has_options(self):
        self.assertEqual(self.options["create"],
                         {"--help": False, "--base": True, "--from-scalar": True})
        self.assertEqual(len(self.options["explain"]), 12)

    def test_offers_all_commands(self):
        commands = set(re.findall(r"^  ([a-z]+) ", self.help_of().partition("Commands:")[2],
                                  re.MULTILINE))
        self.assertEqual(commands, set(COMMANDS))
        # bash offers options before a dash is typed.
        options = {"--help", "--version"} if self.shell == "bash" else set()
        self.assert_offers({"projectctl ": commands | {"help"} | options,
                            "projectctl s": {"show", "strip", "sign"},
                            "projectctl --v": {"--version"},
                            "projectctl help ": commands,
                            "projectctl help sign ": set()})

    def test_offers_each_option_of_each_command_once(self):
        expected = {}
        for command, options in self.options.items():
            expected[f"projectctl {command} -"] = set(options)
            for option in options:
                expected[f"projectctl {command} {option}"] = {
                    other for other in options if other.startswith(option)}
        self.assert_offers(expected)
        given = {f"projectctl {command} {option}{' value' * has_value} -": option
                 for command, options in self.options.items()
                 for option, has_value in options.items()}
        for line, words in self.offered(given).items():
            with self.subTest(line):
                self.assertNotIn(given[line], words)

    def accepts(self, command, arguments):
        """Whether the command line can be parsed, whatever the command then says to it."""
        result = subprocess.run([self.programs / "projectctl", command, *arguments],
                                cwd=self.folder, stdin=subprocess.DEVNULL, capture_output=True,
                                check=False)
        return f"see 'projectctl {command} --help'".encode() not in result.stderr

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
        expected = {}
        for command in OPERANDS:
            accepted = list(self.accepted_option_sets(command))
            for first, has_value in self.options[command].items():
                if first == "--help":
                    continue
                beside = set().union(*(options for options in accepted if first in options))
                given = f"{first} {self.value_of(command, first)}" if has_value else first
                expected[f"projectctl {command} {given} -"] = beside - {first} | {"--help"}
        self.assert_offers(expected)

    @staticmethod
    def value_of(command, option):
        return sorted(VALUES.get((command, option)) or {"x"})[0]

    def test_offers_the_values_of_each_option(self):
        expected = {}
        for command, options in self.options.items():
            for option in (option for option, has_value in options.items() if has_value):
                if (command, option) in FILE_OPTIONS:
                    expected[f"projectctl {command} {option} le"] = {"letter.txt"}
                else:
                    expected[f"projectctl {command} {option} "] = VALUES[command, option]
        self.assert_offers(expected)

    def test_completes_values_behind_an_equals_sign(self):
        self.assert_offers({"projectctl create --base=": {"random", "standard"},
                            "projectctl create --base=s": {"standard"}})

    def test_offers_files_up_to_the_last_operand(self):
        expected = {f"projectctl {command} my":
                    set() if command == "explain" else {"my.project", "my other.project"}
                    for command in COMMANDS}
        for command, operands in {"create": 1, "show": 1, "check": 1, "export": 1, "convert": 1,
                                  "digest": 1, "strip": 2, "verify": 3}.items():
            for given in range(1, operands + 1):
                signature_is_next = command == "verify" and given == 1
                expected[f"projectctl {command}{' x' * given} le"] = (
                    {"letter.txt"} if given < operands and not signature_is_next else set())
        for given in (1, 2, 20):
            expected[f"projectctl sign{' x' * given} le"] = {"letter.txt"}
        self.assert_offers(expected)

    def test_tells_operands_from_the_values_of_options(self):
        self.assert_offers({
            "projectctl sign -o le": {"letter.txt"},
            "projectctl create --base random le": {"letter.txt"},
            "projectctl create x --base random le": set(),
            "projectctl verify --signature-file x x le": {"letter.txt"},
            "projectctl verify --signature-file x x x le": set(),
            "projectctl verify --check x le": {"letter.txt"},
            "projectctl verify --check x x le": set()})

    def test_offers_nothing_behind_an_unknown_command(self):
        self.assert_offers({"projectctl remove -": set()})


if __name__ == "__main__":
    Completion.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    Completion.shell = sys.argv[2]
    unittest.main(argv=sys.argv[:1])
