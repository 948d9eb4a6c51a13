"""The key of a project, taken out of its attributes."""

import struct
from dataclasses import dataclass

from binary_field import DEGREE
from stopped import Stopped

BASE_X, BASE_Y, PRIVATE_SCALAR, PUBLIC_X, PUBLIC_Y = 72, 73, 74, 75, 76
LONGEST_VALUE = 296
ELEMENT_ROOM = 512
SCALAR_ROOM = 320


@dataclass(frozen=True)
class Element:
    """A stored field element; bits at and above the degree are kept as they stand."""
    degree: int = 0
    value: int = 0
    is_whole: bool = False  # the value has all bytes that it states
    missing: str | None = None  # the rule that makes the value count as absent

    def require(self):
        if self.missing is not None:
            raise Stopped(self.missing)

    def require_degree(self):
        self.require()
        if self.degree != DEGREE:
            raise Stopped("key.degree")


@dataclass(frozen=True)
class Scalar:
    """The private scalar, or the rule that leaves none to sign with."""
    value: int | None = None
    missing: str | None = None


@dataclass(frozen=True)
class ProjectKey:
    base_x: Element
    base_y: Element
    public_x: Element
    public_y: Element
    private: Scalar

    @property
    def scalar(self):
        return self.private.value

    def base(self):
        return self.base_x.value, self.base_y.value

    def public(self):
        return self.public_x.value, self.public_y.value

    def require_public_point(self):
        """Both coordinates state the same number of bits, and any at all."""
        self.public_x.require()
        self.public_y.require()
        if self.public_x.degree != self.public_y.degree:
            raise Stopped("key.bits-differ")
        if self.public_x.degree == 0:
            raise Stopped("key.no-bits")

    def require_for_signing(self):
        if self.private.missing is not None:
            raise Stopped(self.private.missing)
        self.require_public_point()
        self.base_x.require_degree()
        self.base_y.require_degree()

    def require_for_verifying(self):
        self.require_public_point()
        for element in (self.base_x, self.base_y, self.public_x, self.public_y):
            element.require_degree()


def scratch(table, identifier):
    """The value with zeros behind it; Stopped where there is none, as for one that is too long."""
    value = table.get(identifier)
    if value is None:
        raise Stopped("key.absent")
    if len(value) > LONGEST_VALUE:
        raise Stopped("key.too-large")
    return value.ljust(LONGEST_VALUE, b"\0")


def stored_element(table, identifier):
    try:
        value = scratch(table, identifier)
    except Stopped as stopped:
        return Element(missing=stopped.rule)
    (bits,) = struct.unpack_from("<I", value)
    if bits > ELEMENT_ROOM:
        return Element(missing="key.too-many-bits")
    end = 8 + (bits + 31) // 32 * 4
    return Element(bits, int.from_bytes(value[8:end], "little"), len(table[identifier]) >= end)


def stored_scalar(table):
    """The length in limbs tells a missing scalar: zero counts when it fills more than one limb."""
    try:
        value = scratch(table, PRIVATE_SCALAR)
    except Stopped as stopped:
        return Scalar(missing=stopped.rule)
    (length,) = struct.unpack_from("<I", value)
    bits = length & 0x7FFFFFFF
    if bits > SCALAR_ROOM:
        return Scalar(missing="key.too-many-bits")
    size = (bits + 7) // 8
    number = int.from_bytes(value[4:4 + size], "little")
    if size <= 8 and number == 0:
        return Scalar(missing="key.zero-scalar")
    return Scalar(number)


def project_key(table):
    return ProjectKey(*(stored_element(table, identifier)
                        for identifier in (BASE_X, BASE_Y, PUBLIC_X, PUBLIC_Y)),
                      stored_scalar(table))
