"""The bounds of bounds.toml, and figures judged by them.

Figures are a dictionary of names and numbers. A text in place of a number is why it was not
measured, and bounds on it are not judged then.
"""

import tomllib
from dataclasses import dataclass
from pathlib import Path

FILE = Path(__file__).with_name("bounds.toml")


@dataclass(frozen=True)
class Bound:
    name: str
    figure: str
    value: str
    sentence: str
    over: tuple = ()
    at_most: float | None = None
    at_least: float | None = None
    unit: str = ""

    def __post_init__(self):
        if (self.at_most is None) == (self.at_least is None):
            raise ValueError(f"{self.name}: a bound is at_most or at_least, and not both")

    def told(self):
        words = f"{self.at_most:g}" if self.at_least is None else f"at least {self.at_least:g}"
        return f"{words} {self.unit}".rstrip()


@dataclass(frozen=True)
class Verdict:
    bound: Bound
    reached: float | None  # None if it could not be judged
    reason: str = ""       # why not

    @property
    def missed(self):
        if self.reached is None:
            return False
        if self.bound.at_least is None:
            return not self.reached <= self.bound.at_most
        return not self.reached >= self.bound.at_least


def baseline_commit():
    return tomllib.loads(FILE.read_text(encoding="utf-8"))["baseline"]["commit"]


def all_bounds():
    return [Bound(**row | {"over": tuple(row.get("over", ()))})
            for row in tomllib.loads(FILE.read_text(encoding="utf-8"))["bound"]]


def verdict(bound, figures):
    missing = [name for name in (bound.value, *bound.over) if name not in figures]
    if missing:
        raise ValueError(f"{bound.name}: no figure {missing[0]}; measure it, or take the bound away")
    wanted = [figures[name] for name in (bound.value, *bound.over)]
    reasons = [figure for figure in wanted if isinstance(figure, str)]
    if reasons:
        return Verdict(bound, None, reasons[0])
    value, *others = wanted
    return Verdict(bound, value / min(others) if others else value)


def judged(figures):
    return [verdict(bound, figures) for bound in all_bounds()]
