"""The page of figures, written whole from the records of one run of all checks.

It holds the records as well as the table that is made of them, and a digest of both. So a row that
was typed, edited or merged is told from one that was written. That is a guard against
carelessness: who makes up a record can make up a digest.
"""

import hashlib
import json
import re
from dataclasses import asdict
from pathlib import Path

from release.check import LONG, SHORT
from release.records import Record

PAGE = Path("docs") / "release-figures.md"
HEAD = """\
# Figures of the release checks

Written whole by `scripts/check-release.sh` and never edited, which a test sees to; [testing.md](testing.md) tells what
each check does. {run} All checks ran on one commit without a change:

`{commit}`

| Check | Figures | Seed | Ended (UTC) |
|---|---|---|---|
"""
RUN_IS = {
    LONG: "This is a long run.",
    SHORT: "**This is a short run: small samples, which show that the checks work, and no more.**",
}
RECORDS = """
## Records

What each check left behind; `log` is the SHA-256 of its output.

```json
"""
END = "```\n\nSHA-256 of all lines above: "
BLOCK = re.compile(re.escape(RECORDS) + "(.*?)" + re.escape(END), flags=re.DOTALL)


def rendered(records):
    """The page of these records, all of one commit and of one kind of run."""
    if len({(record.commit, record.run) for record in records}) != 1:
        raise ValueError("records of one commit and one run are wanted")
    text = HEAD.format(commit=records[0].commit, run=RUN_IS[records[0].run])
    for record in records:
        seed = "-" if record.seed is None else record.seed
        text += f"| {record.check} | {record.figures} | {seed} | {record.ended} |\n"
    lines = ",\n".join(json.dumps(asdict(record)) for record in records)
    text += f"{RECORDS}[\n{lines}\n]\n{END}"
    return f"{text}`{hashlib.sha256(text.encode()).hexdigest()}`\n"


def records_of(text):
    """The records that the page holds; ValueError when it is not as `rendered` writes it."""
    try:
        records = [Record(**fields) for fields in json.loads(BLOCK.search(text)[1])]
        is_right = rendered(records) == text
    except (TypeError, ValueError, LookupError) as error:
        raise ValueError(f"{PAGE}: its records cannot be read: {error}") from error
    if not is_right:
        raise ValueError(f"{PAGE}: not as it was written; let scripts/check-release.sh write it")
    return records
