"""Counts with strace how often projectctl opens the project and the file of a command.

    projectctl_opens_test.py FOLDER     the folder of the programs; SIGN_PROGRAM_FOLDER names another

Once each: all that a command says of a file is then of one and the same file, even where another
process puts one file in the place of the other meanwhile.
"""

import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

COMMANDS = [
    "check PROJECT",
    "show PROJECT",
    "export PROJECT",
    "export --private PROJECT",
    "strip PROJECT new",
    "sign PROJECT FILE",
    "verify PROJECT SIGNATURE FILE",
    "verify PROJECT abc FILE",
    "verify PROJECT OTHER FILE",
    "verify SIGNATURE FILE PROJECT",
    "verify FILE SIGNATURE PROJECT",
    "digest FILE",
    "explain --project PROJECT --data abc",
    "explain --project PROJECT --data abc --signature SIGNATURE",
    "explain --project PROJECT --file FILE",
    "explain --project PROJECT --file FILE --signature SIGNATURE",
]
FROM_STANDARD_INPUT = ["sign PROJECT -", "verify PROJECT SIGNATURE -", "verify PROJECT OTHER -",
                       "digest -"]
SIZES = {"letter": 1000, "empty": 0, "too-large": 1 << 31, "no-bytes": 1 << 32,
         "first-bytes": (1 << 32) + 5}
FILES = [*SIZES, "folder", "fifo", "missing"]
PROJECTS = ["sound", "public", "damaged", "empty", "folder", "missing"]
PAIRS = [*((project, "letter") for project in PROJECTS), *(("sound", file) for file in FILES[1:])]
OPEN = re.compile(r'open(?:at)?\([^"]*"([^"]*)".* = (?:\d+<([^>]*)>|-1 )')


class Opens(unittest.TestCase):
    program = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name).resolve()
        for name, size in SIZES.items():
            (self.folder / name).touch()
            os.truncate(self.folder / name, size)
        (self.folder / "folder").mkdir()
        os.mkfifo(self.folder / "fifo")
        self.run_command("create", "sound")
        self.run_command("strip", "sound", "public")
        sound = (self.folder / "sound").read_bytes()
        (self.folder / "damaged").write_bytes(sound[:-1] + bytes([sound[-1] ^ 1]))
        self.signature = self.run_command("sign", "sound", "letter").stdout.decode().strip()
        self.other = self.run_command("sign", "sound", "first-bytes").stdout.decode().strip()

    def run_command(self, *words, before=(), **settings):
        return subprocess.run([*before, self.program, *words], cwd=self.folder,
                              capture_output=True, check=False, timeout=60, **settings)

    def traced(self, command, calls, **settings):
        """The calls of each of the command's threads, one after the other."""
        with tempfile.TemporaryDirectory() as traces:
            self.run_command(*command, before=["strace", "-ff", "-y", "-qq", "-e", f"trace={calls}",
                                               "-o", Path(traces, "trace")], **settings)
            return [trace.read_text() for trace in Path(traces).iterdir()]

    def opened(self, command, **settings):
        """The paths that the command opens, and for a link what it leads to."""
        return [(self.folder / (found[2] or found[1])).resolve()
                for trace in self.traced(command, "open,openat", **settings)
                for found in OPEN.finditer(trace)]

    def words_of(self, command, project, file):
        names = {"PROJECT": project, "FILE": file, "SIGNATURE": self.signature,
                 "OTHER": self.other}
        return [names.get(word, word) for word in command.split()]

    def test_a_command_opens_what_it_works_on_once(self):
        for command in COMMANDS:
            with self.subTest(command):
                opened = self.opened(self.words_of(command, "sound", "letter"))
                for name, path in (("PROJECT", "sound"), ("FILE", "letter")):
                    self.assertEqual(opened.count(self.folder / path), int(name in command), name)

    def test_a_command_opens_nothing_twice_to_tell_what_is_wrong(self):
        for command in COMMANDS:
            for project, file in PAIRS:
                with self.subTest(command, project=project, file=file):
                    opened = self.opened(self.words_of(command, project, file))
                    for path in {project, file}:
                        self.assertLessEqual(opened.count(self.folder / path), 1, path)
                    (self.folder / "new").unlink(missing_ok=True)

    def test_many_files_are_opened_once_each_and_have_a_thread_for_each_core(self):
        names = [f"file{i}" for i in range(20)]
        for name in names:
            (self.folder / name).write_text(name)
        for used in (names, names[:1]):
            listed = self.run_command("sign", "sound", *used, "letter").stdout
            for command, files in ((["sign", "sound", *used], len(used)),
                                   (["verify", "sound", "--check", "-"], len(used) + 1)):
                with self.subTest(command):
                    opened = self.opened(command, input=listed)
                    self.assertEqual([opened.count(self.folder / name) for name in used],
                                     [1] * len(used))
                    threads = self.traced(command, "none", input=listed)
                    # The calling thread, and one for each core where there is more to do.
                    others = min(os.cpu_count(), files) if files > 1 else 0
                    self.assertEqual(len(threads), 1 + others)

    def test_a_file_on_standard_input_is_opened_once(self):
        for command in FROM_STANDARD_INPUT:
            with self.subTest(command), (self.folder / "letter").open("rb") as letter:
                opened = self.opened(self.words_of(command, "sound", "letter"), stdin=letter)
                self.assertEqual(opened.count(self.folder / "letter"), 1)


if __name__ == "__main__":
    programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1])
    Opens.program = programs.resolve() / "projectctl"
    unittest.main(argv=sys.argv[:1])
