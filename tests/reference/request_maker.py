"""Random requests: most of them valid up to some point, each a function of its seed and number."""

import random
from dataclasses import dataclass

import signature_scheme
from curve_point import ORDER
from form_writer import form_body
from json_writer import any_value, json_body
from request_material import Signed
from signature_variants import other_signature, same_signature

FORM, JSON = b"application/x-www-form-urlencoded", b"application/json"
OTHER_TYPES = (b"application/json; charset=utf-8", b"application/json;", b"Application/JSON", b"",
               b"x", b" application/json", b"application/json ", b"text/json", b"text/plain",
               b"application/jso", b"multipart/form-data; boundary=x", b"application/jsonx",
               b"application/json\n", b"\xff")
NAMES = (b"sign.cgi", b"nph-sign.cgi", b"/srv/cgi-bin/sign.cgi", b"/srv/cgi-bin/nph-sign.cgi",
         b"nph-", b"nph-.cgi", b"/srv/bin/nph-x", b"nph.cgi", b"NPH-x", b"nph", b"/srv/nph-dir/x",
         b"C:\\cgi\\nph-x", b"nph-a.b.c", b"nph.-x", b".nph-x", b"./nph-sign.cgi", b"nph-x/",
         b"/a.b/nph-x", b"x.nph-", b"", b"nph-x\\sign.cgi", b"/nph-.d/sign", b"nph-\xff", b"np.h-x",
         b".", b"..", b"/", b"a/nph-.x/nph")
WORDS = (b"plain", b"base64", b"urlencode", b"json", b"", b"JSON", b"Plain", b"none", b"base64 ",
         b"bas", b"base64\0", b"hex", b"0", b"urlencoded")
ODD_MODES = (b"", b"sign", b"generatesignature", b"generateSignature ", b"verifySignature\0",
             b"none", b"GenerateSignature", b"generate", b"create", b"0")
BASE64_OF_NO_BYTES = (b"====", b"A===", b"\0===")
ODD_BASE64 = (b"=AAA", b"QQ=A", b"QUJD=EVG", b"QUJ", b"QU D", b"QU-_", b"AAAA====", b"AAAAA===",
              b"QUJD\0===", b"Q\0==", b"\0\0\0\0", b"QUJDREVG\n", b"QQ==QQ==", b"AB==", b"=",
              b"==", b"===", b"QUJD====", b"QUJDQ===", b"Q\xc3\xa9=", b"\xff\xff\xff\xff",
              b"A=A=", b"A=\0=", b"QUJDQQ=\0", b"AAA\0AAAA", b"========", b"QUJDRA==")
LENGTHS = (b"", b"0", b"-0", b"+0", b"abc", b"-", b"+", b"0x15", b"-1", b"-15", b"- 5", b"+-5",
           b"1e3", b"00", b"9223372036854775806", b"9223372036854775807", b"9223372036854775808",
           b"4611686018427387904", b"18446744073709551614", b"18446744073709551615",
           b"18446744073709551616", b"140737488355328", b"-18446744073709551615",
           b"-18446744073709551616", b"-9223372036854775808", b"1" * 30, b"9" * 700,
           b"-" + b"9" * 25, b"340282366920938463463374607431768211456", b"\xff", b"0" * 300,
           b"--5", b"1\0")


SIGNS = (b"\0", b"%", b"&", b"=", b'"', b"\\", b"{", b",", b"+")
SHORT_BODIES = (b"\0", b"&", b"=", b"%", b"null", b"[]", b"{}", b"true", b'"x"', b"5", b" ", b"",
                b"sig_create=true", b"sig_verify=true", b"sig_verify=true&project=x",
                b'{"mode":"generateSignature"}', b'{"mode":"verifySignature","project":"x"}')


@dataclass(frozen=True)
class Request:
    name: bytes
    environment: dict
    body: bytes


def signing_fields(choice, material):
    document = choice.choice(material.documents)
    kind = choice.random()
    if kind < 0.35:
        project = choice.choice(material.sound)
    elif kind < 0.4:
        project = choice.choice(material.relatives)
    elif kind < 0.75:
        project = choice.choice(choice.choice(material.signing_projects))
    elif kind < 0.8:
        project, document = choice.choice(material.never_signing), material.documents[0]
    else:
        project, key = choice.choice(material.unsound)
        document = choice.choice((document, material.documents[0]))
    return {"mode": b"generateSignature", "project": project} | asked(document)


