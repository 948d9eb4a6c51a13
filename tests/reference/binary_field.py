"""The field GF(2^163) of sect163r2 (SEC 2), as the program computes in it.

Bit i of an integer is the coefficient of z^i. An element fills three words of 64 bits. It is
reduced when it has no bit at 163 or above; the coordinates of a project are taken as they are
stored, so that an operand may have bits up to 191.
"""

DEGREE = 163
POLYNOMIAL = 1 << DEGREE | 0xC9
MASK = (1 << DEGREE) - 1
ELEMENT_BITS = 192
BITS_READ_BY_REDUCTION = 352


def reduced(value):
    """The remainder modulo z^163 + z^7 + z^6 + z^3 + 1.

    Of a product, eleven words of 32 bits are read. What is above them counts for nothing; only
    operands that are not reduced have such a product.
    """
    value &= (1 << BITS_READ_BY_REDUCTION) - 1
    while value >> DEGREE:
        high = value >> DEGREE
        value = value & MASK ^ high ^ high << 3 ^ high << 6 ^ high << 7
    return value


def product(a, b):
    """The reduced product, four bits of b at a time."""
    multiples = [0, a]
    for digit in range(2, 16):
        multiples.append(multiples[digit // 2] << 1 ^ (a if digit & 1 else 0))
    result = 0
    for shift in range(ELEMENT_BITS - 4, -4, -4):
        result = result << 4 ^ multiples[b >> shift & 15]
    return reduced(result)


def square(a):
    """The reduced square: squaring puts a zero between each two bits."""
    return reduced(int(f"{a:b}", 4))


def trace(a):
    """a + a^2 + a^4 + ... + a^(2^162), which is 0 or 1."""
    result = 0
    for _ in range(DEGREE):
        result ^= a
        a = square(a)
    return result


def square_root(a):
    """The reduced square root of a reduced element: squaring 163 times changes nothing."""
    for _ in range(DEGREE - 1):
        a = square(a)
    return a


def inverse(a):
    """1 / a by the extended Euclidean algorithm on polynomials, for a reduced a other than zero."""
    u, v = a, POLYNOMIAL
    u_factor, v_factor = 1, 0
    while u != 1:
        shift = u.bit_length() - v.bit_length()
        if shift < 0:
            u, v, u_factor, v_factor = v, u, v_factor, u_factor
            shift = -shift
        u ^= v << shift
        u_factor ^= v_factor << shift
    return reduced(u_factor)


def quotient(a, b):
    """a / b, and zero where there is none."""
    if reduced(b) == 0:
        return 0
    if max(a, b) >> DEGREE == 0:
        return product(a, inverse(b))  # the only reduced one
    return quotient_by_halving(a, b)


def quotient_by_halving(a, b):
    """a / b by the binary algorithm, begun with a in the place of 1 (Guide to Elliptic Curve
    Cryptography, algorithm 2.49); b is no multiple of the polynomial.

    What it gives for operands that are not reduced need not be reduced either.
    """
    u, v = b, POLYNOMIAL
    u_factor, v_factor = a, 0
    while u != 1 and v != 1:
        while u & 1 == 0:
            u, u_factor = u >> 1, halved(u_factor)
        while v & 1 == 0:
            v, v_factor = v >> 1, halved(v_factor)
        if degree(u) > degree(v):
            u, u_factor = u ^ v, u_factor ^ v_factor
        else:
            v, v_factor = v ^ u, v_factor ^ u_factor
    return u_factor if u == 1 else v_factor


def halved(factor):
    """factor / z: the polynomial is added where the lowest bit is set."""
    return (factor ^ POLYNOMIAL if factor & 1 else factor) >> 1


def degree(value):
    """That of the polynomial, and 0 for zero."""
    return max(value.bit_length() - 1, 0)
