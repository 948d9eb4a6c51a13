"""The field GF(2^163) of sect163r2 (SEC 2): bit i of an integer is the coefficient of z^i."""

DEGREE = 163
POLYNOMIAL = 1 << DEGREE | 0xC9
MASK = (1 << DEGREE) - 1


class DivisionByZero(ArithmeticError):
    """There is no quotient."""


def reduced(value):
    """The remainder modulo z^163 + z^7 + z^6 + z^3 + 1."""
    while value >> DEGREE:
        high = value >> DEGREE
        value = value & MASK ^ high ^ high << 3 ^ high << 6 ^ high << 7
    return value


def product(a, b):
    """The reduced product of two reduced elements, four bits of b at a time."""
    multiples = [0, a]
    for digit in range(2, 16):
        multiples.append(multiples[digit // 2] << 1 ^ (a if digit & 1 else 0))
    result = 0
    for shift in range(DEGREE // 4 * 4, -4, -4):
        result = result << 4 ^ multiples[b >> shift & 15]
    return reduced(result)


def square(a):
    """The reduced square: squaring puts a zero between each two bits."""
    return reduced(int(f"{a:b}", 4))


def inverse(a):
    """1 / a by the extended Euclidean algorithm on polynomials, for a reduced element."""
    if a == 0:
        raise DivisionByZero
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
    return product(a, inverse(b))
