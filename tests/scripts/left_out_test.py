"""Configures without a preset, and where tools are missing: the tests that take them are left out, and
told line by line.
"""

import re
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
# What configuring asks for; the assembler and linker are the compiler's.
NEEDED = ("cmake", "ninja", "c++", "g++", "as", "ld", "ar", "ranlib")
# Tests, and a tool that they are left out for.
LACKS = {
    "ProgramUnderValgrind": "valgrind",
    "ProjectctlOpens": "strace",
    "ProjectctlManual": "mandoc",
    "ProjectctlCompletionInBash": "bash",
    "ProjectctlCompletionInZsh": "zsh",
    "ProjectctlCompletionInFish": "fish",
    "ProjectctlInteroperability, ProjectctlGuides": "openssl",
    "CheckCommits, ReleaseFigures": "git",
    "ServedByLighttpd": "curl",
    "ServedExamples": "chromium",
    "Verifiers": "pkg-config",
}
QUICK = {"ProjectctlInteroperability, ProjectctlGuides", "ProjectctlCompletionInBash",
         "CheckCommits, ReleaseFigures", "ProgramHttpInterface"}


class LeftOut(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="sign-left-out.")
        self.addCleanup(temporary.cleanup)
        self.folder = Path(temporary.name)

    def configure(self, *options):
        """Configures with the tools in `bin` alone; gives what is left out, and why."""
        tools = self.folder / "bin"
        tools.mkdir()
        for name in NEEDED:
            (tools / name).symlink_to(shutil.which(name))
        build = self.folder / "build"
        run = subprocess.run(
            ["cmake", "--preset", "dev", "-B", build, *options], cwd=ROOT,
            env={"PATH": str(tools), "LC_ALL": "C"}, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        self.assertEqual(run.returncode, 0, run.stdout)
        lines = (build / "left-out.txt").read_text(encoding="utf-8").splitlines()
        for line in lines:
            self.assertIn(f"-- Left out: {line}\n", run.stdout)
            self.assertLessEqual(len(line), 110)
        return dict(re.fullmatch(r"(.*) \((.*)\)", line).groups() for line in lines)

    def test_without_a_preset_the_programs_are_optimised(self):
        subprocess.run(["cmake", "-B", self.folder, "-G", "Ninja"], cwd=ROOT, check=True,
                       stdout=subprocess.PIPE)
        commands = (self.folder / "compile_commands.json").read_text(encoding="utf-8")
        self.assertIn(" -O3 -DNDEBUG ", commands)

    def test_takes_a_compiler_and_tells_each_test_without_its_tools(self):
        left_out = self.configure()
        for tests, tool in LACKS.items():
            with self.subTest(tests):
                self.assertRegex(left_out.get(tests, ""), rf"^not installed: (.*, )?{tool}(, |$)")

    def test_without_python_the_tests_in_it_are_left_out(self):
        left_out = self.configure("-DCMAKE_DISABLE_FIND_PACKAGE_Python3=ON")
        self.assertEqual(left_out["all tests in Python"], "not installed: python3")
        self.assertEqual(left_out.keys(), {"all tests in Python", "ProgramUnderValgrind", "SecretSigning"})

    def test_leaves_the_slow_ones_out_of_the_quick_tests_whatever_is_installed(self):
        left_out = self.configure("-DSIGN_QUICK_TESTS=ON")
        for tests in LACKS.keys() - QUICK:
            with self.subTest(tests):
                self.assertEqual(left_out.get(tests), "not among the quick tests")
        for tests in QUICK & left_out.keys():
            with self.subTest(tests):
                self.assertIn("not installed", left_out[tests])


if __name__ == "__main__":
    unittest.main()
