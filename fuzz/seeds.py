#!/usr/bin/env python3
"""Writes the inputs that fuzzing began with: the forms that a fuzzer would be long in finding.

    fuzz/seeds.py FOLDER      writes FOLDER/TARGET/NAME for each target

The kept corpora in fuzz/corpus/ grew from them. Each target's source tells how it reads an input.
"""

import hashlib
import struct
import sys
from pathlib import Path

# Signatures under the key of the targets' oracle.
OF_SOME_DATA = "oINNuA3zbIZdBZp0pxZq/MVXbulAIBnkDc1KhX5LosyWXOr8khsbc/EA"
OF_SOME_DATA_AGAIN = "fM6vtje3I8A7GNytwVOtAGJhIMZAPHKXNWd0iAPUkuTF3lZy494T4CaA"
OF_HELLO_IN_20_BYTES = "f0p0I0zd+JtlYvN2C9fzwdUDcRAClOIQSii+7ugneQ6l6kfDFpwiXA=="
OF_THE_FILE = "oINNuA3zbIZdBZp0pxZq/MVXbulAgR3YCoxNA3sbus1+jeB/s5OOQgBA"
OF_DECODED_DATA = "WnCf06dD7YrnzMSWumySIByLSOKAPVQ54jPwKh2BdxI3s7VUxQboyNgA"

# The project of that key: base point, scalar and public point.
POINTS = {
    72: "a30000000000000016c05552de6b1190b766abcfdff316a4a8bec63607000000",
    73: "a300000000000000e97f6a3f858cc6997f382c837fb215b93c78046904000000",
    74: "a20000007a7597246652134787023635520459848281827102",
    75: "a30000000000000094abef28d9b00da086b501502173f01a68d7b9b706000000",
    76: "a3000000000000001446e6349e89e0670b6e60f324c8ae82f582e2f405000000",
}
KEY = {attribute: bytes.fromhex(digits) for attribute, digits in POINTS.items()}

ORDER = 0x40000000000000000000292FE77E70C12A4234C33


def project(entries, values, count=None, digest=None):
    directory = b"".join(struct.pack("<3I", *entry) for entry in entries)
    body = directory + values
    count = len(entries) if count is None else count
    digest = hashlib.md5(body).digest() if digest is None else digest
    return b"VLT2" + struct.pack("<I", count) + digest + body


def project_of(attributes):
    entries, values = [], b""
    start = 24 + 12 * len(attributes)
    for attribute, value in attributes.items():
        entries.append((attribute, start + len(values), len(value)))
        values += value
    return project(entries, values)


def escaped(text):
    return text.replace("+", "%2B").replace("=", "%3D")


FORMS = {
    "sign": "project=/dev/fd/60&sig_create=true&sig_data=some+data",
    "sign-file": "project=/dev/fd/60&sig_create=true&sig_file=/dev/fd/63&genpairs",
    "sign-pairs": "project=/dev/fd/60&sig_create=true&sig_data=x&genpairs=true",
    "sign-json": "project=/dev/fd/60&sig_create=true&sig_data=x&encoding=json",
    "sign-empty-file": "project=/dev/fd/60&sig_create=true&sig_file=/dev/fd/64",
    "sign-without-scalar": "project=/dev/fd/61&sig_create=true&sig_data=x",
    "sign-without-attributes": "project=/dev/fd/62&sig_create=true&sig_data=x",
    "sign-base64": "project=/dev/fd/60&sig_create=true&sig_data=QUJD&sig_data_encoding=base64",
    "sign-bad-base64": "project=/dev/fd/60&sig_create=true&sig_data=Q=&sig_data_encoding=base64",
    "verify": "project=/dev/fd/60&sig_verify=true&sig_data=some+data&sig=" + escaped(OF_SOME_DATA),
    "verify-pairs": "project=/dev/fd/61&sig_verify=true&sig_data=some%20data&genpairs=0&sig="
    + escaped(OF_SOME_DATA_AGAIN),
    "verify-file": "project=/dev/fd/60&sig_verify=true&sig_file=/dev/fd/63&sig="
    + escaped(OF_THE_FILE),
    "verify-20": "project=/dev/fd/60&sig_verify=true&sig_data=hello&encoding=plain&sig="
    + escaped(OF_HELLO_IN_20_BYTES),
    "verify-base64": "project=/dev/fd/60&sig_verify=true&sig_data=QUJDREVG&"
    "sig_data_encoding=base64&sig=" + escaped(OF_DECODED_DATA),
    "verify-other": "project=/dev/fd/60&sig_verify=true&sig_data=other&sig="
    + escaped(OF_SOME_DATA),
    "both": "sig_create=true&sig_verify=true&project=a&sig_data=b&sig_file=c&sig=d",
    "neither": "project=a&sig_verify=true&sig=d",
    "encoding": "project=a&sig_create=true&sig_data=b&sig_data_encoding=json&encoding=x",
    "no-mode": "project=a&sig_create=True",
    "no-project": "sig_create=true",
    "odd": "a=b=c&&=x&a&%61=2&+%zz%4g%-1%=%&sig_data=%00x",
}

