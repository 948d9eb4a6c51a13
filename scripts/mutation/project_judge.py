"""Judges mutants by this project's own tests, built by CMake and ninja.

Cheap tests come first: of every executable the tests that take little time, in the order of the
layers, then the long ones, and then the scripts that run the programs. The first failure ends it.
"""

import hashlib
import json
import re
import time
from dataclasses import dataclass

from mutation import commands
from mutation.judged_folders import (GROUPS, PROGRAM_TESTS, SCRIPTS, TESTS, folder_of,
                                     program_of)
from mutation.verdict import KILLED, NOT_COMPILED, REFUSED, SAME_OBJECT, SURVIVED, Verdict

CONFIGURATION = (
    "-DCMAKE_BUILD_TYPE=Debug",
    "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -g0 -D_GLIBCXX_ASSERTIONS",
    "-DSIGN_TESTS=ON",
)
LONG_TEST = 0.25  # seconds
QUICK = (0,)  # the first of the two stages of an executable
QUICK_AND_LONG = (0, 1)
MEMORY = 6 << 30  # bytes; the tests need less than half of it
BUILD_SECONDS = 3600
TIMES_PLAIN = 10
RUN = re.compile(r"^\[ RUN      \] (\S+)", re.MULTILINE)
FAILED = re.compile(r"^\[  FAILED  \] ([^\s,]+)", re.MULTILINE)


@dataclass(frozen=True)
class Stage:
    """Some of the tests of an executable."""

    target: str
    filter: str
    seconds: float  # how long they take on the original
    longest: float  # of them


