"""Runs projectctl on a terminal and without one: large files and pipes, input that is typed, binary output.

    projectctl_terminal_test.py FOLDER     the folder of the programs; SIGN_PROGRAM_FOLDER names another
"""

import os
import pty
import re
import resource
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

QUIET_SIZE = 64 << 20
LARGE_SIZE = 2 * QUIET_SIZE
SECONDS_FOR_A_COMMAND = 120
BAR = re.compile(rb"\r\[(#*) *\] (\d+) %")
END_OF_BAR = b"\r\x1b[K"


class Terminal:
    """A terminal that collects what is written to it."""

    def __init__(self):
        self.ours, self.theirs = pty.openpty()
        self.output = b""
        self.reader = threading.Thread(target=self._collect)
        self.reader.start()

    def _collect(self):
        try:
            while piece := os.read(self.ours, 4096):
                self.output += piece
        except OSError:
            pass  # the other end is closed

    def close(self):
        os.close(self.theirs)
        self.reader.join()
        os.close(self.ours)
        return self.output


class OnATerminal(unittest.TestCase):
    programs = None

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        self.run_projectctl("create", "project")

    def output_of(self, *arguments, **options):
        return subprocess.run([self.programs / "projectctl", *arguments], cwd=self.folder,
                              check=True, timeout=SECONDS_FOR_A_COMMAND,
                              stdout=subprocess.PIPE, **options).stdout

    def run_projectctl(self, *arguments, **options):
        return self.output_of(*arguments, **options).decode().rstrip("\n")


class TypedInput(OnATerminal):
    WAITING = b"projectctl: waiting for standard input; Ctrl-D at the start of a line ends it\n"

    def run_typing(self, text, *arguments):
        """The status, output and errors of a command into which this text is typed."""
        terminal = Terminal()
        try:
            with subprocess.Popen([self.programs / "projectctl", *arguments], cwd=self.folder,
                                  stdin=terminal.theirs, stdout=subprocess.PIPE,
                                  stderr=subprocess.PIPE) as running:
                os.write(terminal.ours, text)
                output, errors = running.communicate(timeout=SECONDS_FOR_A_COMMAND)
        finally:
            terminal.close()
        return running.returncode, output, errors

    def test_a_command_says_that_it_waits(self):
        signature = self.run_projectctl("sign", "project", input=b"letter\n")
        (self.folder / "signature").write_text(signature)
        (self.folder / "letter").write_text("letter\n")
        end = b"\x04"
        for text, arguments, said in (
                (b"letter\n", ["verify", "project", signature], b"true\n"),
                (b"letter\n", ["verify", "project", signature, "-"], b"true\n"),
                (signature.encode() + b"\n",
                 ["verify", "project", "--signature-file", "-", "letter"], b"true\n"),
                (f"{signature}  letter\n".encode(), ["verify", "project", "--check", "-"],
                 b"letter: OK\n"),
                (signature.encode() + b"\n", ["convert", "-", "--to", "text"],
                 signature.encode() + b"\n"),
                (b"7\n", ["create", "new", "--from-scalar", "-"], b"")):
            with self.subTest(arguments):
                self.assertEqual(self.run_typing(text + end, *arguments), (0, said, self.WAITING))
        status, output, errors = self.run_typing(b"letter\n" + end, "sign", "project")
        self.assertEqual((status, errors), (0, self.WAITING))
        self.assertRegex(output, rb"\A\S{40,56}\n\Z")

    def test_a_command_does_not_wait_for_what_it_does_not_read(self):
        (self.folder / "letter").write_text("letter\n")
        for arguments in (["sign", "project", "letter"], ["show", "project"]):
            with self.subTest(arguments):
                status, _, errors = self.run_typing(b"", *arguments)
                self.assertEqual((status, errors), (0, b""))


class BinaryOutput(OnATerminal):
    def test_is_not_written_to_a_terminal(self):
        (self.folder / "letter").write_text("letter\n")
        signature = self.run_projectctl("sign", "project", "letter")
        for arguments, words in (
                (["convert", signature, "--to", "der"],
                 "DER is binary; redirect it to a file, or use --to hex"),
                (["digest", "letter"], "a digest is binary; redirect it to a file, or use --json")):
            terminal = Terminal()
            try:
                run = subprocess.run([self.programs / "projectctl", *arguments], cwd=self.folder,
                                     check=False, stdout=terminal.theirs, stderr=subprocess.PIPE,
                                     timeout=SECONDS_FOR_A_COMMAND)
            finally:
                shown = terminal.close()
            with self.subTest(arguments):
                self.assertEqual((run.returncode, shown), (2, b""))
                self.assertEqual(run.stderr.decode(),
                                 f"projectctl: standard output is a terminal, and {words}\n")
                self.assertNotEqual(self.output_of(*arguments), b"")


