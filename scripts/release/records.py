"""Runs a check, and keeps what it left: its output, and a record that can be held against it.

A record is made by a check alone: that it ended with 0, and that one commit was checked out without
a change when it began and when it ended. What is made of records is read from the output anew.
"""

import hashlib
import json
import os
import subprocess
import sys
from dataclasses import asdict, dataclass
from datetime import datetime, timezone
from pathlib import Path

from release import tree
from release.check import RUNS, NoFigures

FOLDER = Path("build") / "check-release"


class Refused(Exception):
    """There is no record, or it does not hold; the message names what and why."""


@dataclass(frozen=True)
class Record:
    check: str
    run: str
    commit: str
    seed: int | None
    command: str
    status: int
    ended: str  # UTC
    log: str  # SHA-256 of the output
    figures: str


def output_file(root, check):
    return root / FOLDER / f"{check.name}.log"


def record_file(root, check):
    return root / FOLDER / f"{check.name}.json"


def seed_of(check, seed):
    return seed if check.has_seed else None


def unchanged_commit(root, check):
    """The commit of a tree without changes."""
    changes = tree.changes(root)
    if changes:
        raise Refused(f"{check.name}: the tree is not that of a commit: {changes[0]}; commit or "
                      "remove what is changed, and run the check again")
    return tree.head(root)


def ended_command(root, command, log):
    """The exit status of the command, whose output goes to the log and to standard output."""
    with open(log, "wb") as file, subprocess.Popen(
            ["bash", "-euo", "pipefail", "-c", command], cwd=root, stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT) as process:
        while chunk := process.stdout.read1():
            file.write(chunk)
            file.flush()
            sys.stdout.buffer.write(chunk)
            sys.stdout.buffer.flush()
    return process.returncode


def figures_in(check, log):
    try:
        return check.figures(log.decode(errors="replace"))
    except NoFigures as error:
        raise Refused(f"{check.name}: no figures: {error}") from error


def run(root, check, run_kind, seed):
    """Runs the check and records it, in the place of what it left last time."""
    record_file(root, check).unlink(missing_ok=True)
    commit = unchanged_commit(root, check)
    log = output_file(root, check)
    log.parent.mkdir(parents=True, exist_ok=True)
    command = check.command(run_kind, seed)
    status = ended_command(root, command, log)
    if status != 0:
        raise Refused(f"{check.name}: ended with {status}; its output is in {log.relative_to(root)}")
    if unchanged_commit(root, check) != commit:
        raise Refused(f"{check.name}: another commit was checked out meanwhile; run it again")
    content = log.read_bytes()
    record = Record(check.name, run_kind, commit, seed_of(check, seed), command, status,
                    datetime.now(timezone.utc).strftime("%Y-%m-%d %H:%M"),
                    hashlib.sha256(content).hexdigest(), figures_in(check, content))
    written_whole(record_file(root, check), json.dumps(asdict(record), indent=1) + "\n")
    return record


def written_whole(file, text):
    part = file.with_name(file.name + ".part")
    part.write_text(text, encoding="utf-8")
    os.replace(part, file)


def held(root, check, run_kind):
    """The record of the check, held against its output and against the check as it is now."""
    try:
        record = Record(**json.loads(record_file(root, check).read_text(encoding="utf-8")))
        output = output_file(root, check).read_bytes()
    except FileNotFoundError as error:
        raise Refused(f"{check.name}: no record; run the check") from error
    except (TypeError, ValueError) as error:
        raise Refused(f"{check.name}: its record cannot be read; run the check again") from error
    seed = record.seed
    wanted = Record(check.name, run_kind, record.commit, seed_of(check, seed),
                    check.command(run_kind, seed), 0, record.ended,
                    hashlib.sha256(output).hexdigest(), figures_in(check, output))
    if record.run != run_kind and record.run in RUNS:
        raise Refused(f"{check.name}: recorded by a {record.run} run; run it again, or write the "
                      f"figures of the {record.run} run")
    if record != wanted:
        raise Refused(f"{check.name}: its record is not that of its output; run the check again")
    return record


def all_held(root, checks, run_kind):
    """The records of all checks, which are of the commit that is checked out."""
    records, reasons = [], []
    for check in checks:
        try:
            record = held(root, check, run_kind)
            if record.commit != unchanged_commit(root, check):
                raise Refused(f"{check.name}: recorded at commit {record.commit[:10]}, and another "
                              "one is checked out; run the check again")
            records.append(record)
        except Refused as error:
            reasons.append(str(error))
    if reasons:
        raise Refused("\n".join(reasons))
    return records
