"""The rule that decides each request, in tables of a request and its rule."""

import struct
import tempfile
import unittest
import urllib.parse
from pathlib import Path

import signature_scheme
from curve_point import ORDER, PUBLISHED_BASE, added, multiplied
from key_soundness import is_of_prime_order
from project_file import MAGIC
from project_key import BASE_X, BASE_Y, PRIVATE_SCALAR, PUBLIC_X, PUBLIC_Y
from project_maker import (ORDER_TWO, Key, container, element, key_values, scalar_value, sealed,
                           with_entry)
from request_driver import expected_answer
from rules import ENDS, RULES
from signature_variants import packed
from unsound_keys import of_order_three

JSON = b"application/json"
MESSAGE = b"abc"
KEY = Key(multiplied(5, PUBLISHED_BASE), 7)
VALUES = key_values(KEY)
SIGNATURE = signature_scheme.signed(KEY.base, KEY.scalar, MESSAGE, 11)
R, S, _ = signature_scheme.halves(SIGNATURE)

# An announced length, what arrives, and the rule.
FORM_BODIES = (
    (None, b"sig_create=true", "form.length-unset"),
    (b"", b"x", "form.length-zero"),
    (b"abc", b"x", "form.length-zero"),
    (b"-18446744073709551616", b"x", "form.length-range"),
    (b"-1", b"x", "form.length-range"),
    (b"18446744073709551615", b"", "form.length-range"),
    (b"18446744073709551614", b"x", "form.length-impossible"),
    (b"9223372036854775807", b"", "form.length-impossible"),
    (b"9223372036854775806", b"x", "form.length-memory"),
    (b"140737488355328", b"", "form.length-memory"),
    (b"1", b"", "form.body-empty"),
    (b"999", b"x", "request.mode"),
    (b" 15x", b"sig_create=true", "request.project"),
    (b"14", b"sig_create=true", "request.mode"),
    (b"25", b"sig_create=true\0&project=p", "request.project"),
)
JSON_BODIES = (
    (None, b"{}", "json.length-unset"),
    (b"", b"{}", "json.length-zero"),
    (b"2x", b"{}", "json.length-zero"),
    (b"-0", b"{}", "json.length-zero"),
    (b"18446744073709551616", b"{}", "json.length-zero"),
    (b"-1", b"{}", "json.length-impossible"),
    (b"9223372036854775807", b"", "json.length-impossible"),
    (b"9223372036854775806", b"{}", "json.length-memory"),
    (b"140737488355328", b"{}", "json.length-memory"),
    (b"3", b"{}", "json.body-short"),
    (b"1", b"", "json.body-short"),
    (b"3", b"\0]", "json.body-short"),
    (b"3", b"{}\0", "json.zero-byte"),
    (b"2", b"\0]", "json.zero-byte"),
    (b"2", b"{}\0", "request.mode"),
    (b"+2", b"{}", "request.mode"),
    (b"1", b"{}", "json.syntax"),
)

