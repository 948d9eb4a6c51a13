"""The inputs of the reference, judged by Python's own readers and by the published grammars."""

import base64
import json
import os
import random
import secrets
import unittest
import urllib.parse

from announced_length import form_length, json_length
from answer import Answer, Ended, refusal
from base64_decoder import Base64Error, base64_decoded
from form_input import decoded, parameters
from invocation import is_nph
from json_reader import JsonError, read_json
from request_driver import expected_answer
from response_writer import response

SEED = os.environ.get("SIGN_TEST_SEED") or secrets.token_hex(4)


def in_bytes(value):
    """What the reader makes of a value of Python's module."""
    if isinstance(value, str):
        return value.encode()
    if isinstance(value, list):
        return [in_bytes(item) for item in value]
    if isinstance(value, dict):
        return {in_bytes(name): in_bytes(item) for name, item in value.items()}
    return value


def random_value(choice, depth=0):
    kind = choice.randrange(7 if depth < 4 else 5)
    if kind == 5:
        return [random_value(choice, depth + 1) for _ in range(choice.randrange(4))]
    if kind == 6:
        return {random_text(choice): random_value(choice, depth + 1)
                for _ in range(choice.randrange(4))}
    return (None, True, False, choice.uniform(-1e9, 1e9), random_text(choice))[kind]


def random_text(choice):
    return "".join(chr(choice.choice((choice.randrange(128), choice.randrange(0x800, 0xD800),
                                      choice.randrange(0x10000, 0x110000))))
                   for _ in range(choice.randrange(6)))


class Json(unittest.TestCase):
    def test_is_read_as_by_the_module_of_the_standard_library(self):
        choice = random.Random(SEED)
        for _ in range(500):
            value = random_value(choice)
            text = json.dumps(value, ensure_ascii=choice.random() < 0.5,
                              indent=choice.choice((None, 1)))
            self.assertEqual(read_json(text.encode()), in_bytes(json.loads(text)), text)

    def test_takes_every_form_of_the_grammar(self):
        for text, value in ((b" [ ] ", []), (b"{}\r\n\t ", {}), (b"-0", 0.0), (b"1E+2", 100.0),
                            (b"0.25e-0", 0.25), (b'"\\u0000\\/"', b"\0/"), (b'"\x7f"', b"\x7f"),
                            (b'{"a":1,"a":[]}', {b"a": []}), (b"\xef\xbb\xbf 1", 1.0),
                            (b'"\\ud83D\\uDe00"', "\U0001f600".encode()), (b"1e-999", 0.0),
                            (b"9" * 308, float("9" * 308)), (b'{"":{"":""}}', {b"": {b"": b""}})):
            self.assertEqual(read_json(text), value)

    def test_takes_any_depth(self):
        value = read_json(b"[" * 50_000 + b"]" * 50_000)
        depth = 1
        while value:
            (value,) = value
            depth += 1
        self.assertEqual(depth, 50_000)

    def test_refuses_everything_else(self):
        for text in (b"", b" ", b"\0", b"1\0", b"NaN", b"-Infinity", b"01", b"-", b"+1", b".5",
                     b"1.", b"1e", b"1e309", b"-1e309", b"9" * 309, b"0x1", b"1 2", b"[1,]", b"[,]",
                     b"[1", b"1]", b"{1:2}", b'{"a"}', b'{"a":}', b'{"a":1,}', b'{"a":1 "b":2}',
                     b"[1}", b"'a'", b'"a', b'"\t"', b'"\n"', b'"\0"', b'"\\x"', b'"\\u12g4"',
                     b'"\\ud800"', b'"\\udc00"', b'"\\ud800\\u0041"', b'"\\udc00\\ud800"',
                     b'"\xc0\x80"', b'"\xed\xa0\x80"', b'"\xf4\x90\x80\x80"', b'"\xff"',
                     b'"\xe2\x82"',
                     b"tru", b"truefalse", b"True", b"/**/1", b"1//", b"\x0c1", b"\xa01",
                     b"\xef\xbb1", b"\xef\xbb\xbf", b"1\xef\xbb\xbf", b"\xef\xbb\xbf\xef\xbb\xbf1",
                     b"nullnull", b"[[[", b'"\\', b"{a:1}"):
            with self.subTest(text):
                self.assertRaises(JsonError, read_json, text)


class Form(unittest.TestCase):
    def test_is_read_as_by_the_standard_library_where_that_is_strict(self):
        choice = random.Random(SEED)
        for _ in range(300):
            values = {f"{place}{random_text(choice)}": random_text(choice) for place in range(3)}
            text = urllib.parse.urlencode(values).encode()
            self.assertEqual(parameters(text), in_bytes(values))

    def test_escapes_of_other_forms_are_read_as_numbers(self):
        for text, value in ((b"%4g", b"\4"), (b"%zz", b"\0"), (b"%1%41", b"\x0141"),
                            (b"% 1", b"\1"),
                            (b"%+1", b"\1"), (b"%-1", b"\xff"), (b"a%4", b"a\4"), (b"a%", b"a\0"),
                            (b"%0x41", b"\00041"), (b"%\v8", b"\x08"), (b"%--", b"\0")):
            self.assertEqual(decoded(text), value)

    def test_pieces_without_a_value_do_not_exist(self):
        self.assertEqual(parameters(b"a=1&&b=2&c&=x&a=b=c&%61=3;d=4"),
                         {b"a": b"3;d=4", b"b": b"2", b"": b"x"})


