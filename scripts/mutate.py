#!/usr/bin/env python3
"""Tests the tests: changes the program in many small ways, one at a time, and runs them on each.

    scripts/mutate.py [--count N] [--seed N]     judge a sample of all mutants
    scripts/mutate.py --list                     show the sample, judge nothing
    scripts/mutate.py --folders tools            of other folders than the program's six
    scripts/mutate.py --resume --seed N          go on where the last run ended, survivors included;
                                                 begin anew if a source has changed since
    scripts/mutate.py --mutant NAME...           judge these again
    scripts/mutate.py --only FILE...             take mutants of these files alone

A mutant is killed when a test fails on it. One that survives lacks a test, or is equivalent: no
input can tell it from the original. tests/mutation/equivalent.txt records those, each with the
reason. Mutants that do not compile, or that the compiler makes the same object code of, do not
count. Works on copies below build/mutate, where a report tells of every mutant; the tree itself is
only read. Exits 1 when the share of the killed is below the threshold, or too few count.
"""

import argparse
import queue
import random
import re
import sys
import threading
import time
from collections import Counter
from pathlib import Path

from mutation import trees
from mutation.equivalents import read_equivalents
from mutation.judged_folders import DEFAULT_FOLDERS, FOLDERS, folder_of
from mutation.mutants import mutants_of
from mutation.project_judge import QUICK, QUICK_AND_LONG, ProjectJudge
from mutation.sample import choose
from mutation.verdict import EQUIVALENT, OUTCOMES, SURVIVED, Verdict, counted, killed_share

ROOT = Path(__file__).resolve().parents[1]
VERDICT_LINE = re.compile(
    rf"\d+/\d+ (?P<outcome>{'|'.join(OUTCOMES)})(?:: (?P<by>.*?))? \[(?P<name>\w+) .*"
)


def arguments(words):
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter
    )
    parser.add_argument("--count", type=int, default=300, help="mutants in the sample")
    parser.add_argument("--seed", type=int, help="of the sample and of the tests")
    parser.add_argument("--threshold", type=float, default=97, help="per cent to be killed")
    parser.add_argument("--least", type=int, default=0, help="mutants that have to count")
    parser.add_argument("--jobs", type=int, default=1, help="mutants judged at a time")
    parser.add_argument("--only", nargs="+", metavar="FILE", help="these sources alone")
    parser.add_argument("--mutant", nargs="+", metavar="NAME", help="these mutants alone")
    parser.add_argument("--list", action="store_true", help="show the sample and end")
    parser.add_argument("--quick", action="store_true", help="leave out tests that take long")
    parser.add_argument("--resume", action="store_true", help="keep what the last report settled")
    parser.add_argument("--folders", nargs="+", choices=FOLDERS, default=DEFAULT_FOLDERS,
                        metavar="FOLDER", help=f"where the sources are, of {', '.join(FOLDERS)}")
    return parser.parse_args(words)


def sources_of(options):
    """The text of every source by its name."""
    files = sorted(
        file
        for folder in options.folders
        for pattern in ("*.cpp", "*.h")
        for file in (ROOT / folder).rglob(pattern)
    )
    names = {file.relative_to(ROOT).as_posix(): file for file in files}
    for name in options.only or ():
        if name not in names:
            sys.exit(f"mutate.py: no source {name}")
    wanted = options.only or names
    return {name: names[name].read_text(encoding="utf-8") for name in names if name in wanted}


def recorded_reasons(options, mutants):
    """The equivalent mutants on record; an entry that fits no mutant ends the run."""
    file = ROOT / "tests" / "mutation" / "equivalent.txt"
    try:
        reasons = read_equivalents(file.read_text(encoding="utf-8")) if file.exists() else {}
    except ValueError as error:
        sys.exit(f"mutate.py: {file.name}: {error}")
    known = {mutant.key for mutant in mutants}
    elsewhere = set(FOLDERS) - set(options.folders)
    stale = [key for key in reasons if key not in known and folder_of(key[0]) not in elsewhere]
    if stale and not options.only:
        sys.exit("\n".join(f"mutate.py: {file.name}: no such mutant: {key}" for key in stale))
    return reasons


def selected(options, mutants):
    if options.mutant:
        chosen = [mutant for mutant in mutants if mutant.name in options.mutant]
        if len(chosen) != len(set(options.mutant)):
            sys.exit("mutate.py: not every name is one of a mutant")
        return chosen
    return choose(mutants, options.count, options.seed)


def description(mutant, source):
    old = " ".join(source[mutant.start : mutant.end].split())
    new = " ".join(mutant.replacement.split())
    return f"{mutant.name} {mutant.file}:{mutant.line}: {mutant.kind}: `{old}` -> `{new}`"


