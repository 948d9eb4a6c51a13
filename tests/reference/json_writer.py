"""JSON bodies for the fields of a request, in many spellings, and broken ones."""

OUTER = {"mode": b"mode", "project": b"project", "encoding": b"encoding", "gen_pairs": b"genPairs"}
INNER = {"data": b"data", "data_encoding": b"encoding", "file": b"file", "signature": b"signature"}
SHORT_ESCAPES = {'"': b'\\"', "\\": b"\\\\", "/": b"\\/", "\b": b"\\b", "\f": b"\\f", "\n": b"\\n",
                 "\r": b"\\r", "\t": b"\\t"}
SPACES = (b"", b"", b" ", b"\n", b"\t", b"\r\n", b"  ")
NUMBERS = (b"0", b"-0", b"-0.0", b"1e5", b"1E+5", b"0.5e-3", b"1e308", b"1e-999", b"2e-308",
           b"18446744073709551615", b"18446744073709551616", b"-9223372036854775808",
           b"-9223372036854775809", b"1" + b"0" * 308, b"0e999999999", b"123456789.987654321E-2",
           b"1.7976931348623157e308", b"1" + b"0" * 5000 + b"e-5000")
HUGE_NUMBERS = (b"1e309", b"-1e999", b"1" + b"0" * 309, b"1.7976931348623159e308", b"9" * 400)
BROKEN_NUMBERS = (b"01", b"-", b"+1", b".5", b"1.", b"1.e5", b"1e", b"1e+", b"-a", b"0x10",
                  b"1_000", b"NaN", b"Infinity", b"-Infinity", b"nan", b"--1", b"00", b"-01",
                  b"1 2", b"1e5.5", b"0b1")
OTHER_VALUES = (b"null", b"true", b"false", b"[]", b"{}", b'""', b'"x"', b"[1,[2,{}]]",
                b'{"a":{"a":1}}', b'[{"signature":{}}]', b'"\\u0000"', b'"\xf0\x9f\x98\x80"',
                b'"\\ud83d\\ude00"')
BROKEN_VALUES = (b"nul", b"True", b"tru", b"undefined", b"'x'", b'"\\x41"', b'"\\u12"',
                 b'"\\ud800"', b'"\\udc00"', b'"\\ud800\\u0041"', b'"\\udc00\\ud800"',
                 b'"\\ud800\\ud800"', b'"\t"', b'"\n"', b'"\0"', b'"\x1f"', b'"\xff"',
                 b'"\xc0\x80"', b'"\xe2\x82"', b'"\xed\xa0\x80"', b'"\xf4\x90\x80\x80"',
                 b'"\xf0\x80\x80\x80"', b'"\xc3"', b'"\x80"', b'"\xf8\x88\x80\x80"',
                 b'"\xe0\x9f\xbf"', b"[1,]", b"[,1]", b"{,}", b'{"a"}', b'{"a":}', b'{"a":1,}',
                 b"{1:2}", b"{a:1}", b"[1 2]", b"[1}", b'{"a":1]', b"/* */ 1", b"1 // x", b"[",
                 b"{", b'"', b"", b'"\\', b'"\\u', b'"\\U0041"', b'"\\ud83d\\', b'"\\ud83dx"',
                 b"[[[[[[", b"\xef\xbb\xbf1", b"nullnull", b"\0", b"1\0", b"#", b"\xa0",
                 b"\xc2\xa0", b"\x0b", b"\x0c1", b"truefalse")
UNKNOWN_NAMES = (b"x", b"", b"Mode", b"sig_data", b"genpairs", b"\x00", b"\xc3\xa9", b"data")
IN_FRONT = (b"\xef\xbb\xbf", b" ", b"\n\r\t ", b"\xef\xbb", b"\xfe\xff", b"\0", b"//\n",
            b"\xef\xbb\xbf\xef\xbb\xbf", b"\xef\xbb\xbf ")
BEHIND = (b" ", b"\n", b"\0", b"\0\0 ", b"x", b"{}", b",", b"]", b"}", b"\x1a", b"\x0c",
          b"\0garbage", b"//", b"\xef\xbb\xbf", b" null")


def string(choice, value, plainly):
    """A string of JSON; bytes that are no UTF-8 stand as they are, which breaks it."""
    try:
        text = value.decode("utf-8")
    except UnicodeDecodeError:
        return b'"' + value + b'"'
    result = bytearray()
    for character in text:
        must = character in '"\\' or character < " "
        if not must and (plainly or choice.random() < 0.97):
            result += character.encode("utf-8")
        elif character in SHORT_ESCAPES and choice.random() < 0.7:
            result += SHORT_ESCAPES[character]
        else:
            for unit in memoryview(character.encode("utf-16-le")).cast("H"):
                result += choice.choice((b"\\u%04x", b"\\u%04X")) % unit
    return b'"' + bytes(result) + b'"'


def value_of(choice, value, plainly):
    if isinstance(value, bool):
        return b"true" if value else b"false"
    return string(choice, value, plainly)


def deep(choice):
    depth = choice.choice((2, 100, 1000, 20_000))
    opening, closing = choice.choice(((b"[", b"]"), (b'{"a":', b"}")))
    inner = choice.choice((b"1", b"[]", b"null"))
    return opening * depth + inner + closing * (depth - choice.choice((0, 0, 0, 1)))


def any_value(choice):
    kind = choice.random()
    if kind < 0.05:
        return deep(choice)
    if kind < 0.15:
        return choice.choice(HUGE_NUMBERS)
    if kind < 0.22:
        return choice.choice(BROKEN_NUMBERS)
    if kind < 0.3:
        return choice.choice(BROKEN_VALUES)
    return choice.choice(NUMBERS if kind < 0.5 else OTHER_VALUES)


def object_text(choice, members):
    """The members, some with one of the same name in front, and ones that nothing knows."""
    pieces = []

    def space():
        return choice.choice(SPACES)

    def piece(name, value):
        return space() + name + space() + b":" + space() + value + space()

    for name, value in members:
        if choice.random() < 0.04:
            pieces.append(piece(string(choice, name, True), choice.choice(NUMBERS + OTHER_VALUES)))
        pieces.append(piece(string(choice, name, choice.random() < 0.9), value))
    while choice.random() < 0.15:
        name = choice.choice(UNKNOWN_NAMES)
        any_kind = choice.random() < 0.5
        value = any_value(choice) if any_kind else choice.choice(NUMBERS + OTHER_VALUES)
        pieces.insert(choice.randrange(len(pieces) + 1), piece(string(choice, name, True), value))
    return b"{" + b",".join(pieces) + b"}"


def members_of(choice, fields, names, plainly):
    members = [(written, value_of(choice, fields[name], plainly))
               for name, written in names.items() if fields.get(name) is not None]
    if members and choice.random() < 0.02:
        place = choice.randrange(len(members))
        members[place] = members[place][0], any_value(choice)
    return members


def json_body(choice, fields):
    plainly = choice.random() < 0.7
    outer = members_of(choice, fields, OUTER, plainly)
    inner = members_of(choice, fields, INNER, plainly)
    if inner or choice.random() < 0.5:
        signature = object_text(choice, inner)
        if choice.random() < 0.02:
            signature = choice.choice(NUMBERS + OTHER_VALUES)
        outer.append((b"signature", signature))
    choice.shuffle(outer)
    text = object_text(choice, outer)
    if choice.random() < 0.06:
        text = choice.choice(IN_FRONT) + text
    if choice.random() < 0.06:
        text += choice.choice(BEHIND)
    return text
