"""A check before a release, and how its figures are read out of what it prints."""

import re
from dataclasses import dataclass, field

LONG, SHORT = "long", "short"
RUNS = (LONG, SHORT)


class NoFigures(ValueError):
    """The output of a check lacks what it is to be recorded with."""


@dataclass(frozen=True)
class Found:
    """What the lines of the output hold that a pattern fits."""

    pattern: str
    text: str = r"\1"  # of each line, with the groups of the pattern
    lines: int | None = 1  # how many there have to be; None is any number but none
    joined: str = ", "

    def read(self, output):
        matches = list(re.finditer(self.pattern, output, flags=re.MULTILINE))
        if not matches or self.lines not in (None, len(matches)):
            raise NoFigures(f"{len(matches)} lines of its output, wanted {self.lines or 'some'}, "
                            f"fit {self.pattern}")
        return self.joined.join(match.expand(self.text) for match in matches)


@dataclass(frozen=True)
class Check:
    name: str
    template: str  # of its command for bash, with {seed} and the names of `sizes`
    found: tuple[Found, ...]
    figures_text: str = "{}"  # with a place for each of `found`
    sizes: dict = field(default_factory=dict)  # a name: its values in a long run and in a short one

    @property
    def has_seed(self):
        return "{seed}" in self.template

    def command(self, run, seed):
        sizes = {name: values[RUNS.index(run)] for name, values in self.sizes.items()}
        return self.template.format(seed=seed, **sizes)

    def figures(self, output):
        """NoFigures when a part of them is missing."""
        return self.figures_text.format(*(found.read(output) for found in self.found))


def chosen(checks, words):
    """Those of these names, or of the kinds before their colon; ValueError names another."""
    names = {check.name: {check.name, check.name.split(":")[0]} for check in checks}
    for word in words:
        if all(word not in known for known in names.values()):
            raise ValueError(f"no check {word}; there are {', '.join(names)}")
    return [check for check in checks if not words or names[check.name] & set(words)]
