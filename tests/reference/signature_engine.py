"""What the program makes of a project and bytes or a file: a signature, or a verdict on one.

The verdict is True, False or None. None leaves it open: the key is unsound in a way for which the
arithmetic promises an end and no result.
"""

from dataclasses import dataclass
from functools import lru_cache

import project_file
import signature_scheme
from binary_field import DEGREE, DivisionByZero
from curve_point import ORDER, is_on_curve, multiplied
from input_file import signed_content
from project_key import project_key


@dataclass(frozen=True)
class SignatureDue:
    """A signature of `data` by this scalar on this base point."""
    base: tuple
    scalar: int
    data: bytes

    def accepts(self, text):
        return (signature_scheme.has_the_form(text)
                and signature_scheme.was_made_with(self.base, self.scalar, self.data, text))


@dataclass(frozen=True)
class SignatureOpen:
    """A refusal or a text in the form of a signature: the base point is unsound.

    r may be zero, as x of its multiples may be.
    """

    def accepts(self, text):
        return signature_scheme.has_the_form(text, least_r=0)


def is_reduced(point):
    return max(point) >> DEGREE == 0


@lru_cache(maxsize=1024)
def has_the_order(point):
    """Whether a point is on the curve and generates the group of its order."""
    try:
        return (is_reduced(point) and point[0] != 0 and is_on_curve(point)
                and multiplied(ORDER, point) is None)
    except DivisionByZero:
        return False


def sign_data(project, data):
    """SignatureDue, SignatureOpen, or None for a refusal."""
    table = project_file.load(project) if data else None
    if table is None:
        return None
    key = project_key(table)
    if key.scalar is None or not key.has_public_point() or not key.base_states_the_degree():
        return None
    if not has_the_order(key.base()):
        return SignatureOpen()
    return SignatureDue(key.base(), key.scalar, data)


def verify_data(project, data, text):
    table = project_file.load(project) if data else None
    if table is None:
        return False
    key = project_key(table)
    if not (key.has_public_point() and key.public_states_the_degree()
            and key.base_states_the_degree()):
        return False
    numbers = signature_scheme.halves(text)
    if numbers is None or not all(0 < number < ORDER for number in numbers[:2]):
        return False
    if not (is_reduced(key.base()) and is_reduced(key.public())):
        return None
    try:
        return signature_scheme.is_valid(key.base(), key.public(), data, text)
    except DivisionByZero:
        return None


def sign_file(project, path):
    return sign_data(project, signed_content(path))


def verify_file(project, path, text):
    return verify_data(project, signed_content(path), text)
