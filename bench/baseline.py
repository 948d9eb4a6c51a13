"""Builds sign.cgi of the baseline commit of bounds.toml, once.

    baseline.py FOLDER    of all baselines
"""

import subprocess
import sys
from pathlib import Path

from bounds import baseline_commit

ROOT = Path(__file__).resolve().parents[1]


def program(folder):
    return folder / baseline_commit() / "build" / "release" / "sign.cgi"


def build(folder):
    commit = baseline_commit()
    source = folder / commit
    archive = subprocess.run(["git", "archive", "--format=tar", commit], cwd=ROOT, check=False,
                             stdout=subprocess.PIPE)
    if archive.returncode != 0:
        sys.exit(f"baseline: commit {commit} is not in this repository: fetch its whole history")
    source.mkdir(parents=True, exist_ok=True)
    subprocess.run(["tar", "-x", "-C", source], input=archive.stdout, check=True)
    subprocess.run(["cmake", "--preset", "release"], cwd=source, check=True)
    subprocess.run(["cmake", "--build", "--preset", "release", "--target", "sign_cgi"], cwd=source,
                   check=True)


if __name__ == "__main__":
    FOLDER = Path(sys.argv[1]).resolve()
    if not program(FOLDER).exists():
        build(FOLDER)