class ProjectJudge:
    def __init__(self, tree, build, folders, seed, paces, report):
        self.tree = tree
        self.build = build
        self.folders = folders
        self.seed = seed
        self.paces = paces
        self.report = report
        self.stages = {}  # target: its quick tests and its long ones
        self.scripts = {}  # test of ctest: the seconds that it takes on the original
        self.objects = {}  # program: the digest of its objects without a mutant

    def prepare(self):
        """Builds what the mutants of the folders need, and times the tests on the original."""
        self._check(["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", *CONFIGURATION])
        targets = {target for folder in self.folders for target in TESTS[folder]}
        self._check(self._ninja(*sorted(targets)))
        for target in sorted(targets):
            self.stages[target] = self._timed(target)
            for pace in self.paces:
                stage = self.stages[target][pace]
                killer = self._killer(stage) if stage.filter else ""
                if killer:
                    raise RuntimeError(f"fails without any mutant: {killer}")
        for program in {program_of(folder) for folder in self.folders}:
            self._check(self._ninja(program))
            self.objects[program] = self._object_digest(program)
        for script in self._scripts(*self.folders):
            start = time.monotonic()
            if self._script_fails(script, BUILD_SECONDS):
                raise RuntimeError(f"fails without any mutant: {script}")
            self.scripts[script] = time.monotonic() - start

    def judge(self, mutant):
        folder = folder_of(mutant.file)
        program = program_of(folder)
        compiled = self._run(self._ninja(program), BUILD_SECONDS)
        if compiled.status != 0:
            is_ours = "static assertion failed" in compiled.output
            return Verdict(REFUSED, "static_assert") if is_ours else Verdict(NOT_COMPILED)
        if self._object_digest(program) == self.objects[program]:
            return Verdict(SAME_OBJECT)
        for pace in self.paces:
            for target in TESTS[folder]:
                stage = self.stages[target][pace]
                if not stage.filter:
                    continue
                if self._run(self._ninja(target), BUILD_SECONDS).status != 0:
                    return Verdict(NOT_COMPILED, f"{target} with it")
                killer = self._killer(stage)
                if killer:
                    return Verdict(KILLED, killer)
        for script in self._scripts(folder):
            if self._script_fails(script, self.scripts[script] * TIMES_PLAIN + 2):
                return Verdict(KILLED, script)
        return Verdict(SURVIVED)

    def _scripts(self, *folders):
        if QUICK_AND_LONG != self.paces:
            return []
        return [script for folder in folders for script in SCRIPTS.get(folder, ())]

    def _script_fails(self, script, seconds):
        command = ["ctest", "--test-dir", self.build, "--no-tests=error", "-R", f"^{script}$"]
        return self._run(command, seconds).status != 0

    def _killer(self, stage):
        """What fails in the stage, or nothing."""
        run = self._run_tests(
            stage.target,
            [f"--gtest_filter={stage.filter}", "--gtest_fail_fast"],
            seconds=stage.seconds * TIMES_PLAIN + 2,
            silence=stage.longest * TIMES_PLAIN + 2,
        )
        if run.status == 0:
            return ""
        test = (FAILED.findall(run.output) or RUN.findall(run.output) or ["at its start"])[-1]
        return f"{stage.target} {test}{' (time)' if run.status is None else ''}"

    def _timed(self, target):
        """The quick and the long tests of an executable, as two stages.

        The times of tests that an earlier run had as well are taken from there.
        """
        file = self.build / f"{target}.json"
        known = json.loads(file.read_text(encoding="utf-8")) if file.exists() else {}
        names = self._tests_of(target)
        times = {name: known[name] for name in names if name in known}
        missing = [name for name in names if name not in known]
        if missing:
            times |= self._measured(target, missing)
            file.write_text(json.dumps(times, indent=0), encoding="utf-8")
        self.report(f"{target}: {len(times)} tests, {sum(times.values()):.1f} s")
        long_tests = {name: times[name] for name in times if times[name] > LONG_TEST}
        joined = ":".join(long_tests)
        long_time = sum(long_tests.values())
        return (
            Stage(target, f"-{joined}", sum(times.values()) - long_time, LONG_TEST),
            Stage(target, joined, long_time, max(long_tests.values(), default=0)),
        )

    def _tests_of(self, target):
        run = self._run_tests(target, ["--gtest_list_tests"], seconds=BUILD_SECONDS)
        names = []
        suite = ""
        for line in run.output.splitlines():
            word = line.partition("#")[0].strip()
            if not line.startswith(" "):
                suite = word
            elif suite:
                names.append(suite + word)
        return names

    def _measured(self, target, names):
        file = self.build / f"{target}-measured.json"
        options = [f"--gtest_filter={':'.join(names)}", f"--gtest_output=json:{file}"]
        run = self._run_tests(target, options, seconds=BUILD_SECONDS)
        if run.status != 0:
            raise RuntimeError(f"{target} fails without any mutant:\n{run.output}")
        suites = json.loads(file.read_text(encoding="utf-8"))["testsuites"]
        return {
            f"{suite['name']}.{test['name']}": float(test["time"].rstrip("s"))
            for suite in suites
            for test in suite["testsuite"]
        }

    def _run_tests(self, target, options, *, seconds, silence=None):
        return commands.run(
            [f"tests/{target}", *options],
            folder=self.build,
            seconds=seconds,
            silence=silence,
            environment={"SIGN_TEST_SEED": str(self.seed)},
            # A request may announce any length and gets address space for it.
            memory=None if target == PROGRAM_TESTS else MEMORY,
        )

    def _object_digest(self, program):
        """One digest of everything that the compiler makes of the folders of a program."""
        digest = hashlib.sha256()
        for folder in GROUPS[program]:
            for file in sorted((self.build / folder).rglob("*.o")):
                digest.update(file.read_bytes())
        return digest.hexdigest()

    def _ninja(self, *targets):
        return ["ninja", "-C", self.build, "-j1", *targets]

    def _run(self, command, seconds):
        return commands.run(command, folder=self.tree, seconds=seconds)

    def _check(self, command):
        run = self._run(command, BUILD_SECONDS)
        if run.status != 0:
            raise RuntimeError(f"fails without any mutant: {command}\n{run.output}")
