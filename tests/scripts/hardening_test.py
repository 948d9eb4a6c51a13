"""What the compiler and the linker put into the built programs against mistakes in memory.

    hardening_test.py FOLDER     of a build; SIGN_PROGRAM_FOLDER names another
"""

import json
import os
import re
import subprocess
import sys
import unittest
from pathlib import Path

PROGRAMS = ["sign.cgi", "nph-sign.cgi", "limited", "projectctl"]
ROOT = Path(__file__).resolve().parents[2]
SOURCES = {str(source) for folder in ("core", "curve", "random", "project", "engine", "frontend",
                                      "launcher", "tools") for source in (ROOT / folder).rglob("*.cpp")}
FLAGS = ["-fstack-protector-strong", "-fstack-clash-protection", "-D_FORTIFY_SOURCE=3", "-fPIE"]


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True,
                          env={"PATH": os.defpath, "LC_ALL": "C"}).stdout


def sources_of(entry):
    """What one call of the compiler reads: a source, or several that CMake has put into one."""
    file = Path(entry["file"])
    if file.parent.name != "Unity":
        return {entry["file"]}
    return set(re.findall(r'^#include "(.+)"$', file.read_text(encoding="utf-8"), flags=re.MULTILINE))


class Hardening(unittest.TestCase):
    folder = None

    def of_each_program(self, *words):
        return [output_of(*words, self.folder / program) for program in PROGRAMS]

    def test_programs_start_without_a_loader_at_any_address(self):
        for text in self.of_each_program("readelf", "--file-header", "--segments", "--wide"):
            self.assertRegex(text, r"Type: +DYN \(Position-Independent Executable file\)")
            self.assertNotIn("INTERP", text)

    def test_no_memory_is_writable_and_executable(self):
        for text in self.of_each_program("readelf", "--segments", "--wide"):
            flags = re.findall(r"^ +(LOAD|GNU_STACK)(?: +0x[0-9a-f]+)+ +([RWE ]+?) +0x", text,
                               flags=re.MULTILINE)
            self.assertIn(("GNU_STACK", "RW"), flags)
            self.assertGreaterEqual(len(flags), 4)
            for _, permissions in flags:
                self.assertFalse({"W", "E"} <= set(permissions), text)

    def test_relocated_data_is_read_only_before_the_first_statement(self):
        for text in self.of_each_program("readelf", "--segments", "--dynamic", "--wide"):
            self.assertIn("GNU_RELRO", text)
            self.assertRegex(text, r"\(FLAGS_1\) +Flags: NOW PIE")
            self.assertNotIn("TEXTREL", text)

    def test_a_function_with_a_buffer_checks_its_frame(self):
        program = self.folder / "sign.cgi"
        symbols = re.findall(r"\S*handleGenerateSignature\S*", output_of("nm", program))
        self.assertTrue(symbols)
        code = output_of("objdump", f"--disassemble={symbols[0]}", program)
        self.assertIn("%fs:0x28", code)
        self.assertIn("__stack_chk_fail", code)

    def test_every_source_is_compiled_with_the_flags(self):
        commands = json.loads((self.folder / "compile_commands.json").read_text(encoding="utf-8"))
        ours = [entry for entry in commands if sources_of(entry) & SOURCES]
        self.assertEqual(SOURCES - set().union(*map(sources_of, ours)), set())
        for entry in ours:
            for flag in FLAGS:
                self.assertIn(f" {flag} ", entry["command"], entry["file"])


if __name__ == "__main__":
    Hardening.folder = Path(os.environ.get("SIGN_PROGRAM_FOLDER") or sys.argv[1])
    unittest.main(argv=sys.argv[:1])
