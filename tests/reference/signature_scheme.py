"""ECDSA on sect163r2 with RIPEMD-160 and any base point, and the text of its signatures."""

import random
from functools import lru_cache

import core_text
from binary_field import DEGREE
from curve_point import ORDER, multiplied_twin, x_of_multiple
from ripemd160 import ripemd160
from stopped import Stopped

LONGEST_TEXT = 128
LONGEST_HALF = 21
LIMB_BITS = 64
ATTEMPTS = 32


def limb_count(bits):
    return (bits + LIMB_BITS - 1) // LIMB_BITS


@lru_cache(maxsize=256)
def message_number(data):
    """The digest as a number, its first byte the least significant."""
    return int.from_bytes(ripemd160(data), "little")


def rendered(r, s):
    """The text of a signature: both numbers in as many bytes as the larger one needs."""
    size = (max(r, s).bit_length() + 7) // 8
    return core_text.encode(r.to_bytes(size, "little") + s.to_bytes(size, "little"))


def halves(text):
    """r, s and the limbs that r is taken to have; Stopped for a text of the wrong size."""
    if not text:
        raise Stopped("signature.empty")
    if len(text) > LONGEST_TEXT:
        raise Stopped("signature.too-long")
    if len(text) % 4:
        raise Stopped("signature.groups")
    raw, count = core_text.decode(text)
    if count < 0:
        raise Stopped("signature.padding")
    if count > 2 * LONGEST_HALF:
        raise Stopped("signature.too-many-bytes")
    if count == 0:
        raise Stopped("signature.no-bytes")
    if count % 2:
        raise Stopped("signature.odd")
    half = count // 2
    r, s = (int.from_bytes(raw[start:start + half], "little") for start in (0, half))
    limbs = limb_count(8 * half)
    if r >> LIMB_BITS * (limbs - 1) == 0:
        limbs -= 1  # one top limb at most, whatever stands below it
    return r, s, limbs


@lru_cache(maxsize=65536)
def combined_x(base, public, e, r, s):
    """x of (e/s) base + (r/s) public; None for the point at infinity."""
    w = pow(s, -1, ORDER)
    point = multiplied_twin(base, public, e * w % ORDER, r * w % ORDER)
    return None if point is None else point[0]


def fits(base, public, data, text):
    """The verdict on a text; Stopped for one that no key and no bytes make valid.

    Limbs are compared before their values. An x below the order keeps the three limbs of a field
    element, so that an r that needs fewer never equals it; a larger x is cut to those it needs. So
    nothing equals an r that has more limbs than it needs.
    """
    r, s, r_limbs = halves(text)
    for rule, is_broken in (("signature.r-zero", r == 0), ("signature.s-zero", s == 0),
                            ("signature.r-range", r >= ORDER), ("signature.s-range", s >= ORDER),
                            ("signature.r-padded", r_limbs > limb_count(r.bit_length()))):
        if is_broken:
            raise Stopped(rule)
    x = combined_x(base, public, message_number(data), r, s)
    if x is None:
        return False
    v = x % ORDER
    v_limbs = limb_count(DEGREE) if x < ORDER else limb_count(v.bit_length())
    return v == r and v_limbs == r_limbs


def is_valid(base, public, data, text):
    """Whether the text is a signature of these bytes."""
    try:
        return fits(base, public, data, text)
    except Stopped:
        return False


def was_made_with(base, scalar, data, text):
    """Whether signing makes this text with some nonce.

    The nonce is not known, but s tells it: (e + scalar r) / s modulo the order. So this is decided
    for every key; that the verdict accepts the text is another matter.
    """
    try:
        r, s, _ = halves(text)
    except Stopped:
        return False
    if not 0 < s < ORDER:
        return False
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
