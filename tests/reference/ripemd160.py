"""RIPEMD-160, from the paper of H. Dobbertin, A. Bosselaers and B. Preneel (1996)."""

import struct

INITIAL = (0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0)
LEFT_CONSTANTS = (0x00000000, 0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xA953FD4E)
RIGHT_CONSTANTS = (0x50A28BE6, 0x5C4DD124, 0x6D703EF3, 0x7A6D76E9, 0x00000000)
WORD = 0xFFFFFFFF

# The order of the message words: rho permutes it from round to round, pi starts the right line.
RHO = (7, 4, 13, 1, 10, 6, 15, 3, 12, 0, 9, 5, 2, 14, 11, 8)
PI = tuple((9 * i + 5) % 16 for i in range(16))

# Rotations for round and message word.
ROTATIONS = (
    (11, 14, 15, 12, 5, 8, 7, 9, 11, 13, 14, 15, 6, 7, 9, 8),
    (12, 13, 11, 15, 6, 9, 9, 7, 12, 15, 11, 13, 7, 8, 7, 7),
    (13, 15, 14, 11, 7, 7, 6, 8, 13, 14, 13, 12, 5, 5, 6, 9),
    (14, 11, 12, 14, 8, 6, 5, 5, 15, 12, 15, 14, 9, 9, 8, 6),
    (15, 12, 13, 13, 9, 5, 8, 6, 14, 11, 12, 11, 8, 6, 5, 5),
)

FUNCTIONS = (
    lambda x, y, z: x ^ y ^ z,
    lambda x, y, z: x & y | ~x & z,
    lambda x, y, z: (x | ~y) ^ z,
    lambda x, y, z: x & z | y & ~z,
    lambda x, y, z: x ^ (y | ~z),
)


def word_orders(first):
    """The order of the message words in each of the five rounds of a line."""
    orders = [first]
    while len(orders) < 5:
        orders.append(tuple(RHO[word] for word in orders[-1]))
    return orders


LEFT_ORDERS = word_orders(tuple(range(16)))
RIGHT_ORDERS = word_orders(PI)


def rotated(value, count):
    value &= WORD
    return (value << count | value >> 32 - count) & WORD


def line(state, words, orders, functions, constants):
    a, b, c, d, e = state
    for round_number in range(5):
        function, constant = functions[round_number], constants[round_number]
        for word in orders[round_number]:
            t = rotated(a + function(b, c, d) + words[word] + constant,
                        ROTATIONS[round_number][word]) + e & WORD
            a, b, c, d, e = e, t, b, rotated(c, 10), d
    return a, b, c, d, e


def compressed(state, block):
    words = struct.unpack("<16I", block)
    left = line(state, words, LEFT_ORDERS, FUNCTIONS, LEFT_CONSTANTS)
    right = line(state, words, RIGHT_ORDERS, FUNCTIONS[::-1], RIGHT_CONSTANTS)
    return tuple(state[(i + 1) % 5] + left[(i + 2) % 5] + right[(i + 3) % 5] & WORD
                 for i in range(5))


def ripemd160(data):
    """The 20 bytes of the digest."""
    padded = data + b"\x80" + bytes(-(len(data) + 9) % 64) + struct.pack("<Q", 8 * len(data))
    state = INITIAL
    for start in range(0, len(padded), 64):
        state = compressed(state, padded[start:start + 64])
    return struct.pack("<5I", *state)