JSONS = {
    "sign": '{"mode":"generateSignature","project":"/dev/fd/60","signature":{"data":"some data"}}',
    "sign-plain": '{"mode":"generateSignature","project":"/dev/fd/60","genPairs":true,'
    '"encoding":"plain","signature":{"file":"/dev/fd/63"}}',
    "verify": '{"mode":"verifySignature","project":"/dev/fd/60","signature":{"data":"some data",'
    '"signature":"%s"}}' % OF_SOME_DATA,
    "verify-base64": '{"mode":"verifySignature","project":"/dev/fd/61","genPairs":false,'
    '"signature":{"data":"QUJDREVG","encoding":"base64","signature":"%s"}}' % OF_DECODED_DATA,
    "string": '{"mode":"generateSignature","project":"p","signature":"x"}',
    "wrong-type": '{"mode":5}',
    "wrong-type-below": '{"mode":"verifySignature","signature":{"data":null}}',
    "pairs": '{"genPairs":1,"project":"p"}',
    "two-truths": '{"genPairs":truefalse}',
    "array": "[1, -0.5E+3, true, false, null, {}, [[]], 1e999]",
    "escapes": '{"project":"\\"\\\\\\/\\b\\f\\n\\r\\t\\u0041\\u00e9\\u20ac\\ud83d\\ude00",'
    '"a":"\u00e9\u20ac\U0001f600"}',
    "twice": ' { "mode" : "x" , "mode" : "generateSignature" , "signature" : { } } ',
    "lone": '{"project":"\\ud800"}',
    "bom": "\ufeff{}",
}


def request_seeds():
    for name, form in FORMS.items():
        yield "form_body", name, b"=\n" + form.encode()
        yield "percent_decoding", name, form.encode()
        yield "whole_request", "form-" + name, b"s-\n=\n" + form.encode()
    for name, json in JSONS.items():
        yield "json_body", name, b"=\n" + json.encode()
        yield "whole_request", "json-" + name, b"napplication/json\n=\n" + json.encode()
    for name, length in {
        "absent": "-",
        "zero": "0",
        "short": "5",
        "long": "500",
        "text": "12x",
        "signs": " +30",
        "minus": "-1",
        "wrapping": "18446744073709551617",
        "impossible": "9223372036854775807",
    }.items():
        line = length.encode() + b"\n"
        yield "form_body", "length-" + name, line + b"project=a&sig_create=true"
        yield "json_body", "length-" + name, line + b'{"project":"a"}'
        yield "whole_request", "length-" + name, b"s-\n" + line + b"project=a&sig_create=true"
        yield "whole_request", "json-length-" + name, b"sapplication/json\n" + line + b"{}"
    yield "whole_request", "charset", b"sapplication/json; charset=utf-8\n=\n{}"


