"""Reads what llvm-cov exported and judges the coverage of the program and of the tools.

    coverage_report.py FILE.json
    coverage_report.py --tests      the test programs to run for it

The branches are the sides of conditions, those of a template once for all its instances. They are
not those of conditions in what core::verify is given: their other sides end the process.

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
from mutation.tokens import calls_of, code_tokens

ROOT = Path(__file__).resolve().parents[1]
BRANCHES_TO_RUN = 0.95
ROW = re.compile(r"^\| `([^`]+)` \| `([^`]+)` \| (true|false|both) \|", re.MULTILINE)


def files_of(export):
    """The exported files of the judged folders by their path in the tree."""
    for entry in export["data"][0]["files"]:
        path = Path(entry["filename"]).resolve()  # a compiler's cache leaves ".." in it
        if path.is_relative_to(ROOT) and path.relative_to(ROOT).parts[0] in FOLDERS:
            yield path.relative_to(ROOT), entry


def verified(lines):
    """The first and the last place, as line and column, of each call of core::verify."""
    text = "\n".join(lines)
    tokens = code_tokens(text)
    for first, last in calls_of(("verify",), tokens):
        yield place_of(text, tokens[first].start), place_of(text, tokens[last].start)


def place_of(text, offset):
    return text.count("\n", 0, offset) + 1, offset - text.rfind("\n", 0, offset)


def sides_of(path, entry):
    """The code of each condition with how often each side ran, in all instances of a template."""
    lines = (ROOT / path).read_text(encoding="utf-8").splitlines()
    left_out = list(verified(lines))
    counts = defaultdict(lambda: [0, 0])
    for line, column, end_line, end_column, taken, passed, *_ in entry["branches"]:
        if any(first < (line, column) < last for first, last in left_out):
            continue
        code = lines[line - 1][column - 1:end_column - 1 if end_line == line else None]
        for side, count in enumerate((taken, passed)):
            counts[(line, column, code)][side] += count
    return [(code, taken, passed) for (_, _, code), (taken, passed) in sorted(counts.items())]


def main(export_file):
    export = json.loads(Path(export_file).read_text(encoding="utf-8"))
    totals = {(folder, kind): [0, 0] for folder in FOLDERS for kind in ("lines", "branches")}
    missed = set()
    for path, entry in files_of(export):
        folder = folder_of(str(path))
        lines = entry["summary"]["lines"]
        totals[folder, "lines"][0] += lines["covered"]
        totals[folder, "lines"][1] += lines["count"]
        if lines["covered"] < lines["count"]:
            print(f"{path}: lines that do not run")
        for code, taken, passed in sides_of(path, entry):
            totals[folder, "branches"][0] += (taken > 0) + (passed > 0)
            totals[folder, "branches"][1] += 2
            if taken == 0 or passed == 0:
                side = "both" if taken == passed else "true" if taken == 0 else "false"
                missed.add((str(path), code, side))
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
