"""The key of a project, taken out of its attributes."""

import struct
from dataclasses import dataclass

from binary_field import DEGREE

BASE_X, BASE_Y, PRIVATE_SCALAR, PUBLIC_X, PUBLIC_Y = 72, 73, 74, 75, 76
LONGEST_VALUE = 296
ELEMENT_ROOM = 512
SCALAR_ROOM = 320


@dataclass(frozen=True)
class Element:
    """A stored field element; bits at and above the degree are kept as they stand."""
    degree: int = 0
    value: int = 0


@dataclass(frozen=True)
class ProjectKey:
    base_x: Element
    base_y: Element
    public_x: Element
    public_y: Element
    scalar: int | None

    def has_public_point(self):
        """Whether both coordinates state the same number of bits, and any at all."""
        return self.public_x.degree == self.public_y.degree != 0

    def base_states_the_degree(self):
        return self.base_x.degree == self.base_y.degree == DEGREE

    def public_states_the_degree(self):
        return self.public_x.degree == self.public_y.degree == DEGREE

    def base(self):
        return self.base_x.value, self.base_y.value

    def public(self):
        return self.public_x.value, self.public_y.value


def scratch(table, identifier):
    """The value with zeros behind it, or None: one that is too long counts as absent."""
    value = table.get(identifier)
    if value is None or len(value) > LONGEST_VALUE:
        return None
    return value.ljust(LONGEST_VALUE, b"\0")


def stored_element(value):
    if value is None:
        return Element()
    (bits,) = struct.unpack_from("<I", value)
    if bits > ELEMENT_ROOM:
        return Element()
    size = (bits + 31) // 32 * 4
    return Element(bits, int.from_bytes(value[8:8 + size], "little"))


def stored_scalar(value):
    """The private scalar, or None if there is none to sign with.

    The length in limbs tells a missing one: zero counts when it fills more than one limb.
    """
    if value is None:
        return None
    (length,) = struct.unpack_from("<I", value)
    bits = length & 0x7FFFFFFF
    size = (bits + 7) // 8
    number = int.from_bytes(value[4:4 + size], "little")
    if bits > SCALAR_ROOM or bits == 0 or (size <= 8 and number == 0):
        return None
    return number


def project_key(table):
    elements = {identifier: stored_element(scratch(table, identifier))
                for identifier in (BASE_X, BASE_Y, PUBLIC_X, PUBLIC_Y)}
    return ProjectKey(elements[BASE_X], elements[BASE_Y], elements[PUBLIC_X], elements[PUBLIC_Y],
                      stored_scalar(scratch(table, PRIVATE_SCALAR)))
