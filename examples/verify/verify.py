#!/usr/bin/env python3
"""Verifies a signature with nothing but Python: verify.py PROJECT SIGNATURE FILE

PROJECT is a project file; its public part is enough. Prints true or false; exit status 0 or 1, and
2 if a file cannot be read. As a module: verify(project, data, signature) on bytes, bytes and a
text. The verdicts are those of `projectctl verify` for every project that `projectctl check` finds
sound. Where hashlib has no RIPEMD-160, as with OpenSSL 3.0.0 to 3.0.6, the status is 2, and a module
gets a ValueError.
"""

import hashlib
import struct
import sys

# SEC 2, sect163r2: y^2 + xy = x^3 + x^2 + B over GF(2^163), and the order n of the base point.
DEGREE = 163
POLYNOMIAL = 1 << 163 | 0xC9
B = 0x20A601907B8C953CA1481EB10512F78744A3205FD
N = 0x40000000000000000000292FE77E70C12A4234C33
ALPHABET = b"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"


def times(a, b):
    result = 0
    for bit in range(DEGREE):
        if b >> bit & 1:
            result ^= a
        a <<= 1
        if a >> DEGREE:
            a ^= POLYNOMIAL
    return result


def over(a, b):
    """a / b by the binary algorithm (Guide to Elliptic Curve Cryptography, algorithm 2.49)."""
    u, v, g, h = b, POLYNOMIAL, a, 0
    while u != 1:
        while not u & 1:
            u, g = u >> 1, (g ^ POLYNOMIAL if g & 1 else g) >> 1
        if u < v and u != 1:
            u, v, g, h = v, u, h, g
        if u != 1:
            u, g = u ^ v, g ^ h
    return g


def plus(p, q):
    """The sum of two points; None is the point at infinity."""
    if p is None or q is None:
        return p or q
    (x1, y1), (x2, y2) = p, q
    if x1 != x2:
        slope = over(y1 ^ y2, x1 ^ x2)
    elif x1 != 0 and (y1 == y2 or x1 >> 128 == 0):  # with so small an x, -P counts as P
        slope = x1 ^ over(y1, x1)
    else:
        return None
    x3 = times(slope, slope) ^ slope ^ x1 ^ x2 ^ 1
    return x3, times(slope, x1 ^ x3) ^ x3 ^ y1


def is_on_curve(point):
    x, y = point
    square = times(x, x)
    return (max(point) >> DEGREE == 0 and
            times(y, y) ^ times(x, y) == times(square, x) ^ square ^ B)


def key_of(project):
    """The base point and the public point; None where the project has no usable key."""
    if len(project) < 24 or project[:4] != b"VLT2":
        return None
    (count,) = struct.unpack_from("<I", project, 4)
    if hashlib.md5(project[24:]).digest() != project[8:24] or 24 + 12 * count > len(project):
        return None
    values = {}
    for entry in range(count):
        name, offset, size = struct.unpack_from("<III", project, 24 + 12 * entry)
        if size == 0 or offset + size > len(project):
            return None
        values.setdefault(name, project[offset:offset + size])  # the first of a name counts
    numbers = []
    for name in (72, 73, 75, 76):
        value = values.get(name, b"")
        padded = value.ljust(32, b"\0")  # a short value is filled with zeros
        # Bits, four unused bytes, six words of 32 bits; what follows is ignored.
        if len(value) > 296 or not value or struct.unpack_from("<I", padded)[0] != DEGREE:
            return None
        numbers.append(int.from_bytes(padded[8:32], "little"))
    points = tuple(numbers[:2]), tuple(numbers[2:])
    return points if all(map(is_on_curve, points)) else None


def halves_of(text):
    """r and s, from 1 to n - 1, or None."""
    try:
        text = text.encode(errors="surrogateescape").partition(b"\0")[0]
    except UnicodeEncodeError:  # half a character
        return None
    if not 0 < len(text) <= 128 or len(text) % 4:
        return None
    raw = b""
    for start in range(0, len(text), 4):
        # Least significant bits first; whatever is outside the alphabet counts as "A".
        sextets = [max(ALPHABET.find(byte), 0) for byte in text[start:start + 4]]
        raw += sum(bits << 6 * i for i, bits in enumerate(sextets)).to_bytes(3, "little")
    size = len(raw) - text.count(b"=")  # each "=" takes a byte, wherever it stands
    if not 0 < size <= 42 or size % 2:
        return None
    half = size // 2
    r, s = (int.from_bytes(raw[i:i + half], "little") for i in (0, half))
    # An r below 2^64 is not to fill more than 16 bytes.
    is_padded = (half > 16 and r < 2**64)
    return (r, s) if 0 < r < N and 0 < s < N and not is_padded else None


def verify(project, data, signature):
    key, pair = key_of(project), halves_of(signature)
    if not data or key is None or pair is None:
        return False
    r, s = pair
    # The first byte of the digest is the least significant.
    e = int.from_bytes(hashlib.new("ripemd160", data).digest(), "little")
    u1, u2 = e * pow(s, -1, N) % N, r * pow(s, -1, N) % N
    rows = []
    for multiple in key:
        rows.append([None, multiple, plus(multiple, multiple)])
        rows[-1].append(plus(rows[-1][2], multiple))
    point = None
    for bit in range(DEGREE - 1, -1, -2):
        point = plus(point, point)
        point = plus(point, point)
        point = plus(point, plus(rows[0][u1 >> bit & 3], rows[1][u2 >> bit & 3]))
    # Of two numbers that are equal, those with an x below 2^128 are refused all the same.
    return point is not None and point[0] >> 128 != 0 and point[0] % N == r


def main(words):
    if len(words) != 3:
        print("usage: verify.py PROJECT SIGNATURE FILE", file=sys.stderr)
        return 2
    try:
        with open(words[0], "rb") as project_file, open(words[2], "rb") as data_file:
            is_valid = verify(project_file.read(), data_file.read(), words[1])
    except (OSError, ValueError) as error:
        print(error, file=sys.stderr)
        return 2
    print("true" if is_valid else "false")
    return 0 if is_valid else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