def asked(document):
    fields = {"data": document.data, "file": document.file, "data_encoding": document.data_encoding}
    return {name: value for name, value in fields.items() if value}


def signed_by_an_unsound_key(choice, material):
    """A signature as the program makes it, or any where it makes none."""
    project, key = choice.choice(material.unsound)
    document = choice.choice(material.documents)
    e, nonce = signature_scheme.message_number(document.content), choice.randrange(1, ORDER)
    pair = signature_scheme.signed_number(key.base, key.scalar, e, nonce) or (1, 1)
    return Signed(project, document, signature_scheme.rendered(*pair))


def verifying_fields(choice, material):
    if choice.random() < 0.2:
        signed = signed_by_an_unsound_key(choice, material)
    else:
        signed = choice.choice(material.signed)
    fields = {"mode": b"verifySignature", "project": signed.project, "signature": signed.text}
    fields |= asked(signed.document)
    kind = choice.random()
    if kind < 0.2:
        fields["signature"] = same_signature(choice, signed.text)
    elif kind < 0.6:
        fields["signature"] = other_signature(choice, signed.text)
    elif kind < 0.63:
        fields["project"] = choice.choice(material.sound)
    elif kind < 0.85:
        signed = choice.choice(material.signed_by_their_key)
        projects = (material.relatives if choice.random() < 0.4
                    else choice.choice(material.verifying_projects))
        fields = {"mode": b"verifySignature", "project": choice.choice(projects),
                  "signature": signed.text} | asked(signed.document)
    return fields


def change_project(choice, material, fields):
    is_signing = fields.get("mode") == b"generateSignature"
    lists = material.signing_projects if is_signing else material.verifying_projects
    fields["project"] = choice.choice(choice.choice(lists))


def change_document(choice, material, fields):
    for name in ("data", "file", "data_encoding"):
        fields.pop(name, None)
    fields |= asked(choice.choice(material.documents))


def change_file(choice, material, fields):
    fields.pop("data", None)
    fields["file"] = choice.choice(choice.choice(material.files_by_rule))


def change_data_encoding(choice, material, fields):
    fields["data_encoding"] = choice.choice(WORDS if choice.random() < 0.5 else WORDS[2:4])


def change_base64(choice, material, fields):
    fields.pop("file", None)
    fields["data_encoding"] = b"base64"
    fields["data"] = choice.choice(ODD_BASE64 if choice.random() < 0.8 else BASE64_OF_NO_BYTES)


def change_mode(choice, material, fields):
    fields["mode"] = choice.choice((None,) + ODD_MODES)


def empty_a_field(choice, material, fields):
    fields[choice.choice(sorted(set(fields) - {"gen_pairs"}))] = choice.choice((None, b""))


def give_both(choice, material, fields):
    fields["file"] = fields["data"] = b"file-1"


def give_a_field(choice, material, fields):
    fields[choice.choice(("signature", "file", "data", "project"))] = choice.choice(
        (b"x", b"\0", b"\0x", b"file-2\0", b"file-2\0x", b"key-random-0\0x", b"QUJD", b" ", b"%41"))


CHANGES = (change_project, change_project, change_project, change_document, change_file,
           change_file, change_data_encoding, change_data_encoding, change_base64, change_base64,
           change_mode, empty_a_field, empty_a_field, give_both, give_a_field)


def request_fields(choice, material):
    make = signing_fields if choice.random() < 0.35 else verifying_fields
    fields = make(choice, material)
    if choice.random() < 0.5:
        fields["encoding"] = choice.choice(WORDS)
    if choice.random() < 0.4:
        fields["gen_pairs"] = choice.random() < 0.7
    if choice.random() < 0.45:
        for _ in range(choice.choice((1, 1, 1, 2, 3))):
            choice.choice(CHANGES)(choice, material, fields)
    return fields


def is_text(fields):
    """Whether all values are UTF-8, as JSON has to be."""
    try:
        return all(not isinstance(value, bytes) or value.decode("utf-8") is not None
                   for value in fields.values())
    except UnicodeDecodeError:
        return False


