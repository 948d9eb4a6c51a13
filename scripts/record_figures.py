"""Puts the figures of a check into the table of docs/testing.md.

    record_figures.py CHECK FIGURES SEED      "-" for a check without a seed

The row of the check is replaced, or added behind the others. The commit is that of the tree.
"""

import re
import subprocess
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
DOCUMENT = ROOT / "docs" / "testing.md"
HEAD = "| Check | Figures | Commit | Seed |\n|---|---|---|---|\n"


def with_row(text, check, figures, commit, seed):
    before, head, after = text.partition(HEAD)
    if not head:
        raise ValueError(f"{DOCUMENT} has no table of figures")
    table = re.match(r"(?:\|.*\n)*", after)[0]
    row = f"| {check} | {figures} | {commit} | {seed} |\n"
    old = re.search(rf"^\| {re.escape(check)} \|.*\n", table, flags=re.MULTILINE)
    changed = table.replace(old[0], row) if old else table + row
    return before + head + changed + after[len(table):]


def git(root, *words):
    return subprocess.run(["git", *words], cwd=root, check=True, capture_output=True,
                          text=True).stdout.strip()


def commit_of(root):
    """The commit, with a "+" when anything in the tree, but for the document itself, is another."""
    others = git(root, "status", "--porcelain", "--", ".",
                 f":(exclude){DOCUMENT.relative_to(ROOT)}")
    return git(root, "rev-parse", "--short=10", "HEAD") + ("+" if others else "")


def main(check, figures, seed):
    commit = commit_of(ROOT)
    text = DOCUMENT.read_text(encoding="utf-8")
    DOCUMENT.write_text(with_row(text, check, figures, commit, seed), encoding="utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
