#!/usr/bin/env python3
"""Checks the messages of the commits since the last release.

    scripts/check_commits.py [ROOT]

The last release is the newest that CHANGELOG.md gives a commit for. Prints one line for each breach
and exits 1 if there is any. The rules:

- The subject is `area: summary`, of at most 72 characters, without a full stop at its end, and the
  summary begins with a verb in the imperative or a noun: not in the past, not as a participle.
- An empty line and a body follow.
"""

import re
import subprocess
import sys
from pathlib import Path

LONGEST_SUBJECT = 72
RELEASE = re.compile(r"^## \d+\.\d+\.\d+, \d{4}-\d\d-\d\d \(([0-9a-f]{7,40})\)$", re.MULTILINE)
SUBJECT = re.compile(r"[a-z][a-z0-9_./-]*(, [a-z][a-z0-9_./-]*)*: \S")
# Words that look like one and are none.
NO_PARTICIPLES = {"bring", "embed", "shed"}


def git(root, *words):
    """What git prints, or nothing if it refuses."""
    end = subprocess.run(["git", "-C", root, *words], capture_output=True, text=True)
    return end.stdout if end.returncode == 0 else None


def breaches_of(message):
    subject, _, rest = message.partition("\n")
    if len(subject) > LONGEST_SUBJECT:
        yield f"the subject has {len(subject)} characters, more than {LONGEST_SUBJECT}"
    if not SUBJECT.match(subject):
        yield "the subject is not 'area: summary'"
    elif re.search(r"(?<!e)ed$|ing$", subject.split(": ", 1)[1].split()[0].rstrip(",")):
        if subject.split(": ", 1)[1].split()[0] not in NO_PARTICIPLES:
            yield "the summary is not in the imperative"
    if subject.endswith("."):
        yield "the subject ends with a full stop"
    if not rest.startswith("\n") or not rest.strip():
        yield "there is no body behind an empty line"


def main(root):
    released = RELEASE.search(Path(root, "CHANGELOG.md").read_text(encoding="utf-8"))
    if released is None:
        print("CHANGELOG.md: names no commit of a release, as in '## 1.0.0, 2026-11-21 (08f48b3)'")
        return 1
    if git(root, "rev-parse", "--git-dir") is None:
        return 0  # an archive has no commits
    # A shallow clone may not reach back to the release: then all that it has count.
    known = git(root, "cat-file", "-e", released[1] + "^{commit}") is not None
    commits = git(root, "log", "-z", "--no-merges", "--format=%h %B",
                  f"{released[1]}..HEAD" if known else "HEAD")
    found = 0
    for commit in filter(None, commits.split("\0")):
        name, _, message = commit.partition(" ")
        for breach in breaches_of(message):
            print(f"commit {name}: {breach}: {message.splitlines()[0]}")
            found += 1
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1] if len(sys.argv) > 1 else Path(__file__).resolve().parents[1]))
