"""Reads what llvm-cov exported and judges the coverage of the program and of the tools.

    coverage_report.py FILE.json
    coverage_report.py --tests      the test programs to run for it

The table under "Branches that do not run" in docs/testing.md names each side of a condition that no
test takes, by file, code and side. Exits 1 when a line does not run, when less than 95 per cent of
the branches of a folder do, or when that table is not right.
"""

import json
import re
import sys
from collections import defaultdict
from pathlib import Path

from mutation.judged_folders import FOLDERS, TESTS, folder_of

ROOT = Path(__file__).resolve().parents[1]
BRANCHES_TO_RUN = 0.95
ROW = re.compile(r"^\| `([^`]+)` \| `([^`]+)` \| (true|false|both) \|", re.MULTILINE)


def files_of(export):
    """The exported files of the judged folders by their path in the tree."""
    for entry in export["data"][0]["files"]:
        path = Path(entry["filename"]).resolve()  # a compiler's cache leaves ".." in it
        if path.is_relative_to(ROOT) and path.relative_to(ROOT).parts[0] in FOLDERS:
            yield path.relative_to(ROOT), entry


def sides_that_do_not_run(path, entry):
    """The code of each condition of which a side never ran, in any instance of a template."""
    lines = (ROOT / path).read_text(encoding="utf-8").splitlines()
    counts = defaultdict(lambda: [0, 0])
    for line, column, end_line, end_column, taken, passed, *_ in entry["branches"]:
        code = lines[line - 1][column - 1:end_column - 1 if end_line == line else None]
        for side, count in enumerate((taken, passed)):
            counts[(line, column, code)][side] += count
    for (_, _, code), (taken, passed) in sorted(counts.items()):
        if taken == 0 or passed == 0:
            yield code, "both" if taken == passed else "true" if taken == 0 else "false"


def main(export_file):
    export = json.loads(Path(export_file).read_text(encoding="utf-8"))
    totals = {(folder, kind): [0, 0] for folder in FOLDERS for kind in ("lines", "branches")}
    missed = set()
    for path, entry in files_of(export):
        for kind in ("lines", "branches"):
            total = totals[folder_of(str(path)), kind]
            total[0] += entry["summary"][kind]["covered"]
            total[1] += entry["summary"][kind]["count"]
        if entry["summary"]["lines"]["covered"] < entry["summary"]["lines"]["count"]:
            print(f"{path}: lines that do not run")
        missed |= {(str(path), code, side) for code, side in sides_that_do_not_run(path, entry)}
    good = True
    for folder in FOLDERS:
        lines, all_lines = totals[folder, "lines"]
        branches, all_branches = totals[folder, "branches"]
        print(f"{folder}: {lines} of {all_lines} lines, {branches} of {all_branches} branches")
        good &= 0 < all_lines == lines and branches >= BRANCHES_TO_RUN * all_branches

    told = set(ROW.findall((ROOT / "docs" / "testing.md").read_text(encoding="utf-8")))
    for path, code, side in sorted(missed - told):
        print(f"not in docs/testing.md: {path}: {code}: {side}")
    for path, code, side in sorted(told - missed):
        print(f"runs, but docs/testing.md has it: {path}: {code}: {side}")
    return 0 if good and missed == told else 1


if __name__ == "__main__":
    if sys.argv[1:] == ["--tests"]:
        print("\n".join(dict.fromkeys(test for tests in TESTS.values() for test in tests)))
    else:
        sys.exit(main(sys.argv[1]))