JSON_TEXTS = (
    (b" ", "json.syntax"),
    (b"\xef\xbb\xbf", "json.syntax"),
    (b"\xef\xbb{}", "json.syntax"),
    (b"]", "json.syntax"),
    (b"{", "json.syntax"),
    (b"{}x", "json.syntax"),
    (b"{}{}", "json.syntax"),
    (b'{"project":5,', "json.syntax"),
    (b'{"a":01}', "json.syntax"),
    (b'{"a":1.}', "json.syntax"),
    (b'{"a":"\\ud800"}', "json.syntax"),
    (b'{"a":"\xff"}', "json.syntax"),
    (b'"abc', "json.syntax"),
    (b"nul", "json.syntax"),
    (b"-", "json.syntax"),
    (b"12.", "json.syntax"),
    (b"0.5e+", "json.syntax"),
    (b"9" * 400 + b".", "json.syntax"),
    (b'"\\ud800"', "json.syntax"),
    (b"1e999", "json.number"),
    (b"-" + b"9" * 400, "json.number"),
    (b'{"a":1e999}', "json.number"),
    (b'{"a":[1e309,', "json.number"),
    (b'{"a":1e999.', "json.number"),
    (b'{"project":null,"a":1e999}', "json.number"),
    (b'{"a":[1,],"b":1e999}', "json.syntax"),
    (b"[]", "json.no-object"),
    (b"\xef\xbb\xbf null", "json.no-object"),
    (b'"{}"', "json.no-object"),
    (b"-1e-999", "json.no-object"),
    (b'[{"mode":5}]', "json.no-object"),
    (b"[1e999", "json.no-object"),
    (b"5x", "json.no-object"),
    (b'"{}"\xff', "json.no-object"),
    (b'{"mode":5}', "json.member-type"),
    (b'{"mode":"x","mode":null}', "json.member-type"),
    (b'{"project":[]}', "json.member-type"),
    (b'{"encoding":{}}', "json.member-type"),
    (b'{"genPairs":"true"}', "json.member-type"),
    (b'{"signature":{"data":1}}', "json.member-type"),
    (b'{"signature":{"signature":true},"mode":"x"}', "json.member-type"),
    (b'{"signature":{"file":1},"signature":"x"}', "request.mode"),
    (b'{"mode":null,"mode":"sign"}', "request.mode"),
    (b'{"Mode":5}', "request.mode"),
    (b'{"mode":"generateSignature"}', "request.project"),
    (b'{"mode":"verifySignature","project":"p","signature":"s"}', "request.no-signature"),
    (b'{"mode":"generateSignature","project":"p","signature":[]}', "request.no-input"),
)

SIGN, VERIFY = {"sig_create": b"true", "project": b"p"}, {"sig_verify": b"true", "project": b"p"}
FIELDS = (
    ({"project": b"p"}, "request.mode"),
    ({"sig_create": b"True", "project": b"p"}, "request.mode"),
    (SIGN | {"project": b""}, "request.project"),
    (VERIFY | {"project": b""}, "request.project"),
    (VERIFY, "request.no-signature"),
    (VERIFY | {"sig_data_encoding": b"json"}, "request.no-signature"),
    (SIGN | VERIFY, "request.no-signature"),
    (VERIFY | {"sig": b"s"}, "request.no-input"),
    (SIGN | {"sig_data_encoding": b"json"}, "request.no-input"),
    (SIGN | {"sig_data": b"x", "sig_file": b"x", "sig_data_encoding": b"json"},
     "request.two-inputs"),
    (SIGN | {"sig_data": b"x", "sig_data_encoding": b"urlencode"}, "request.data-encoding"),
    (VERIFY | {"sig": b"s", "sig_file": b"x", "sig_data_encoding": b"json"},
     "request.data-encoding"),
    # What stands behind the first zero byte of a path does not count, and the path is empty.
    (SIGN | {"sig_data": b"x", "project": b"\0p"}, "project.open"),
    (SIGN | {"sig_file": b"\0x"}, "file.open"),
)

# Data in base64.
BASE64 = (
    (b"Q", "base64.length"),
    (b"QUJD=", "base64.length"),
    (b"=AAA", "base64.padding"),
    (b"QQ=A", "base64.padding"),
    (b"QQ=!", "base64.padding"),
    (b"QUJ=QUJD", "base64.padding"),
    (b"QUI=!AAA", "base64.padding"),
    (b"Q!==", "base64.character"),
    (b"!UI=QUJD", "base64.character"),
    (b"QU-_", "base64.character"),
    (b"QUJDQ\xff==", "base64.character"),
    (b"====", "data.empty"),
    (b"A===", "data.empty"),
    (b"\0===", "data.empty"),
    (b"AAAA====", "project.open"),
)

# The size of a file to sign, or None for another name, and the rule.
FILES = (
    ("nothing", None, "file.open"),
    ("empty/", None, "file.open"),
    (".", None, "file.directory"),
    ("/dev/null", None, "file.no-regular"),
    ("empty", 0, "file.empty"),
    ("2-31", 2**31, "file.too-large"),
    ("below-2-32", 2**32 - 1, "file.too-large"),
    ("2-32", 2**32, "file.no-bytes"),
    ("2-33", 2**33, "file.no-bytes"),
    ("small", 3, "project.open"),
    ("behind-2-32", 2**32 + 3, "project.open"),
)

CONTENT = container(VALUES.items())


