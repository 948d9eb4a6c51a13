"""Judges mutants by two shell commands: one that builds, one that tests."""

from mutation import commands
from mutation.verdict import KILLED, NOT_COMPILED, SURVIVED, Verdict


class CommandJudge:
    def __init__(self, tree, build, test, seconds):
        self.tree = tree
        self.build = build
        self.test = test
        self.seconds = seconds

    def prepare(self):
        for command in (self.build, self.test):
            if self._run(command).status != 0:
                raise RuntimeError(f"fails without any mutant: {command}")

    def judge(self, mutant):
        if self._run(self.build).status != 0:
            return Verdict(NOT_COMPILED)
        run = self._run(self.test)
        if run.status == 0:
            return Verdict(SURVIVED)
        return Verdict(KILLED, "time" if run.status is None else "test")

    def _run(self, command):
        return commands.run(["sh", "-c", command], folder=self.tree, seconds=self.seconds)