class Base64(unittest.TestCase):
    def test_of_one_group_is_that_of_rfc_4648(self):
        choice = random.Random(SEED)
        for size in (1, 2, 3) * 50:
            data = choice.randbytes(size)
            self.assertEqual(base64_decoded(base64.b64encode(data)), data)

    def test_of_more_groups_has_a_zero_in_front_of_the_last(self):
        choice = random.Random(SEED)
        for size in range(4, 60):
            data = choice.randbytes(size)
            leading = (size - 1) // 3 * 3
            self.assertEqual(base64_decoded(base64.b64encode(data)),
                             data[:leading] + b"\0" + data[leading:])

    def test_of_odd_forms(self):
        for text, data in ((b"====", b""), (b"A===", b""), (b"AB==", b"\0"),
                           (b"AAAA====", bytes(4)), (b"QUJD\0===", b"ABC\0"), (b"Q\0==", b"@")):
            self.assertEqual(base64_decoded(text), data)
        for text in (b"", b"QUJ", b"=AAA", b"QQ=A", b"QUJD=EVG", b"Q=\0=", b"QU D",
                     b"QU-_", b"\x80AAA"):
            self.assertRaises(Base64Error, base64_decoded, text)


class Length(unittest.TestCase):
    def test_of_both_kinds(self):
        largest = 2**64 - 1
        for text, form, whole in ((b"", 0, 0), (b"0", 0, 0), (b"-0", 0, 0), (b"15", 15, 15),
                                  (b"+15", 15, 15), (b"0015", 15, 15), (b" 15", 15, 0),
                                  (b"15x", 15, 0), (b"15 ", 15, 0), (b"0x15", 0, 0), (b"abc", 0, 0),
                                  (b"-1", largest, largest), (b"-18446744073709551601", 15, 15),
                                  (b"18446744073709551616", largest, 0), (b"- 5", 0, 0),
                                  (b"18446744073709551631", largest, 15), (b"+-5", 0, 0)):
            self.assertEqual((form_length(text), json_length(text)), (form, whole), text)


class Response(unittest.TestCase):
    def test_is_framed_by_the_name(self):
        names = {b"nph-sign.cgi": True, b"nph-": True, b"nph-.cgi": True, b"/srv/bin/nph-x": True,
                 b"C:\\cgi\\nph-x": True, b"/a.b/nph-x": True, b"nph.cgi": False, b"NPH-x": False,
                 b"nph": False, b"/srv/nph-dir/x": False, b".nph-": False, b"nph.-": False}
        self.assertEqual({name: is_nph(name) for name in names}, names)

    def test_has_these_bytes(self):
        self.assertEqual(response(False, b"200 OK", b"text/plain", b"true"),
                         b"Status: 200 OK\r\nContent-Type: text/plain\r\n"
                         b"Content-Length: 4\r\n\r\ntrue")
        self.assertEqual(response(True, b"400 Bad Request", b"text/plain", b""),
                         b"HTTP/1.0 400 Bad Request\r\n\r\n\n")


class Refusals(unittest.TestCase):
    def answer(self, body, content_type=b"x", **variables):
        environment = {b"CONTENT_TYPE": content_type, b"CONTENT_LENGTH": b"%d" % len(body)}
        environment |= {name.encode(): value for name, value in variables.items()}
        return expected_answer(environment, body)

    def test_come_in_their_order(self):
        sign, check = b"sig_create=true&project=p", b"sig_verify=true&project=p"
        for body, rule, message in (
                (b"", "form.length-zero", b"Failed to parse input data"),
                (b"x", "request.mode", b"'mode' parameter missing or invalid"),
                (b"sig_create=true", "request.project", b"'project' parameter is required"),
                (check, "request.no-signature", b"'signature' parameter is required"),
                (sign + b"&sig_data_encoding=json", "request.no-input",
                 b"Either 'data' or 'file' parameter is required"),
                (sign + b"&sig_file=f&sig_data_encoding=json", "request.data-encoding",
                 b"Signature encoding must be 'plain' or 'base64'"),
                (check + b"&sig=s&sig_data=AAA&sig_data_encoding=base64", "base64.length",
                 b"Invalid base64 data"),
                (sign + b"&sig_data=AAA", "project.open", b"Signature generation failed")):
            self.assertEqual(self.answer(body), refusal(rule, message))
        self.assertEqual(self.answer(b"[]", b"application/json"),
                         refusal("json.no-object", b"Invalid JSON data"))

    def test_are_no_verdicts(self):
        body = b"sig_verify=true&project=/nothing&sig=s&sig_data=x&genpairs="
        self.assertEqual(self.answer(body),
                         Answer("project.open", b"200 OK", b"text/plain", b"valid:false"))

    def test_leave_out_a_body_that_has_no_room(self):
        for content_type, kind in ((b"application/json", "json"), (b"x", "form")):
            self.assertEqual(self.answer(b"{}", content_type, CONTENT_LENGTH=b"%d" % (2**63 - 1)),
                             Ended(f"{kind}.length-impossible"))


if __name__ == "__main__":
    print(f"seed {SEED}", flush=True)
    unittest.main()
