"""Whether a key is what keys have to be (SEC 1, 3.2): what reading one never asks."""

from functools import lru_cache

from binary_field import DEGREE, trace
from curve_point import COEFFICIENT_A, ORDER, is_on_curve, multiplied


def is_sound_coordinate(element):
    return element.is_whole and element.value >> DEGREE == 0


def is_of_prime_order(point):
    """For a point of the curve, whose order is twice a prime.

    The points of that prime order are the doubles of points, and these are the points whose x has
    the trace of a (G. Seroussi, Compact representation of elliptic curve points over F2n, 1998).
    """
    return trace(point[0]) == trace(COEFFICIENT_A)


def is_sound_point(x, y):
    point = x.value, y.value
    return (is_sound_coordinate(x) and is_sound_coordinate(y)
            and is_on_curve(point) and is_of_prime_order(point))


@lru_cache(maxsize=1024)
def is_sound(key):
    """Whether both points are of the curve's prime order and the scalar, if any, is that of both.

    For a key that has what verifying requires.
    """
    if not (is_sound_point(key.base_x, key.base_y) and is_sound_point(key.public_x, key.public_y)):
        return False
    return key.scalar is None or (0 < key.scalar < ORDER
                                  and multiplied(key.scalar, key.base()) == key.public())