# The content of a project file, or the name of what is none.
PROJECTS = (
    ("nothing", "project.open"),
    (".", "project.directory"),
    ("/dev/null", "project.no-regular"),
    (b"", "project.header"),
    (CONTENT[:23], "project.header"),
    (b"VLT1" + CONTENT[4:], "project.magic"),
    (bytes(24), "project.magic"),
    (sealed(b"", 1), "project.no-body"),
    (CONTENT[:24], "project.no-body"),
    (CONTENT[:-1], "project.digest"),
    (CONTENT[:8] + bytes(16) + CONTENT[24:], "project.digest"),
    (CONTENT[:4] + struct.pack("<I", 2**32 - 1) + CONTENT[8:], "project.entries"),
    (sealed(b"x", 1), "project.entries"),
    (sealed(bytes(23), 2), "project.entries"),
    (sealed(bytes(24), 2), "project.entry-empty"),
    (with_entry(CONTENT, 4, size=0, offset=2**32 - 1), "project.entry-empty"),
    (with_entry(CONTENT, 4, offset=len(CONTENT) - 31), "project.entry-range"),
    (with_entry(CONTENT, 0, offset=2**32 - 1, size=2**32 - 1), "project.entry-range"),
    (with_entry(with_entry(CONTENT, 3, size=0), 2, offset=len(CONTENT)), "project.entry-range"),
    (with_entry(with_entry(CONTENT, 3, size=0), 4, offset=len(CONTENT)), "project.entry-empty"),
    (MAGIC + bytes(20), "key.absent"),
    (MAGIC + bytes(4) + b"x" * 20, "key.absent"),
    (CONTENT, "signature.made"),
)


def stating(bits, *identifiers):
    """These values of the key with another number of bits in front."""
    return {identifier: struct.pack("<I", bits) + VALUES[identifier][4:]
            for identifier in identifiers}


OTHER = Key(KEY.base, 8).public_point()
# What replaces attributes of a sound key, and the rules for signing and for verifying.
KEYS = (
    ({}, "signature.made", "signature.valid"),
    ({PRIVATE_SCALAR: None}, "key.absent", "signature.valid"),
    ({PUBLIC_Y: None}, "key.absent", "key.absent"),
    ({BASE_X: None}, "key.absent", "key.absent"),
    ({PRIVATE_SCALAR: bytes(297)}, "key.too-large", "signature.valid"),
    ({PUBLIC_X: bytes(297)}, "key.too-large", "key.too-large"),
    ({BASE_Y: VALUES[BASE_Y].ljust(297)}, "key.too-large", "key.too-large"),
    ({BASE_Y: VALUES[BASE_Y].ljust(296)}, "signature.made", "signature.valid"),
    ({PRIVATE_SCALAR: scalar_value(7, 321)}, "key.too-many-bits", "signature.valid"),
    ({PRIVATE_SCALAR: scalar_value(7, 2**31 | 320)}, "signature.made", "signature.valid"),
    (stating(513, PUBLIC_X, PUBLIC_Y), "key.too-many-bits", "key.too-many-bits"),
    (stating(2**31, BASE_X), "key.too-many-bits", "key.too-many-bits"),
    ({PRIVATE_SCALAR: scalar_value(0, 0)}, "key.zero-scalar", "signature.valid"),
    ({PRIVATE_SCALAR: scalar_value(0, 64)}, "key.zero-scalar", "signature.valid"),
    ({PRIVATE_SCALAR: b"\7"}, "key.zero-scalar", "signature.valid"),
    (stating(164, PUBLIC_X), "key.bits-differ", "key.bits-differ"),
    (stating(0, PUBLIC_Y), "key.bits-differ", "key.bits-differ"),
    (stating(0, PUBLIC_X, PUBLIC_Y), "key.no-bits", "key.no-bits"),
    (stating(164, PUBLIC_X, PUBLIC_Y), "signature.made", "key.degree"),
    (stating(512, PUBLIC_X, PUBLIC_Y), "signature.made", "key.degree"),
    (stating(162, BASE_Y), "key.degree", "key.degree"),
    # The scalar is asked for before the public point, and that before the base point.
    ({PRIVATE_SCALAR: None, PUBLIC_X: bytes(297)}, "key.absent", "key.too-large"),
    ({PUBLIC_X: None, BASE_X: bytes(297)}, "key.absent", "key.absent"),
    (stating(0, PUBLIC_X, PUBLIC_Y) | {BASE_X: None}, "key.no-bits", "key.no-bits"),
    (stating(164, PUBLIC_X, PUBLIC_Y) | {BASE_X: None}, "key.absent", "key.absent"),
)

