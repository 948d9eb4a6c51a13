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
from binary_field import DEGREE, POLYNOMIAL, DivisionByZero, inverse, product, quotient, square
from curve_point import (ORDER, PUBLISHED_BASE, added, compared_by_words, doubled, is_on_curve,
                         multiplied, multiplied_twin)
from project_key import project_key
from project_maker import ORDER_TWO
from ripemd160 import ripemd160
from signature_engine import has_the_order

VECTORS = Path(__file__).resolve().parents[1] / "vectors"
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

    def test_zero_has_no_inverse(self):
        self.assertRaises(DivisionByZero, inverse, 0)


class Points(unittest.TestCase):
    def test_multiples_of_the_published_base_point_are_the_published_keys(self):
        published = list(cases("fips186-2_KeyPair_B-163.rsp"))
        self.assertEqual(len(published), 10)
        for case in published:
            self.assertEqual(multiplied(number(case, "d"), PUBLISHED_BASE), point(case))

    def test_public_keys_are_told_as_published(self):
        published = list(cases("fips186-2_PKV_B-163.rsp"))
        self.assertEqual(len(published), 12)
        for case in published:
            self.assertEqual(is_on_curve(point(case)), case["Result"].startswith("P"))
            self.assertEqual(has_the_order(point(case)), case["Result"].startswith("P"))

    def test_on_the_curve_and_of_another_order_are_told(self):
        twice_the_order = added(PUBLISHED_BASE, ORDER_TWO)
        for other in (ORDER_TWO, twice_the_order):
            self.assertTrue(is_on_curve(other))
            self.assertFalse(has_the_order(other))
        self.assertTrue(has_the_order(PUBLISHED_BASE))

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
            self.assertTrue(signature_scheme.has_the_form(written))
            for other in (message + b"\0", message[1:]):
                self.assertFalse(
                    signature_scheme.is_valid(key.base(), key.public(), other, written))
                self.assertFalse(
                    signature_scheme.was_made_with(key.base(), key.scalar, other, written))

    def test_of_another_form_than_signing_gives_are_told(self):
        r, s = ORDER - 1, 7
        text = signature_scheme.rendered(r, s)
        self.assertTrue(signature_scheme.has_the_form(text))
        for other in (text.replace(b"A", b"!", 1), text + b"A===", text[:-1], b"",
                      signature_scheme.rendered(0, s), signature_scheme.rendered(r, 0),
                      signature_scheme.rendered(ORDER, s),
                      core_text.encode(b"\5\0\6\0")):
            self.assertFalse(signature_scheme.has_the_form(other), other)


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
