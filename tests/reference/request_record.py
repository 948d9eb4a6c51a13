"""The record that both kinds of input fill; an empty value and an absent one are the same."""

from dataclasses import dataclass

GENERATE, VERIFY = b"generateSignature", b"verifySignature"
TEXT_ENCODINGS = (b"plain", b"base64", b"urlencode", b"json")


@dataclass
class RequestRecord:
    project: bytes = b""
    mode: bytes | None = None
    encoding: bytes | None = None
    gen_pairs: bool = False
    data: bytes = b""
    data_encoding: bytes | None = None
    file: bytes = b""
    signature: bytes = b""


def text_encoding(word):
    """The word if it is known, otherwise None."""
    return word if word in TEXT_ENCODINGS else None


def terminated(value):
    """A text that ends at its first zero byte."""
    return value.partition(b"\0")[0]
