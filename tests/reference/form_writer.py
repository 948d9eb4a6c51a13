"""Form texts for the fields of a request, in all spellings that the parser takes and some more."""

import string

NAMES = {"project": b"project", "encoding": b"encoding", "gen_pairs": b"genpairs",
         "data": b"sig_data", "data_encoding": b"sig_data_encoding", "file": b"sig_file",
         "signature": b"sig"}
UNRESERVED = frozenset(string.ascii_letters.encode() + string.digits.encode() + b"-._~/*:'\"{}")
ODD_TRUTHS = (b"True", b"TRUE", b"1", b"on", b"", b"false", b"true ", b" true", b"true\0", b"yes")
JUNK = (b"", b"&", b"a", b"sig_data", b"=", b"=x", b"x=", b"genpairs", b"project", b"sig_create",
        b"Project=other", b"sig_verify=false", b"%=%", b"a=b=c", b"data=hello",
        b"mode=verifySignature", b"sig_data;x=1", b"+project=x", b"project+=x", b"sig_create=",
        b"%00project=x", b"project%00=x")
BROKEN_ESCAPES = (b"%", b"%4", b"%zz", b"%4g", b"% 1", b"%+1", b"%-1", b"%-", b"%%", b"%0x",
                  b"%\t7", b"%\n", b"%--", b"%1 ", b"%fg", b"%u0", b"%\x0b8", b"%=", b"%-f", b"%+F",
                  b"%%41")


def escaped(choice, value, plainly):
    """The value, decoding to the same bytes."""
    result = bytearray()
    for byte in value:
        if byte in UNRESERVED and (plainly or choice.random() < 0.95):
            result.append(byte)
        elif byte == ord(" ") and choice.random() < 0.7:
            result += b"+"
        elif byte >= 128 and not plainly and choice.random() < 0.3:
            result.append(byte)
        elif byte < 16 and not plainly and choice.random() < 0.5:
            result += b"%" + choice.choice((b" ", b"+", b"\t", b"\r")) + b"%x" % byte
        elif byte > 240 and not plainly and choice.random() < 0.5:
            result += b"%%-%x" % (256 - byte)
        else:
            result += choice.choice((b"%%%02x", b"%%%02X")) % byte
    return bytes(result)


def mode_pieces(choice, mode):
    if mode == b"generateSignature":
        odd = b"sig_verify=" + choice.choice(ODD_TRUTHS)
        return [b"sig_create=true"] + choice.choice(([], [], [odd]))
    if mode == b"verifySignature":
        other = choice.choice((b"sig_create=true", b"sig_create=1"))
        return [b"sig_verify=true"] + choice.choice(([], [other]))
    if mode is None:
        return []
    return [choice.choice((b"sig_create=", b"sig_verify=")) + choice.choice(ODD_TRUTHS)]


def truth(choice, value):
    return choice.choice((b"true", b"1", b"", b"True", b"0", b"no")) if value else b"false"


def form_body(choice, fields):
    """The text of these fields; a name that is given twice has its value last."""
    plainly = choice.random() < 0.6
    pieces = mode_pieces(choice, fields.get("mode"))
    for name, written in NAMES.items():
        value = fields.get(name)
        if value is None:
            continue
        if name == "gen_pairs":
            value = truth(choice, value)
        if choice.random() < 0.05:
            pieces.append(written + b"=" + choice.choice((b"", b"x", b"true", b"base64")))
        pieces.append((written if plainly else escaped(choice, written, False))
                      + b"=" + escaped(choice, value, plainly))
    if choice.random() < 0.25:
        # The order among pieces of one name stays: none of these has the name of another piece.
        for _ in range(choice.randrange(1, 4)):
            pieces.insert(choice.randrange(len(pieces) + 1), choice.choice(JUNK))
    if choice.random() < 0.04:
        pieces.append(choice.choice(list(NAMES.values())) + b"=" + choice.choice(BROKEN_ESCAPES)
                      + choice.choice((b"", b"1", b"abc")))
    return b"&".join(pieces)