def text_seeds():
    texts = {
        "group": "QUJD",
        "groups": "QUJDREVGR0hJ",
        "one-byte": "QQ==",
        "two-bytes": "QUJDREU=",
        "padding": "AAAA====",
        "in-front": "QUJD=EVG",
        "zero": "QUJD\0===",
        "newline": "QUJD\nREV",
    }
    for name, text in texts.items():
        yield "request_base64", name, text.encode()
        yield "core_text", name, text.encode()
    for name, text in {
        "valid": OF_SOME_DATA,
        "valid-again": OF_SOME_DATA_AGAIN,
        "other-data": OF_HELLO_IN_20_BYTES,
        "outside": OF_SOME_DATA[:-1] + "!",
        "padded": OF_SOME_DATA + "====" * 18,
        "too-long": OF_SOME_DATA + "A" * 73,
        "longest": "A" * 128,
        "odd": "A" * 55 + "=",
    }.items():
        yield "core_text", name, text.encode()
        yield "signature_text", "raw-" + name, b"\x0fsome data\n" + text.encode()
    # Two sound halves, and two with one byte behind them.
    for name, text in {
        "valid-in-20-bytes": OF_HELLO_IN_20_BYTES,
        "one-byte-behind": OF_HELLO_IN_20_BYTES.replace("==", "A="),
    }.items():
        yield "signature_text", "raw-" + name, b"\x0fhello\n" + text.encode()
    for change in range(15):
        yield "signature_text", f"change-{change}", bytes([change, 0, 0, 60]) + b"hello"
        yield "signature_text", f"file-{change}", bytes([112 + change, 128, 0, 3]) + b"hello"
    yield "signature_text", "edited", bytes([16, 21, 1, 3, 33, 0]) + b"hello"
    yield "signature_text", "no-data", bytes([0, 0, 0, 0])
    # Halves of the longest that counts, and of a byte more.
    yield "signature_text", "halves-of-21", bytes([0, 21, 0, 60]) + b"hello"
    yield "signature_text", "halves-of-22", bytes([0, 22, 0, 60]) + b"hello"


def project_seeds():
    whole = project_of(KEY)
    yield "project_file", "key", whole
    yield "project_file", "digest", whole[:8] + bytes(16) + whole[24:]
    yield "project_file", "empty", project([], b"", digest=bytes(16))
    yield "project_file", "empty-and-more", project([], b"more", digest=bytes(16))
    yield "project_file", "header", project([], b"", count=1)
    yield "project_file", "short", b"VLT2"
    yield "project_file", "fewer", project([(1, 48, 1), (2, 49, 1)], b"ab", count=1)
    yield "project_file", "more", project([(1, 36, 1)], b"ab", count=2)
    yield "project_file", "huge-count", project([(1, 36, 1)], b"ab", count=0xFFFFFFFF)
    yield "project_file", "twice", project([(1, 48, 1), (1, 49, 1)], b"ab")
    yield "project_file", "sharing", project([(1, 48, 2), (9, 49, 1), (3, 0, 24)], b"ab" + bytes(30))
    yield "project_file", "no-size", project([(1, 48, 1), (2, 48, 0)], b"ab")
    yield "project_file", "past-end", project([(1, 48, 1), (2, 48, 3)], b"ab")
    yield "project_file", "far", project([(2, 0xFFFFFFFF, 0xFFFFFFFF)], b"ab")

    def key(values, outputs=31):
        parts = [bytes([len(value)]) + value if value is not None else b"\xff" for value in values]
        return bytes([outputs]) + b"".join(parts)

    for head in range(16):
        scalar = KEY[74][4:]
        yield "unsound_key", f"relation-{head}", bytes([head]) + bytes(96) + scalar
    yield "unsound_key", "bits-above", b"\0" + (bytes(23) + b"\x80") * 4 + KEY[74][4:]
    yield "unsound_key", "no-scalar", b"\0"
    # The same point with the reduction polynomial added to a coordinate.
    polynomial = (1 << 163 | 0xC9).to_bytes(24, "little")
    for place in range(4):
        added = bytes(24 * place) + polynomial + bytes(72 - 24 * place)
        yield "unsound_key", f"polynomial-{place}", b"\0" + added + KEY[74][4:]
    yield "unsound_key", "long-scalar", b"\0" + bytes(96) + b"\xff" * 40

    values = list(KEY.values())
    yield "key_attributes", "key", key(values)
    yield "key_attributes", "some-outputs", key(values, 10)
    yield "key_attributes", "absent", key([None] * 5)
    yield "key_attributes", "no-public-point", key(values[:3] + [None, values[4]])
    yield "key_attributes", "no-scalar", key([values[0], values[1], None] + values[3:])
    for bits in (0, 1, 64, 65, 320, 321, 512, 513, 0x800000A2, 0xFFFFFFFF):
        head = struct.pack("<I", bits)
        element = head + bytes(4) + bytes(range(1, 70))
        yield "key_attributes", f"bits-{bits}", key([element, element, head + element] + [element] * 2)
        yield "key_attributes", f"zeros-{bits}", key([head, head, head, head, head])
    for size in range(250, 254):
        value = bytes([size]) + values[0] + bytes(size - 32)
        yield "key_attributes", f"size-{size}", bytes([31]) + value * 5


