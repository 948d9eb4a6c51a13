"""The two readings of CONTENT_LENGTH, and what becomes of a body of so many bytes."""

import re

from stopped import Stopped

BEYOND = 2**64
LONGEST_BODY = 2**63 - 2
# No process has so much address space.
BEYOND_MEMORY = 2**47


class NoMemory(Stopped):
    """The body has no room, which ends the program."""


def signed_value(sign, digits):
    """The number modulo 2^64."""
    value = 0
    for digit in digits:
        value = (10 * value + digit - ord("0")) % BEYOND
    return -value % BEYOND if sign == b"-" else value


def form_length(text):
    """A number of 64 bits at the front, behind white space and one sign.

    "-" takes it modulo 2^64. A number that needs more than 64 bits counts as the largest that does
    not.
    """
    digits = re.match(rb"[ \t\n\v\f\r]*([+-]?)([0-9]+)", text)
    if digits is None:
        return 0
    number = digits[2].lstrip(b"0")
    if len(number) > len(str(BEYOND)) or int(number or b"0") >= BEYOND:
        return BEYOND - 1
    return signed_value(digits[1], number)


def json_length(text):
    """The whole text as a number modulo 2^64, or 0."""
    digits = re.fullmatch(rb"([+-]?)([0-9]+)", text)
    if digits is None:
        return 0
    return signed_value(*digits.groups())


def require_room(kind, length):
    """Raises NoMemory for a body, of a "form" or "json", that no process can hold."""
    if length > LONGEST_BODY:
        raise NoMemory(f"{kind}.length-impossible")
    if length >= BEYOND_MEMORY:
        raise NoMemory(f"{kind}.length-memory")