class LargeFiles(OnATerminal):
    def run_on_terminal(self, *arguments):
        terminal = Terminal()
        try:
            output = self.run_projectctl(*arguments, stderr=terminal.theirs)
        finally:
            shown = terminal.close()
        return output, shown

    def sparse_file(self, size, name="file"):
        with open(self.folder / name, "wb") as file:
            file.truncate(size)
        return name

    def assert_is_bar(self, shown):
        self.assertTrue(shown.endswith(END_OF_BAR), shown[-80:])
        bars = BAR.findall(shown)
        self.assertEqual(BAR.sub(b"", shown), END_OF_BAR, "nothing but bars and their removal")
        percentages = [int(percentage) for _, percentage in bars]
        self.assertEqual(percentages, sorted(set(percentages)), "it only grows")
        self.assertGreater(len(percentages), 2)
        self.assertLessEqual(percentages[-1], 100)
        for filled, percentage in bars:
            self.assertEqual(len(filled), int(percentage) * 40 // 100)

    def test_a_large_file_has_a_bar_on_a_terminal(self):
        file = self.sparse_file(LARGE_SIZE)
        signature, shown = self.run_on_terminal("sign", "project", file)
        self.assert_is_bar(shown)
        verdict, shown = self.run_on_terminal("verify", "project", signature, file)
        self.assertEqual(verdict, "true")
        self.assert_is_bar(shown)

    def test_a_file_of_64_mib_has_none(self):
        _, shown = self.run_on_terminal("sign", "project", self.sparse_file(QUIET_SIZE))
        self.assertEqual(shown, b"")

    def test_a_large_file_has_none_without_a_terminal(self):
        errors = self.folder / "errors"
        with open(errors, "wb") as stream:
            self.run_projectctl("sign", "project", self.sparse_file(LARGE_SIZE), stderr=stream)
        self.assertEqual(errors.read_bytes(), b"")

    def end_when_cut_meanwhile(self, command, name):
        """What a command ends with that reads a file of this name while it is cut."""
        self.sparse_file(24 * QUIET_SIZE, name)
        reading = subprocess.Popen([self.programs / "projectctl", *command], cwd=self.folder,
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        maps = Path(f"/proc/{reading.pid}/maps")
        while reading.poll() is None and str(self.folder / name) not in maps.read_text():
            time.sleep(0.01)
        self.sparse_file(1, name)
        output, errors = reading.communicate(timeout=SECONDS_FOR_A_COMMAND)
        return reading.returncode, output, errors

    def test_a_file_that_is_cut_meanwhile_is_named(self):
        name = "file\x1b[m"
        for command in (["sign", "project", name], ["digest", name],
                        ["explain", "--project", "project", "--file", name]):
            with self.subTest(command=command):
                self.assertEqual(self.end_when_cut_meanwhile(command, name),
                                 (2, b"", b"projectctl: file\\x1B[m: was cut while it was read\n"))

    def test_files_beside_one_that_is_cut_meanwhile_are_signed(self):
        for name in ("one", "two"):
            self.sparse_file(1, name)
        status, output, errors = self.end_when_cut_meanwhile(
            ["sign", "project", "one", "file", "two"], "file")
        self.assertEqual((status, errors), (2, b"projectctl: file: was cut while it was read\n"))
        self.assertRegex(output, rb"^\S+  one\n\S+  two\n$")

    def test_a_pipe_of_any_size_is_signed_in_the_same_memory(self):
        writing = subprocess.Popen(["head", "-c", str(LARGE_SIZE), "/dev/zero"],
                                   stdout=subprocess.PIPE)
        # Private memory, which the pages of a mapped file are not.
        limit = 16 << 20
        under_sanitizers = os.environ.get("SIGN_SANITIZED") == "1"
        signature = self.run_projectctl(
            "sign", "project", stdin=writing.stdout,
            preexec_fn=None if under_sanitizers
            else lambda: resource.setrlimit(resource.RLIMIT_DATA, (limit, limit)))
        writing.stdout.close()
        self.assertEqual(writing.wait(), 0)
        self.assertEqual(
            self.run_projectctl("verify", "project", signature, self.sparse_file(LARGE_SIZE)),
            "true")


if __name__ == "__main__":
    OnATerminal.programs = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