# Keys under which nothing that another key has signed verifies, with the rule for verifying.
WRONG_KEYS = (
    (Key(KEY.base, 8), {}, "signature.mismatch"),
    (Key(KEY.base, 8), {PRIVATE_SCALAR: None}, "signature.mismatch"),
    (Key(KEY.base, 8), {PRIVATE_SCALAR: scalar_value(0, 64)}, "signature.mismatch"),
    (Key(KEY.base, 8), {PRIVATE_SCALAR: scalar_value(8, 320)}, "signature.mismatch"),
    (Key(KEY.base, 9, OTHER), {}, "key.unsound"),
    (Key(KEY.base, ORDER + 8), {}, "key.unsound"),
    (Key(KEY.base, 8), {PRIVATE_SCALAR: scalar_value(0, 65)}, "key.unsound"),
    (Key(KEY.base, 8, (KEY.base[0], 1)), {}, "key.unsound"),
    (Key((1, 5), 8, OTHER), {PRIVATE_SCALAR: None}, "key.unsound"),
    (Key((0, 0), 8, (0, 0)), {}, "key.unsound"),
    (Key(KEY.base, 8, ORDER_TWO), {PRIVATE_SCALAR: None}, "key.unsound"),
    (Key(added(KEY.base, ORDER_TWO), 8, OTHER), {PRIVATE_SCALAR: None}, "key.unsound"),
    (Key(KEY.base, 8, (OTHER[0] | 1 << 163, OTHER[1])), {}, "key.unsound"),
    (Key(KEY.base, 8), {PUBLIC_X: element(OTHER[0])[:-1]}, "key.unsound"),
)

SIGNATURES = (
    (b"\0" + SIGNATURE, "signature.empty"),
    (b"A" * 129, "signature.too-long"),
    (b"A" * 132, "signature.too-long"),
    (b"A" * 127, "signature.groups"),
    (SIGNATURE + b"A", "signature.groups"),
    (b"====", "signature.padding"),
    (b"=" * 128, "signature.padding"),
    (b"A" * 60, "signature.too-many-bytes"),
    (b"A" * 59 + b"=", "signature.too-many-bytes"),
    (b"A===", "signature.no-bytes"),
    (b"AA======", "signature.no-bytes"),
    (b"=AAAA=A=AAAA", "signature.r-zero"),
    (SIGNATURE[:-1] + b"=", "signature.odd"),
    (b"AAA=AAAA", "signature.odd"),
    (packed(0, S), "signature.r-zero"),
    (packed(0, 0), "signature.r-zero"),
    (packed(0, ORDER), "signature.r-zero"),
    (packed(R, 0), "signature.s-zero"),
    (packed(ORDER, 0), "signature.s-zero"),
    (packed(ORDER, S), "signature.r-range"),
    (packed(ORDER, ORDER), "signature.r-range"),
    (packed(R, ORDER), "signature.s-range"),
    (packed(1, ORDER), "signature.s-range"),
    (packed(1, S), "signature.r-padded"),
    (packed(2**64 - 1, 1, 17), "signature.r-padded"),
    (packed(2**64, 1), "signature.mismatch"),
    (packed(1, 1, 16), "signature.mismatch"),
    (packed(S, R), "signature.mismatch"),
    (SIGNATURE, "signature.valid"),
    (SIGNATURE + b"\0x", "signature.valid"),
    (packed(R, ORDER - S), "signature.valid"),
)

# Every multiple of the base point has the same x, for which r is zero modulo the order.
NO_SIGNATURE = Key(of_order_three(ORDER), 5, OTHER)


def codes_of_the_tables():
    rows = [*FORM_BODIES, *JSON_BODIES, *JSON_TEXTS, *FIELDS, *BASE64, *FILES, *PROJECTS,
            *WRONG_KEYS, *SIGNATURES]
    return ({row[-1] for row in rows} | {rule for row in KEYS for rule in row[1:]}
            | {"signature.none"})


