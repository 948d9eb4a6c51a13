"""Judges mutants by this project's own tests, built by CMake and ninja.

Cheap tests come first: of every executable the tests that take little time, in the order of the
layers, and only then the long ones. The first failure ends it.
"""

import hashlib
import json
import re
from dataclasses import dataclass

from mutation import commands
from mutation.verdict import KILLED, NOT_COMPILED, REFUSED, SAME_OBJECT, SURVIVED, Verdict

LIBRARIES = ("core", "curve", "random", "project", "engine", "frontend")
# The executables that meet the code of a folder, its own first.
ABOVE = {
    "core": ("random", "project", "curve", "engine", "frontend"),
    "curve": ("project", "engine", "frontend"),
    "random": ("curve", "engine", "frontend"),
    "project": ("engine", "frontend"),
    "engine": ("frontend",),
    "frontend": (),
}
PROGRAM_TESTS = "program_tests"
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


def executables_of(folder):
    """The targets whose tests meet the code of `folder`, apart from the program's."""
    targets = [f"unit_{folder}"]
    if folder == "core":
        targets.append("unit_core_host")
    return targets + [f"unit_{above}" for above in ABOVE[folder]]


class ProjectJudge:
    def __init__(self, tree, build, folders, seed, paces, report):
        self.tree = tree
        self.build = build
        self.folders = folders
        self.seed = seed
        self.paces = paces
        self.report = report
        self.stages = {}  # target: its quick tests and its long ones
        self.objects = None

    def prepare(self):
        """Builds what the mutants of the folders need, and times the tests on the original."""
        self._check(["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", *CONFIGURATION])
        targets = {target for folder in self.folders for target in executables_of(folder)}
        targets.add(PROGRAM_TESTS)
        self._check(self._ninja(*sorted(targets)))
        for target in sorted(targets):
            self.stages[target] = self._timed(target)
            for pace in self.paces:
                stage = self.stages[target][pace]
                killer = self._killer(stage) if stage.filter else ""
                if killer:
                    raise RuntimeError(f"fails without any mutant: {killer}")
        self._check(self._ninja(*self._libraries()))
        self.objects = self._object_digest()

    def judge(self, mutant):
        compiled = self._run(self._ninja(*self._libraries()), BUILD_SECONDS)
        if compiled.status != 0:
            is_ours = "static assertion failed" in compiled.output
            return Verdict(REFUSED, "static_assert") if is_ours else Verdict(NOT_COMPILED)
        if self._object_digest() == self.objects:
            return Verdict(SAME_OBJECT)
        targets = [*executables_of(mutant.file.split("/")[0]), PROGRAM_TESTS]
        for pace in self.paces:
            for target in targets:
                stage = self.stages[target][pace]
                if not stage.filter:
                    continue
                if self._run(self._ninja(target), BUILD_SECONDS).status != 0:
                    return Verdict(NOT_COMPILED, f"{target} with it")
                killer = self._killer(stage)
                if killer:
                    return Verdict(KILLED, killer)
        return Verdict(SURVIVED)

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

    def _libraries(self):
        return (*(f"sign_{folder}" for folder in LIBRARIES), self._entry_object())

    @staticmethod
    def _entry_object():
        return "frontend/CMakeFiles/sign_cgi.dir/main.cpp.o"

    def _object_digest(self):
        """One digest of everything that the compiler makes of the six folders."""
        digest = hashlib.sha256()
        for folder in LIBRARIES:
            for file in sorted((self.build / folder / "CMakeFiles").glob(f"sign_{folder}.dir/*.o")):
                digest.update(file.read_bytes())
        digest.update((self.build / self._entry_object()).read_bytes())
        return digest.hexdigest()

    def _ninja(self, *targets):
        return ["ninja", "-C", self.build, "-j1", *targets]

    def _run(self, command, seconds):
        return commands.run(command, folder=self.tree, seconds=seconds)

    def _check(self, command):
        run = self._run(command, BUILD_SECONDS)
        if run.status != 0:
            raise RuntimeError(f"fails without any mutant: {command}\n{run.output}")