class Report:
    """Every verdict as it comes, on the screen and in a file."""

    def __init__(self, file, total):
        self.file = file
        self.total = total
        self.lock = threading.Lock()
        self.verdicts = []

    def write(self, line):
        with self.lock:
            print(line, flush=True)
            self.file.write(line + "\n")
            self.file.flush()

    def add(self, text, verdict, seconds):
        self.verdicts.append(verdict)
        by = f": {verdict.by}" if verdict.by else ""
        place = f"{len(self.verdicts)}/{self.total}"
        self.write(f"{place} {verdict.outcome}{by} [{text}] {seconds:.1f} s")


def settled(file, sources):
    """The verdicts of a report, by the names of the mutants; survivors are to be judged again.

    None of them holds when the report is of other sources.
    """
    verdicts = {}
    first, *lines = file.read_text(encoding="utf-8").splitlines() if file.exists() else ("",)
    for line in lines if first.endswith(sources) else ():
        match = VERDICT_LINE.fullmatch(line)
        if match and match["outcome"] not in (SURVIVED, EQUIVALENT):
            verdicts[match["name"]] = Verdict(match["outcome"], match["by"] or "")
    return verdicts


def judge_all(judge, tree, groups, sources, reasons, report):
    """Takes the mutants of one file after the other from `groups` until none is left."""
    while True:
        try:
            group = groups.get_nowait()
        except queue.Empty:
            return
        source = sources[group[0].file]
        file = tree / group[0].file
        for mutant in group:
            start = time.monotonic()
            file.write_text(mutant.applied(source), encoding="utf-8")
            verdict = judge.judge(mutant)
            if verdict.outcome == SURVIVED and mutant.key in reasons:
                verdict = Verdict(EQUIVALENT, reasons[mutant.key])
            report.add(description(mutant, source), verdict, time.monotonic() - start)
        file.write_text(source, encoding="utf-8")


def run_jobs(options, chosen, sources, reasons, report, place):
    groups = queue.Queue()
    # A header goes last: with it, everything that includes it is built anew.
    names = {mutant.file for mutant in chosen}
    for name in sorted(names, key=lambda name: (name.endswith(".h"), name)):
        groups.put([mutant for mutant in chosen if mutant.file == name])
    folders = {folder_of(mutant.file) for mutant in chosen}
    failures = []

    def work(number):
        suffix = "" if number == 1 else f"-{number}"
        tree = place / f"tree{suffix}"
        trees.update(ROOT, tree)
        paces = QUICK if options.quick else QUICK_AND_LONG
        judge = ProjectJudge(tree, place / f"build{suffix}", folders, options.seed, paces,
                             report.write)
        try:
            judge.prepare()
            judge_all(judge, tree, groups, sources, reasons, report)
        except Exception as error:
            failures.append(error)

    threads = [threading.Thread(target=work, args=(i + 1,)) for i in range(options.jobs)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    if failures:
        raise failures[0]


def report_of(place, folders):
    """A file for each choice of folders, so that runs of several can be resumed."""
    names = "" if tuple(folders) == DEFAULT_FOLDERS else "".join(f"-{name}" for name in folders)
    return place / f"report{names}.txt"


def main(words=None):
    options = arguments(words)
    if options.seed is None:
        options.seed = random.SystemRandom().randrange(1 << 32)
    sources = sources_of(options)
    mutants = [mutant for name in sources for mutant in mutants_of(name, sources[name])]
    reasons = recorded_reasons(options, mutants)
    chosen = selected(options, mutants)
    print(f"seed {options.seed}: {len(chosen)} of {len(mutants)} mutants of {len(sources)} files")
    if options.list:
        for mutant in chosen:
            print(description(mutant, sources[mutant.file]))
        return 0

    place = ROOT / "build" / "mutate"
    place.mkdir(parents=True, exist_ok=True)
    report_file = report_of(place, options.folders)
    tree = f"sources {trees.digest(ROOT)}"
    known = settled(report_file, tree) if options.resume else {}
    with open(report_file, "w", encoding="utf-8") as file:
        report = Report(file, len(chosen))
        report.write(f"seed {options.seed}, {len(chosen)} of {len(mutants)} mutants, {tree}")
        for mutant in chosen:
            if mutant.name in known:
                report.add(description(mutant, sources[mutant.file]), known[mutant.name], 0)
        open_ones = [mutant for mutant in chosen if mutant.name not in known]
        run_jobs(options, open_ones, sources, reasons, report, place)
        counts = Counter(verdict.outcome for verdict in report.verdicts)
        share = 100 * killed_share(report.verdicts)
        report.write(", ".join(f"{counts[outcome]} {outcome}" for outcome in OUTCOMES))
        report.write(f"{share:.2f} % killed, wanted {options.threshold:g} %")
        is_enough = counted(report.verdicts) >= options.least
        if not is_enough:
            report.write(f"{counted(report.verdicts)} count, wanted {options.least}")
    return 0 if share >= options.threshold and is_enough else 1


if __name__ == "__main__":
    sys.exit(main())