class Rules(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def path(self, name):
        return bytes(self.folder / name)

    def assert_rule(self, rule, content_type, length, body, row=None):
        environment = {b"CONTENT_TYPE": content_type}
        if length is not None:
            environment[b"CONTENT_LENGTH"] = length
        with self.subTest(row or body):
            self.assertEqual(expected_answer(environment, body).rule, rule)

    def assert_rule_of_fields(self, rule, fields, row=None):
        body = urllib.parse.urlencode(fields).encode()
        self.assert_rule(rule, b"", b"%d" % len(body), body, row)

    def assert_rules_of_key(self, key, replaced, signing, verifying):
        values = key_values(key) | replaced
        (self.folder / "key").write_bytes(
            container((name, value) for name, value in values.items() if value is not None))
        fields = {"project": self.path("key"), "sig_data": MESSAGE, "sig": SIGNATURE}
        if signing is not None:
            self.assert_rule_of_fields(signing, fields | {"sig_create": "true"}, (key, replaced))
        self.assert_rule_of_fields(verifying, fields | {"sig_verify": "true"}, (key, replaced))

    def test_of_bodies_and_their_lengths(self):
        for content_type, rows in ((b"", FORM_BODIES), (JSON, JSON_BODIES)):
            for length, body, rule in rows:
                self.assert_rule(rule, content_type, length, body, (content_type, length, body))

    def test_of_json_texts(self):
        for text, rule in JSON_TEXTS:
            self.assert_rule(rule, JSON, b"%d" % len(text), text)

    def test_of_the_fields_of_a_request(self):
        for fields, rule in FIELDS:
            self.assert_rule_of_fields(rule, fields)

    def test_of_data_in_base64(self):
        for text, rule in BASE64:
            fields = {"project": self.path("nothing"), "sig_data": text}
            self.assert_rule_of_fields(rule, SIGN | fields | {"sig_data_encoding": b"base64"}, text)

    def test_of_files(self):
        for name, size, rule in FILES:
            if size is not None:
                with open(self.folder / name, "wb") as file:
                    file.truncate(size)
            fields = {"project": self.path("nothing"),
                      "sig_file": self.path(name) + (b"/" if name.endswith("/") else b"")}
            self.assert_rule_of_fields(rule, SIGN | fields, name)
            self.assert_rule_of_fields(rule, VERIFY | fields | {"sig": SIGNATURE}, name)

    def test_of_project_files(self):
        for project, rule in PROJECTS:
            path = self.path(project if isinstance(project, str) else "project")
            if isinstance(project, bytes):
                Path(path.decode()).write_bytes(project)
            self.assert_rule_of_fields(rule, SIGN | {"project": path, "sig_data": MESSAGE}, project)

    def test_of_the_values_of_a_key(self):
        for replaced, signing, verifying in KEYS:
            self.assert_rules_of_key(KEY, replaced, signing, verifying)

    def test_of_keys_under_which_nothing_verifies(self):
        for key, replaced, verifying in WRONG_KEYS:
            self.assert_rules_of_key(key, replaced, None, verifying)
        self.assert_rules_of_key(NO_SIGNATURE, {}, "signature.none", "key.unsound")

    def test_of_signatures(self):
        (self.folder / "project").write_bytes(CONTENT)
        for text, rule in SIGNATURES:
            self.assert_rule_of_fields(rule, VERIFY | {"project": self.path("project"), "sig": text,
                                                    "sig_data": MESSAGE}, text)

    def test_are_all_in_the_tables(self):
        self.assertLessEqual(RULES | ENDS, codes_of_the_tables())


class PrimeOrder(unittest.TestCase):
    def test_is_told_by_the_trace_as_by_the_product_with_the_order(self):
        for scalar in (1, 2, 5, ORDER - 1):
            point = multiplied(scalar, PUBLISHED_BASE)
            for candidate in (point, added(point, ORDER_TWO), ORDER_TWO):
                self.assertEqual(is_of_prime_order(candidate), multiplied(ORDER, candidate) is None)


if __name__ == "__main__":
    unittest.main()
