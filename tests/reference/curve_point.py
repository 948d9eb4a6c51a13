"""Points of y^2 + xy = x^3 + x^2 + b over GF(2^163), affine; None is the point at infinity.

The group law does not read b, so that it gives every pair of coordinates some result. What becomes
of an unsound key depends on the steps and their order; x_of_multiple and multiplied_twin have those
of the program.
"""

from functools import lru_cache

from binary_field import product, quotient, square

COEFFICIENT_A = 1
COEFFICIENT_B = 0x20A601907B8C953CA1481EB10512F78744A3205FD
PUBLISHED_BASE = (0x3F0EBA16286A2D57EA0991168D4994637E8343E36,
                  0x0D51FBC6C71A0094FA2CDD545B11C5C0C797324F1)
ORDER = 0x40000000000000000000292FE77E70C12A4234C33

WORDS = 3
WORD_MASK = (1 << 64) - 1


def is_on_curve(point):
    x, y = point
    return square(y) ^ product(x, y) == product(square(x), x ^ COEFFICIENT_A) ^ COEFFICIENT_B


def compared(p, q):
    """1 for the same point, -1 for one and its negative, 0 for others."""
    if p == q:
        return 1
    return -1 if q == (p[0], p[0] ^ p[1]) else 0


def compared_by_words(p, q):
    """The same as the program sees it.

    The y values are compared word by word, and the top word alone tells a point from its negative:
    when the top word of x is zero, the negative counts as the point itself.
    """
    if p[0] != q[0]:
        return 0
    for shift in range(0, 64 * WORDS, 64):
        x1, y1, y2 = (value >> shift & WORD_MASK for value in (p[0], p[1], q[1]))
        if y2 not in (y1, y1 ^ x1):
            return 0
    top = 64 * (WORDS - 1)
    return 1 if p[1] >> top == q[1] >> top else -1


def doubled(p):
    if p is None:
        return None
    x, y = p
    slope = quotient(y, x) ^ x
    x3 = square(slope) ^ slope ^ COEFFICIENT_A
    return x3, square(x) ^ x3 ^ product(slope, x3)


def added(p, q, compare=compared):
    if p is None:
        return q
    if q is None:
        return p
    relation = compare(p, q)
    if relation == 1:
        return doubled(p)
    if relation == -1:
        return None
    slope = quotient(p[1] ^ q[1], p[0] ^ q[0])
    x3 = p[0] ^ q[0] ^ slope ^ square(slope) ^ COEFFICIENT_A
    return x3, product(p[0] ^ x3, slope) ^ x3 ^ p[1]


def multiplied(scalar, p):
    """scalar * p for a point of the curve, by doubling and adding from the top bit down."""
    result = None
    for bit in f"{scalar:b}":
        result = doubled(result)
        if bit == "1":
            result = added(result, p)
    return result


def signed_digits(scalar):
    """The non-adjacent form of a positive number, its highest digit first."""
    digits = []
    while scalar:
        digit = 2 - (scalar & 3) if scalar & 1 else 0
        digits.append(digit)
        scalar = scalar - digit >> 1
    return digits[::-1]


@lru_cache(maxsize=65536)
def x_of_multiple(scalar, p):
    """x of scalar * p by signed digits, for a scalar that is not zero.

    No step writes coordinates of the point at infinity: where that is the result, x is of the last
    point before it.
    """
    negative = p[0], p[0] ^ p[1]
    result = last = None
    for digit in signed_digits(scalar):
        result = doubled(result)
        if digit:
            result = added(result, p if digit == 1 else negative, compared_by_words)
        last = last if result is None else result
    return last[0]


@lru_cache(maxsize=1024)
def window_table(p, q):
    """Entry 4i + j is ip + jq, i and j from 0 to 3."""
    rows = []
    for point in (p, q):
        row = [None]
        for _ in range(3):
            row.append(added(row[-1], point, compared_by_words))
        rows.append(row)
    return [added(first, second, compared_by_words)
            for first in rows[0] for second in rows[1]]


def multiplied_twin(p, q, u1, u2):
    """u1 * p + u2 * q, two bits of both scalars at a time, from the top of 192 bits down."""
    table = window_table(p, q)
    result = None
    for shift in range(64 * WORDS - 2, -2, -2):
        result = doubled(doubled(result))
        entry = table[4 * (u1 >> shift & 3) + (u2 >> shift & 3)]
        result = added(result, entry, compared_by_words)
    return result