def number_seeds():
    def operands(a, b, head=0):
        first = a.to_bytes((a.bit_length() + 7) // 8, "little")
        second = b.to_bytes((b.bit_length() + 7) // 8, "little")
        return bytes([head, len(first)]) + first + second

    pairs = {
        "zeros": (0, 0),
        "by-zero": (5, 0),
        "zero-by": (0, 5),
        "below": (5, 9),
        "equal": (9, 9),
        "same-length": (13, 9),
        "limbs": (2**64 + 5, 9),
        "order": (2**163 - 1, ORDER),
        "order-again": (2**192, ORDER),
        "long": (2**500 - 1, 2**300 + 1),
        "longest": (2**512 - 1, 3),
        "powers": (2**448, 2**128),
        "no-inverse": (6, 9),
        "by-one": (7, 1),
        "one": (1, 9),
    }
    for name, (a, b) in pairs.items():
        for target in ("integer_division", "integer_modulo", "integer_inverse"):
            if target == "integer_inverse" and max(a, b) >= 2**256:
                continue
            yield target, name, operands(a, b)
            yield target, name + "-zero-limbs", operands(a, b, 0b1001)
            yield target, name + "-multiple", operands(a % 2**256, b % 2**256, 0b10110000)
    for head in range(0, 256, 5):
        field = struct.pack("<6Q", 3, 5, 7, 11, 13, 17)
        yield "field_division", f"field-{head}", bytes([head]) + field
    ones = (2**163 - 1).to_bytes(24, "little")
    yield "field_division", "ones", b"\0" + ones + (2**162).to_bytes(24, "little")
    yield "field_division", "by-one", b"\0" + ones + b"\1"
    yield "field_division", "by-zero", b"\0" + ones

    def scalars(*values):
        return b"".join((value % ORDER).to_bytes(24, "little") for value in values)

    for u1 in (0, 1, 2, -1, -2, 2**162, ORDER // 2):
        for u2 in (0, 1, -1, 2**64 - 1):
            yield "second_route", f"scalars-{u1 % 97}-{u2 % 97}", scalars(u1, u2) + b"\7"
    for factor in (1, 2, 3, -1, -2, -3, 2**81):
        yield "second_route", f"factor-{factor % 97}", scalars(2**100 + 1, 3**90, factor)[:69]


def main(arguments):
    if len(arguments) != 1:
        print(__doc__, file=sys.stderr)
        return 2
    for seeds in (request_seeds(), text_seeds(), project_seeds(), number_seeds()):
        for target, name, content in seeds:
            path = Path(arguments[0], target, name)
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_bytes(content)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
