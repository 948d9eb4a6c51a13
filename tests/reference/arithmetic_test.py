"""The arithmetic of the reference, judged by published vectors and by laws.

Random operands come from SIGN_TEST_SEED or a fresh seed, which is printed.
"""

import hashlib
import json
import os
import random
import re
import secrets
import unittest
from pathlib import Path

import core_text
import project_file
import signature_scheme
from binary_field import (DEGREE, ELEMENT_BITS, POLYNOMIAL, product, quotient, quotient_by_halving,
                          reduced, square)
from curve_point import (ORDER, PUBLISHED_BASE, added, compared_by_words, doubled, is_on_curve,
                         multiplied, multiplied_twin, signed_digits, x_of_multiple)
from project_key import project_key
from project_maker import ORDER_TWO
from ripemd160 import ripemd160
from unsound_keys import keys_of_mixed_words, of_order_three, unsound_keys

VECTORS = Path(__file__).resolve().parents[1] / "vectors"
ALL_BITS = (1 << ELEMENT_BITS) - 1
SEED = os.environ.get("SIGN_TEST_SEED") or secrets.token_hex(4)


def cases(name):
    """The blocks of a file of vectors, each a dictionary of its lines."""
    text = (VECTORS / name).read_text(encoding="utf-8")
    for block in re.split(r"\n\s*\n", text):
        values = dict(re.findall(r"^(\w+) = (.*)$", block, re.MULTILINE))
        if len(values) > 1:
            yield values


def number(case, name):
    return int(case[name], 16)


def point(case):
    return number(case, "Qx"), number(case, "Qy")


def sha1_number(case):
    return int.from_bytes(hashlib.sha1(bytes.fromhex(case["Msg"])).digest(), "big")


def long_product(a, b):
    """By the definition: one bit of b at a time, reduced after each step."""
    result = 0
    for bit in f"{b:b}":
        result <<= 1
        if result >> DEGREE:
            result ^= POLYNOMIAL
        if bit == "1":
            result ^= a
    return result


