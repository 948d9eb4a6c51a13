"""The base64 of request data, which puts a zero byte in front of the last of several groups."""

from stopped import Stopped

ALPHABET = b"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"
PAD = ord("=")
# A zero byte counts as "A".
SEXTETS = {character: value for value, character in enumerate(ALPHABET)} | {0: 0}


class Base64Error(Stopped):
    """The text is refused."""


def whole_bytes(text):
    """The whole bytes that these characters fill; a "=" among them stands in the wrong place."""
    bits = 0
    for character in text:
        if character not in SEXTETS:
            raise Base64Error("base64.padding" if character == PAD else "base64.character")
        bits = bits << 6 | SEXTETS[character]
    size = len(text) * 6 // 8
    return (bits >> len(text) * 6 - size * 8).to_bytes(size, "big")


def base64_decoded(text):
    """The bytes of the text; raises Base64Error."""
    if not text or len(text) % 4:
        raise Base64Error("base64.length")
    leading, last = text[:-4], text[-4:]
    characters = last.rstrip(b"=")
    data = whole_bytes(leading)
    if leading:
        data += b"\0"
    return data + whole_bytes(characters)