def mutated(choice, body):
    """Flipped bits, cuts, doublings, other bytes, zeros and splices with itself."""
    for _ in range(choice.choice((1, 1, 2, 5))):
        size = len(body)
        start, end = sorted(choice.randrange(size + 1) for _ in range(2))
        end = min(end, start + choice.choice((1, 4, 40, size)))
        place, bit = choice.randrange(size + 1), 1 << choice.randrange(8)
        body = choice.choice((
            lambda: body[:place] + bytes(byte ^ bit for byte in body[place:place + 1])
            + body[place + 1:],
            lambda: body[:start] + body[end:],
            lambda: body[:end] + body[start:],
            lambda: body[:place],
            lambda: body[:place] + body[start:end] + body[place:],
            lambda: body[:place] + choice.randbytes(choice.choice((1, 2, 8))) + body[place:],
            lambda: body[:place] + choice.choice(SIGNS) + body[place:],
        ))()
    return body


def junk(choice):
    kind = choice.random()
    if kind < 0.3:
        return choice.randbytes(choice.choice((1, 2, 10, 200)))
    if kind < 0.7:
        return any_value(choice)
    return choice.choice(SHORT_BODIES)


def widened(choice, content_type, body):
    """The body with so much more around it that no pipe holds it at once."""
    size = choice.choice((70_000, 1_000_000))
    if content_type == JSON:
        return choice.choice((b" " * size + body, body + b"\n" * size))
    return choice.choice((b"x=" + b"y" * size + b"&" + body, body + b"&%" * (size // 2)))


def content_length(choice, body):
    """The announced length, or None for none."""
    size = len(body)
    if choice.random() < 0.83:
        return b"%d" % size
    return choice.choice((
        None, None, choice.choice(LENGTHS), choice.choice(LENGTHS),
        b"%d" % choice.randrange(2**47, 2**63 - 1), b"%d" % choice.randrange(2**47, 2**63 - 1),
        b"%d" % choice.randrange(2**63, 2**64 - 1),
        b"%d" % (size + choice.choice((1, 2, 1000))),
        b"%d" % max(size - choice.choice((1, 2, 5, 50)), 0),
        b"+%d" % size, b"%030d" % size, b" %d" % size, b"\t\n\v\f\r %d" % size, b"\xa0%d" % size,
        b"%d " % size, b"%dx" % size, b"%d,000" % size, b"%d.5" % size,
        b"-%d" % size, b"-%d" % (2**64 - size), b" -%d" % (2**64 - size), b"-%d" % (2**65 - size),
        b"%d" % (2**64 + size), b"%d" % (3 * 2**64 + size)))


def request(seed, number, material):
    """Request `number` of this seed."""
    choice = random.Random(f"{seed} {number}")
    content_type = choice.choice((FORM, JSON))
    kind = choice.random()
    if kind < 0.05:
        body = junk(choice)
    else:
        fields = request_fields(choice, material)
        if not is_text(fields) and choice.random() < 0.95:
            content_type = FORM
        body = (json_body if content_type == JSON else form_body)(choice, fields)
        if kind < 0.2:
            body = mutated(choice, body)
    if choice.random() < 0.003:
        body = widened(choice, content_type, body)
    environment = {b"CONTENT_TYPE": content_type}
    if choice.random() < 0.06:
        del environment[b"CONTENT_TYPE"]
        other = choice.choice(OTHER_TYPES + (FORM, JSON, None))
        if other is not None:
            environment[b"CONTENT_TYPE"] = other
    length = content_length(choice, body)
    if length is not None and b"\0" not in length:
        environment[b"CONTENT_LENGTH"] = length
    if choice.random() < 0.01:
        body = b""
    if choice.random() < 0.1:
        environment |= {b"QUERY_STRING": b"sig_create=true&project=key-random-0&sig_data=x",
                        b"REQUEST_METHOD": choice.choice((b"GET", b"PUT", b"HEAD", b"")),
                        b"SCRIPT_NAME": b"/nph-x", b"LC_ALL": b"de_DE.UTF-8"}
    name = choice.choice(NAMES[:2] if choice.random() < 0.8 else NAMES)
    return Request(name, environment, body)
