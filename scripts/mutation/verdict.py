"""What becomes of a mutant."""

from dataclasses import dataclass

KILLED = "killed"
SURVIVED = "survived"
EQUIVALENT = "equivalent"  # no input can tell it from the original, by a reason that is on record
SAME_OBJECT = "same object"  # the compiler makes the same object code of it
REFUSED = "refused"  # by a static_assert of the sources
NOT_COMPILED = "not compiled"
OUTCOMES = (KILLED, SURVIVED, EQUIVALENT, SAME_OBJECT, REFUSED, NOT_COMPILED)


@dataclass(frozen=True)
class Verdict:
    outcome: str
    by: str = ""  # the test that killed it, or the reason


def counted(verdicts):
    """How many of them a test can tell from the original."""
    return sum(verdict.outcome in (KILLED, SURVIVED) for verdict in verdicts)


def killed_share(verdicts):
    """Killed of those that count, between 0 and 1."""
    killed = sum(verdict.outcome == KILLED for verdict in verdicts)
    return killed / counted(verdicts) if counted(verdicts) else 1.0
