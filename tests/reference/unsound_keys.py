"""Keys for which the arithmetic makes no promise: its steps alone tell what becomes of them.

The group law does not read b, so that every point with an x other than zero lies on some curve that
it is right for. What is left are the points with x = 0, coordinates with bits above the degree, and
the ways in which points are compared and stored.
"""

from binary_field import DEGREE, ELEMENT_BITS, POLYNOMIAL, product, square, square_root
from curve_point import ORDER, WORD_MASK, added, doubled
from project_maker import ORDER_TWO, Key, half_trace, random_key


def of_order_three(x):
    """A point with this x and 2P = -P, on whatever curve that is, or None."""
    slope = half_trace(x ^ 1)
    return (x, product(x, x ^ slope)) if square(slope) ^ slope == x ^ 1 else None


def of_order_six(point):
    """The sum of a point of order three and of the point of order two on the same curve."""
    x, y = point
    return added(point, (0, square_root(square(y ^ x) ^ product(x, y ^ square(x)))))


def random_of_order_three(choice):
    point = None
    while point is None:
        point = of_order_three(choice.getrandbits(DEGREE - 1))
    return point


def wide(choice):
    """Any value of an element, its highest bit set."""
    return choice.getrandbits(ELEMENT_BITS) | 1 << ELEMENT_BITS - 1


def congruent(choice, value):
    """The same modulo the polynomial, with bits above the degree."""
    factor = choice.getrandbits(ELEMENT_BITS - 1 - DEGREE) | 1
    for bit in range(ELEMENT_BITS - 1 - DEGREE):
        value ^= POLYNOMIAL << bit if factor >> bit & 1 else 0
    return value


def words_of_both(point, mask):
    """The point with those words of y that the mask tells from its negative's."""
    x, y = point
    chosen = sum(WORD_MASK << 64 * word for word in range(3) if mask >> word & 1)
    return x, y ^ x & chosen


def points_off_the_curve(choice):
    """A base point and a public point by their name, for any scalar."""
    sound = random_key(choice)
    good, public = sound.base, sound.public_point()
    off, other = ((choice.getrandbits(162), choice.getrandbits(162)) for _ in range(2))
    yield "base-off-curve", off, public
    yield "public-off-curve", good, off
    yield "both-off-curve", off, other
    yield "other-public", good, random_key(choice).base
    yield "same-x", good, (good[0], off[1])
    yield "same-x-small", (5, 9), (5, 7)
    yield "order-twice", added(good, ORDER_TWO), public
    yield "public-order-twice", good, added(public, ORDER_TWO)
    yield "base-of-order-two", ORDER_TWO, public
    yield "public-of-order-two", good, ORDER_TWO
    yield "zero-points", (0, 0), (0, 0)
    yield "base-x-zero", (0, off[1]), public
    yield "public-x-zero", good, (0, off[0])
    yield "base-y-zero", (off[0], 0), public
    yield "base-doubled-to-x-zero", (1, 1), public
    for mask in range(1, 7):
        yield f"words-{mask}", off, words_of_both(off, mask)
        small = off[0] >> 64, off[1]
        yield f"words-{mask}-of-a-small-x", small, words_of_both(small, mask)


def wide_points(choice):
    """The same with bits at and above the degree."""
    sound = random_key(choice)
    good, public = sound.base, sound.public_point()
    for bit in (163, 170, 191):
        yield f"base-bit-{bit}", (good[0] | 1 << bit, good[1]), public
        yield f"public-bit-{bit}", good, (public[0], public[1] | 1 << bit)
    all_bits = (1 << ELEMENT_BITS) - 1
    yield "all-bits", (all_bits, all_bits), (all_bits, all_bits)
    for mask in range(1, 16):
        values = [wide(choice) if mask >> place & 1 else value
                  for place, value in enumerate((*good, *public))]
        yield f"wide-{mask}", tuple(values[:2]), tuple(values[2:])
    yield "congruent-base", (congruent(choice, good[0]), congruent(choice, good[1])), public
    yield "congruent-public", good, (congruent(choice, public[0]), congruent(choice, public[1]))
    for name, x, y in (("same-point", *good), ("negative", good[0], good[0] ^ good[1]),
                       ("other-y", good[0], public[1])):
        yield f"congruent-to-the-{name}", good, (congruent(choice, x), congruent(choice, y))
    for name, x in (("polynomial", POLYNOMIAL), ("multiple", congruent(choice, 0))):
        yield f"base-x-{name}", (x, wide(choice)), public
        yield f"public-x-{name}", good, (x, wide(choice))
    # Divided by one, the difference of y stays as it is.
    yield "difference-one", (good[0], wide(choice)), (good[0] ^ 1, wide(choice))
    yield "x-one", (1, wide(choice)), (1, wide(choice))


def multiples(name, base):
    """Keys of a base point alone, whose signatures verify where signing and verifying agree."""
    yield f"{name}-once", Key(base, 1, base)
    yield f"{name}-twice", Key(base, 2, doubled(base))
    yield f"{name}-minus-once", Key(base, ORDER - 1, (base[0], base[0] ^ base[1]))


def keys_of_small_order(choice, e):
    """Keys whose points have few multiples, so that many signatures verify; some make none of e."""
    for number in range(10):
        three = random_of_order_three(choice)
        yield from multiples(f"order-three-{number}", three)
        six = of_order_six(three)
        yield from multiples(f"order-six-{number}", six)
        yield f"orders-six-and-three-{number}", Key(six, choice.randrange(3, ORDER - 3), three)
    # Each multiple has the same x: r is zero modulo the order, or always a number for which s is.
    never = of_order_three(ORDER)
    yield "r-of-zero", Key(never, choice.randrange(3, ORDER - 3), never)
    yield "s-of-zero", Key(three, -e * pow(three[0] % ORDER, -1, ORDER) % ORDER, three)


def keys_of_mixed_words(e):
    """Keys for which (e, e) is a signature of e where public and base point count as the same.

    Both have x = e and the base point is of order three, as far as there is one: x of its double is
    e again, and both scalars of the verdict are one.
    """
    base = of_order_three(e)
    for mask in range(8 if base else 0):
        yield f"words-{mask}-of-a-digest", Key(base, 1, words_of_both(base, mask))


def unsound_keys(choice, e):
    """All of them by name; one makes no signature of this number of a message, and one of none."""
    bases = set()
    for points in (points_off_the_curve, wide_points):
        for name, base, public in points(choice):
            yield name, Key(base, choice.randrange(3, ORDER - 3), public)
            if base not in bases:
                yield from multiples(name, base)
            bases.add(base)
    yield from keys_of_small_order(choice, e)
