"""The parts of docs/performance.md that are written of bounds and figures."""

import re

from bounds import judged

WORKS = {
    "sign": "signature, us", "verify": "verification, us", "divide": "field division, us",
    "multiply": "field multiplication with reduction, us", "ripemd160": "RIPEMD-160, {} a byte",
    "md5": "MD5, {} a byte", "sha256": "SHA-256, {} a byte",
}
# Title, beginning of the names of the figures, and which of them are not ours.
PROCESSES = (
    ("process, us", "process/", "empty|baseline|openssl"),
    ("process / empty process", "empty/", "$^"),
    ("requests a second", "servers/", "answering"),
)
DIGESTS = ("ripemd160", "md5", "sha256")


def number(figure):
    return f"{figure:,.3g}" if abs(figure) < 1000 else f"{figure:,.0f}"


def measured(figures):
    return [(name, figure) for name, figure in figures.items() if not isinstance(figure, str)]


def reached(verdict):
    if verdict.reached is None:
        return f"not judged: {verdict.reason}"
    return number(verdict.reached) + (", **missed**" if verdict.missed else "")


def bounds_table(figures):
    rows = [f"| {v.bound.figure} | {v.bound.told()} | {reached(v)} | {v.bound.sentence} |"
            for v in judged(figures)]
    return "\n".join(["| Figure | Bound | Reached | How it is taken |", "|---|---|---|---|", *rows])


def figures_of_work(work, figures):
    """Those that were measured, ours first and the fastest of each side first; digests in cycles
    where there is a clock."""
    clock = figures["clock"]
    scale = clock if work in DIGESTS and not isinstance(clock, str) else 1
    found = [(name.partition("/")[2], figure * scale) for name, figure in measured(figures)
             if name.startswith(f"{work}/") and name != f"{work}/cycles"]
    return sorted(found, key=lambda item: (not item[0].startswith("ours"), item[1]))


def title_of_work(work, figures):
    return WORKS[work].format("nanoseconds" if isinstance(figures["clock"], str) else "cycles")


def told(items):
    return ", ".join(f"{name} {number(figure)}" for name, figure in items)


def works_table(figures):
    rows = []
    for work in WORKS:
        items = figures_of_work(work, figures)
        ours = [item for item in items if item[0].startswith("ours")]
        rows.append((title_of_work(work, figures), told(ours), told(items[len(ours):])))
    for title, start, theirs in PROCESSES:
        items = [(name.removeprefix(start), figure) for name, figure in measured(figures)
                 if name.startswith(start) and not name.endswith(" ratio")]
        others = [item for item in items if re.search(theirs, item[0])]
        rows.append((title, told(item for item in items if item not in others), told(others)))
    return "\n".join(["| Work | Ours | Others |", "|---|---|---|",
                      *(f"| {title} | {ours} | {others} |" for title, ours, others in rows)])


def written(text, figures):
    """The page with its parts written anew, each between two comments that stay."""
    for name, part in (("bounds", bounds_table(figures)), ("works", works_table(figures))):
        begin, end = f"<!-- {name}: scripts/bench.sh --write -->\n", f"\n<!-- end of {name} -->"
        if text.count(begin) != 1 or text.count(end) != 1:
            raise ValueError(f"docs/performance.md: no place for {name}: wanted are the lines "
                             f"{begin.strip()} and {end.strip()}")
        text = text[:text.index(begin)] + begin + part + text[text.index(end):]
    return text
