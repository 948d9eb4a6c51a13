"""ECDSA on sect163r2 with RIPEMD-160 and any base point, and the text of its signatures."""

import random
from functools import lru_cache

import core_text
from binary_field import DEGREE
from curve_point import ORDER, multiplied_twin, x_of_multiple
from ripemd160 import ripemd160

LONGEST_TEXT = 128
LONGEST_HALF = 21
LIMB_BITS = 64
ATTEMPTS = 32


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
    """The verdict on a text.

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
    """Whether signing makes this text with some nonce.

    The nonce is not known, but s tells it: (e + scalar r) / s modulo the order. So this is decided
    for every key; that the verdict accepts the text is another matter.
    """
    numbers = halves(text)
    if numbers is None or not 0 < numbers[1] < ORDER:
        return False
    r, s, _ = numbers
    e = message_number(data)
    nonce = pow(s, -1, ORDER) * (e + scalar * r) % ORDER
    return (nonce != 0 and signed_number(base, scalar, e, nonce) == (r, s)
            and rendered(r, s) == text)


def signed_number(base, scalar, e, nonce):
    """r and s of the signature of e with this nonce, or None: it takes another one.

    r is x modulo the order. An r of zero calls for another nonce unless x is zero itself, which is
    not reduced and so keeps its limbs.
    """
    x = x_of_multiple(nonce, base)
    r = x % ORDER
    s = pow(nonce, -1, ORDER) * (e + scalar * r) % ORDER
    return None if s == 0 or (r == 0 and x != 0) else (r, s)


@lru_cache(maxsize=65536)
def can_be_signed(base, scalar, e):
    """Whether signing ends in a signature, as it always does with a sound key.

    The program gives up after as many nonces as are tried here, of which each ends in none.
    """
    nonces = random.Random(0)
    return any(signed_number(base, scalar, e, nonces.randrange(1, ORDER))
               for _ in range(ATTEMPTS))


def signed(base, scalar, data, nonce):
    """The text of the signature of these bytes with this nonce."""
    return rendered(*signed_number(base, scalar, message_number(data), nonce))