class Digest(unittest.TestCase):
    def test_gives_the_published_values(self):
        published = list(cases("ripevectors.txt"))
        self.assertGreaterEqual(len(published), 8)
        for case in published:
            message = bytes.fromhex(case["Msg"])[:int(case["Len"]) // 8]
            self.assertEqual(ripemd160(message).hex(), case["MD"])

    def test_gives_the_published_value_of_a_million_letters(self):
        self.assertEqual(ripemd160(b"a" * 1_000_000).hex(),
                         "52783243c1697bdbe16d37f97f68f08325dc1528")

    def test_of_project_files_gives_the_published_values(self):
        published = list(cases("rfc-1321.txt"))
        self.assertGreaterEqual(len(published), 7)
        for case in published:
            message = bytes.fromhex(case["Msg"])[:int(case["Len"]) // 8]
            self.assertEqual(hashlib.md5(message).hexdigest(), case["MD"])


class Field(unittest.TestCase):
    def setUp(self):
        choice = random.Random(SEED)
        self.elements = [0, 1, 2, (1 << DEGREE) - 1, 1 << 162]
        self.elements += [choice.getrandbits(DEGREE) for _ in range(15)]

    def test_product_is_that_of_the_definition(self):
        for a in self.elements:
            for b in self.elements:
                self.assertEqual(product(a, b), long_product(a, b))

    def test_square_is_the_product_with_itself(self):
        for a in self.elements:
            self.assertEqual(square(a), product(a, a))

    def test_quotient_times_divisor_is_the_dividend(self):
        for a in self.elements:
            for b in self.elements[1:]:
                self.assertEqual(product(quotient(a, b), b), a)

    def test_quotient_of_reduced_operands_is_that_of_the_binary_algorithm(self):
        for a in self.elements:
            for b in self.elements[1:]:
                self.assertEqual(quotient(a, b), quotient_by_halving(a, b))

    def test_quotient_by_a_multiple_of_the_polynomial_is_zero(self):
        for divisor in (0, POLYNOMIAL, POLYNOMIAL << 28, POLYNOMIAL << 28 ^ POLYNOMIAL << 3):
            for a in (0, 1, self.elements[-1], ALL_BITS):
                self.assertEqual(quotient(a, divisor), 0)

    def test_quotient_of_operands_above_the_degree_is_one_of_its_class(self):
        choice = random.Random(SEED)
        for _ in range(20):
            a, b = (choice.getrandbits(ELEMENT_BITS) | 1 << ELEMENT_BITS - 1 for _ in range(2))
            for dividend, divisor in ((a, b), (a, reduced(b)), (reduced(a), b)):
                result = quotient(dividend, divisor)
                self.assertEqual(long_product(reduced(result), reduced(divisor)), reduced(dividend))

    def test_quotient_by_one_is_the_dividend_as_it_stands(self):
        self.assertEqual(quotient(ALL_BITS, 1), ALL_BITS)

    def test_reduction_reads_352_bits(self):
        wide = 1 << ELEMENT_BITS - 1
        self.assertEqual(product(wide, 1 << 160), reduced(long_product(reduced(wide), 1 << 160)))
        self.assertEqual(product(wide, 1 << 161), 0)
        self.assertEqual(square(wide), 0)


class Points(unittest.TestCase):
    def test_multiples_of_the_published_base_point_are_the_published_keys(self):
        published = list(cases("fips186-2_KeyPair_B-163.rsp"))
        self.assertEqual(len(published), 10)
        for case in published:
            self.assertEqual(multiplied(number(case, "d"), PUBLISHED_BASE), point(case))
            self.assertEqual(x_of_multiple(number(case, "d"), PUBLISHED_BASE), point(case)[0])

    def test_public_keys_are_told_as_published(self):
        published = list(cases("fips186-2_PKV_B-163.rsp"))
        self.assertEqual(len(published), 12)
        for case in published:
            self.assertEqual(is_on_curve(point(case)), case["Result"].startswith("P"))

    def test_signed_digits_are_a_form_of_the_number_without_neighbours(self):
        for scalar in (1, 2, 3, ORDER, ORDER - 1, (1 << DEGREE) - 1):
            digits = signed_digits(scalar)
            value = 0
            for digit in digits:
                value = 2 * value + digit
            self.assertEqual(value, scalar)
            self.assertTrue(all(0 in pair for pair in zip(digits, digits[1:], strict=False)))

    def test_x_of_the_point_at_infinity_is_that_of_the_point_before_it(self):
        three = of_order_three(ORDER)
        self.assertIsNone(multiplied(3, three))
        self.assertEqual(x_of_multiple(3, three), three[0])

    def test_points_without_a_quotient_have_a_slope_of_zero(self):
        self.assertEqual(doubled(ORDER_TWO), (1, 1))
        self.assertEqual(added((5, 9), (5, 2), compared_by_words), (1, 8))

    def test_twin_multiplication_is_the_sum_of_both(self):
        choice = random.Random(SEED)
        for _ in range(5):
            scalars = [choice.randrange(1, ORDER) for _ in range(4)]
            p, q = (multiplied(scalar, PUBLISHED_BASE) for scalar in scalars[:2])
            u1, u2 = scalars[2:]
            self.assertEqual(multiplied_twin(p, q, u1, u2),
                             added(multiplied(u1, p), multiplied(u2, q)))

    def test_a_point_and_its_negative_give_none(self):
        x, y = PUBLISHED_BASE
        self.assertIsNone(added((x, y), (x, x ^ y)))
        self.assertEqual(added((x, y), (x, y)), doubled((x, y)))

    def test_words_tell_a_point_from_its_negative_by_the_top_word_of_x(self):
        wide, narrow = 1 << 128 | 5, 5
        self.assertEqual(compared_by_words((wide, 9), (wide, 9 ^ wide)), -1)
        self.assertEqual(compared_by_words((narrow, 9), (narrow, 9 ^ narrow)), 1)
        self.assertEqual(compared_by_words((narrow, 9), (narrow, 8)), 0)


class Signatures(unittest.TestCase):
    def test_have_the_published_numbers(self):
        published = list(cases("fips186-3_SigGen_B-163_SHA-1.txt"))
        self.assertEqual(len(published), 15)
        for case in published:
            pair = signature_scheme.signed_number(PUBLISHED_BASE, number(case, "d"),
                                                  sha1_number(case), number(case, "k"))
            self.assertEqual(pair, (number(case, "R"), number(case, "S")))

    def test_have_the_published_verdicts(self):
        published = list(cases("fips186-2_SigVer_B-163.rsp"))
        self.assertEqual(len(published), 15)
        for case in published:
            r, s = number(case, "R"), number(case, "S")
            x = signature_scheme.combined_x(PUBLISHED_BASE, point(case), sha1_number(case), r, s)
            self.assertEqual(x % ORDER == r, case["Result"].startswith("P"))

    def test_of_projects_have_the_texts_of_an_independent_computation(self):
        text = (VECTORS / "signatures.json").read_text(encoding="utf-8")
        vectors = json.loads(text)["signatures"]
        self.assertEqual(len(vectors), 30)
        for vector in vectors:
            key = project_key(project_file.load(VECTORS / vector["project"]))
            message, written = bytes.fromhex(vector["message"]), vector["text"].encode()
            self.assertEqual(
                signature_scheme.signed(key.base(), key.scalar, message, int(vector["nonce"], 16)),
                written)
            self.assertTrue(
                signature_scheme.is_valid(key.base(), key.public(), message, written))
            self.assertTrue(
                signature_scheme.was_made_with(key.base(), key.scalar, message, written))
            for other in (message + b"\0", message[1:]):
                self.assertFalse(
                    signature_scheme.is_valid(key.base(), key.public(), other, written))
                self.assertFalse(
                    signature_scheme.was_made_with(key.base(), key.scalar, other, written))

    def test_of_another_form_than_signing_gives_are_told(self):
        scalar, message = 11, b"message"
        text = signature_scheme.signed(PUBLISHED_BASE, scalar, message, 7)
        r, s, _ = signature_scheme.halves(text)
        rendered = signature_scheme.rendered
        for written, is_right in (
                (text, True), (text + b"A===", False), (text[:-1], False), (b"", False),
                (rendered(0, s), False), (rendered(r, 0), False), (rendered(r + ORDER, s), False),
                (rendered(r, s + ORDER), False), (rendered(r, ORDER - s), True)):
            self.assertEqual(
                signature_scheme.was_made_with(PUBLISHED_BASE, scalar, message, written), is_right,
                written)

    def test_with_an_x_of_zero_have_an_r_of_zero(self):
        text = signature_scheme.signed(ORDER_TWO, 5, b"message", 1)
        self.assertEqual(signature_scheme.halves(text)[0], 0)
        self.assertTrue(signature_scheme.was_made_with(ORDER_TWO, 5, b"message", text))
        self.assertFalse(signature_scheme.was_made_with(PUBLISHED_BASE, 5, b"message", text))


class UnsoundKeys(unittest.TestCase):
    def setUp(self):
        self.message = b"message"
        self.e = signature_scheme.message_number(self.message)
        self.keys = dict(unsound_keys(random.Random(SEED), self.e))

    def can_sign(self, name, e):
        return signature_scheme.can_be_signed(self.keys[name].base, self.keys[name].scalar, e)

    def test_sign_but_where_every_r_or_every_s_is_zero(self):
        self.assertFalse(self.can_sign("r-of-zero", self.e))
        self.assertFalse(self.can_sign("r-of-zero", self.e + 1))
        self.assertFalse(self.can_sign("s-of-zero", self.e))
        for name, e in (("s-of-zero", self.e + 1), ("zero-points", self.e), ("all-bits", self.e)):
            self.assertTrue(self.can_sign(name, e), name)

    def test_of_mixed_words_verify_where_the_top_word_is_that_of_the_base(self):
        judged = 0
        for message in (b"a", b"b", b"c", b"d", b"e"):
            e = signature_scheme.message_number(message)
            text = signature_scheme.rendered(e, e)
            for mask, (_, key) in enumerate(keys_of_mixed_words(e)):
                self.assertEqual(signature_scheme.is_valid(key.base, key.public, message, text),
                                 mask < 4)
                judged += 1
        self.assertGreater(judged, 0)

    def verdict_on_a_signature(self, key, nonce):
        text = signature_scheme.signed(key.base, key.scalar, self.message, nonce)
        self.assertTrue(signature_scheme.was_made_with(key.base, key.scalar, self.message, text))
        return signature_scheme.is_valid(key.base, key.public, self.message, text)

    def test_have_signatures_that_verify_and_others_that_do_not(self):
        choice = random.Random(SEED)
        for name in ("base-off-curve-minus-once", "order-three-0-once"):
            verdicts = (self.verdict_on_a_signature(self.keys[name], choice.randrange(1, ORDER))
                        for _ in range(60))
            self.assertTrue(any(verdicts), name)
            self.assertFalse(all(verdicts), name)


class Text(unittest.TestCase):
    def test_of_known_bytes(self):
        for data, text in (("616263", b"hJ2Y"), ("010203040506", b"BIwAEUgB"),
                           ("61626364", b"hJ2YkB=="), ("6162636465", b"hJ2YkVG=")):
            self.assertEqual(core_text.encode(bytes.fromhex(data)), text)
            raw, count = core_text.decode(text)
            self.assertEqual(raw[:count].hex(), data)

    def test_of_odd_forms(self):
        self.assertEqual(core_text.decode(b"hJ2YA"), (b"", 0))
        self.assertEqual(core_text.decode(b"===="), (b"\0\0\0", -1))
        self.assertEqual(core_text.decode(b"!\xff=A"), (b"\0\0\0", 2))


if __name__ == "__main__":
    print(f"seed {SEED}", flush=True)
    unittest.main()
