"""ECDSA on sect163r2 with RIPEMD-160 and any base point, and the text of its signatures."""

from functools import lru_cache

import core_text
from binary_field import DEGREE
from curve_point import ORDER, multiplied, multiplied_twin
from ripemd160 import ripemd160

LONGEST_TEXT = 128
LONGEST_HALF = 21
LIMB_BITS = 64


def limb_count(bits):
    return (bits + LIMB_BITS - 1) // LIMB_BITS


def message_number(data):
    """The digest as a number, its first byte the least significant."""
    return int.from_bytes(ripemd160(data), "little")


def rendered(r, s):
    """The text of a signature: both numbers in as many bytes as the larger one needs."""
    size = (max(r, s).bit_length() + 7) // 8
    return core_text.encode(r.to_bytes(size, "little") + s.to_bytes(size, "little"))


def halves(text):
    """r, s and the limbs that r is taken to have, or None for a text of the wrong size."""
    if not 0 < len(text) <= LONGEST_TEXT:
        return None
    raw, count = core_text.decode(text)
    if not 0 <= count <= 2 * LONGEST_HALF or count % 2:
        return None
    half = count // 2
    r, s = (int.from_bytes(raw[start:start + half], "little") for start in (0, half))
    limbs = limb_count(8 * half)
    if limbs and r >> LIMB_BITS * (limbs - 1) == 0:
        limbs -= 1  # one top limb at most, whatever stands below it
    return r, s, limbs


@lru_cache(maxsize=65536)
def combined_x(base, public, e, r, s):
    """x of (e/s) base + (r/s) public; None for the point at infinity."""
    w = pow(s, -1, ORDER)
    point = multiplied_twin(base, public, e * w % ORDER, r * w % ORDER)
    return None if point is None else point[0]


def is_valid(base, public, data, text):
    """The verdict on a text, for points whose coordinates are reduced.

    Limbs are compared before their values. An x below the order keeps the three limbs of a field
    element, so that an r that needs fewer never equals it; a larger x is cut to those it needs.
    """
    numbers = halves(text)
    if numbers is None:
        return False
    r, s, r_limbs = numbers
    if not (0 < r < ORDER and 0 < s < ORDER):
        return False
    x = combined_x(base, public, message_number(data), r, s)
    if x is None:
        return False
    v = x % ORDER
    v_limbs = limb_count(DEGREE) if x < ORDER else limb_count(v.bit_length())
    return v == r and v_limbs == r_limbs


def was_made_with(base, scalar, data, text):
    """Whether the equation of ECDSA holds: x of ((e + scalar r) / s) base is r modulo the order.

    That is so for each signature that is made, the few included whose r the verdict refuses.
    """
    r, s, _ = halves(text)
    nonce = pow(s, -1, ORDER) * (message_number(data) + scalar * r) % ORDER
    return nonce != 0 and multiplied(nonce, base)[0] % ORDER == r


def has_the_form(text, least_r=1):
    """Whether signing could have written this text."""
    numbers = halves(text)
    if numbers is None:
        return False
    r, s, _ = numbers
    return least_r <= r < ORDER and 0 < s < ORDER and rendered(r, s) == text


def signed_number(base, scalar, e, nonce):
    """r and s of the signature of e with this nonce, for which neither is zero."""
    r = multiplied(nonce, base)[0] % ORDER
    return r, pow(nonce, -1, ORDER) * (e + scalar * r) % ORDER


def signed(base, scalar, data, nonce):
    """The text of the signature of these bytes with this nonce."""
    return rendered(*signed_number(base, scalar, message_number(data), nonce))
