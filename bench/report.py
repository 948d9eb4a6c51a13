"""Judges the figures of a run by bounds.toml.

    report.py FILE            of figures, as measure.py writes it; exits 0 only if no bound is missed
    report.py FILE --write    keeps them as figures.json as well, and writes docs/performance.md and its chart
"""

import json
import sys
from pathlib import Path

import page
from bounds import judged
from chart import chart

ROOT = Path(__file__).resolve().parents[1]
FIGURES = Path(__file__).with_name("figures.json")
PAGE = ROOT / "docs" / "performance.md"
CHART = ROOT / "docs" / "performance.svg"


def write(figures):
    FIGURES.write_text(json.dumps(figures, indent=1) + "\n", encoding="utf-8")
    PAGE.write_text(page.written(PAGE.read_text(encoding="utf-8"), figures), encoding="utf-8")
    CHART.write_text(chart(figures), encoding="utf-8")


def report(figures):
    for name, figure in figures.items():
        print(f"{name:34} {figure if isinstance(figure, str) else page.number(figure):>10}")
    print()
    verdicts = judged(figures)
    for verdict in verdicts:
        print(f"{verdict.bound.name:34} {page.reached(verdict).replace('**', ''):20} "
              f"({verdict.bound.told()})")
    missed = sum(verdict.missed for verdict in verdicts)
    unjudged = sum(verdict.reached is None for verdict in verdicts)
    print(f"\n{len(verdicts)} bounds: {missed} missed, {unjudged} not judged")
    return 1 if missed else 0


def main(file, *words):
    figures = json.loads(Path(file).read_text(encoding="utf-8"))
    status = report(figures)
    if words == ("--write",):
        write(figures)
    return status


if __name__ == "__main__":
    try:
        sys.exit(main(*sys.argv[1:]))
    except ValueError as error:
        sys.exit(f"bench: {error}")
