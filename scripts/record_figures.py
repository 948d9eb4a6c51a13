"""Runs the checks before a release and writes their figures: see scripts/check-release.sh."""

import argparse
import os
import secrets
import subprocess
import sys
from pathlib import Path

from release import page, records
from release.check import LONG, SHORT, chosen
from release.checks import CHECKS

ROOT = Path(__file__).resolve().parents[1]
PURPOSES = ("build", "test", "suite", "clang", "coverage", "lint", "bench")


def arguments():
    parser = argparse.ArgumentParser(prog="check-release.sh")
    parser.add_argument("--short", action="store_const", const=SHORT, default=LONG, dest="run")
    parser.add_argument("--write", action="store_true")
    parser.add_argument("checks", nargs="*", metavar="CHECK")
    options = parser.parse_args()
    if options.write and options.checks:
        parser.error("--write takes the records of all checks")
    try:
        options.chosen = chosen(CHECKS, options.checks)
        options.seed = int(os.environ.get("SIGN_TEST_SEED") or secrets.randbits(30))
    except ValueError as error:
        parser.error(str(error))
    return options


def write_page(run):
    held = records.all_held(ROOT, CHECKS, run)
    records.written_whole(ROOT / page.PAGE, page.rendered(held))
    print(f"{page.PAGE}: {len(held)} checks of commit {held[0].commit}")


def main():
    options = arguments()
    try:
        if not options.write:
            subprocess.run([ROOT / "scripts" / "install-packages.sh", *PURPOSES], check=True)
            for check in options.chosen:
                record = records.run(ROOT, check, options.run, options.seed)
                print(f"{check.name}: {record.figures}", flush=True)
        if not options.checks:
            write_page(options.run)
    except records.Refused as error:
        sys.exit("\n".join(f"check-release: {line}" for line in str(error).splitlines()))


if __name__ == "__main__":
    main()
