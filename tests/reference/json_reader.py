"""JSON texts (RFC 8259), read as strictly as the program reads them.

Python's own module takes NaN, lone surrogates, control characters, and bytes that are not UTF-8 in
the places of others; this reader takes none of them. Strings become bytes in UTF-8. A text may be
nested to any depth and begin with a byte order mark. A number that no double holds is an error.
"""

import codecs
import math
import re

from stopped import Stopped

SPACE = re.compile(rb"[ \t\n\r]*")
STRING = re.compile(rb'"([^"\\\x00-\x1f]*'
                    rb'(?:\\(?:["\\/bfnrt]|u[0-9A-Fa-f]{4})[^"\\\x00-\x1f]*)*)"')
# As many characters as continue a number; what breaks off behind a "." or an "e" is none.
NUMBER = re.compile(rb"-?(?:0|[1-9][0-9]*+)(?:\.[0-9]++|(?!\.))(?:[eE][+-]?[0-9]++|(?![eE]))")
WORDS = {b"true": True, b"false": False, b"null": None}
WORD = re.compile(rb"true|false|null")
ESCAPE = re.compile(r"\\u([0-9A-Fa-f]{4})|\\(.)", re.DOTALL)
ESCAPED = {'"': '"', "\\": "\\", "/": "/", "b": "\b", "f": "\f", "n": "\n", "r": "\r", "t": "\t"}


class JsonError(Stopped):
    """The text is no JSON, or another than is wanted."""


def string_value(raw):
    """The UTF-8 of what stands between the quotation marks; half a surrogate pair is refused."""
    try:
        text = ESCAPE.sub(lambda match: chr(int(match[1], 16)) if match[1] else ESCAPED[match[2]],
                          raw.decode("utf-8"))
        # The detour joins pairs of surrogates, and fails on others.
        return text.encode("utf-16-le", "surrogatepass").decode("utf-16-le").encode("utf-8")
    except UnicodeError as error:
        raise JsonError("json.syntax") from error


def number_value(raw):
    number = float(raw)
    if math.isinf(number):
        raise JsonError("json.number")
    return number


class Reader:
    """Reads one text; a stack of open arrays and objects takes the place of recursion."""

    def __init__(self, text):
        self.text = text
        self.position = len(codecs.BOM_UTF8) if text.startswith(codecs.BOM_UTF8) else 0
        self.skip_space()

    def skip_space(self):
        self.position = SPACE.match(self.text, self.position).end()

    def take(self, character):
        """Whether this character comes next; it and white space behind it are then passed."""
        if self.text[self.position:self.position + 1] != character:
            return False
        self.position += 1
        self.skip_space()
        return True

    def expect(self, character):
        if not self.take(character):
            raise JsonError("json.syntax")

    def token(self, pattern):
        match = pattern.match(self.text, self.position)
        if match is not None:
            self.position = match.end()
            self.skip_space()
        return match

    def string(self):
        match = self.token(STRING)
        if match is None:
            raise JsonError("json.syntax")
        return string_value(match[1])

    def name(self):
        name = self.string()
        self.expect(b":")
        return name

    def scalar(self):
        if self.text[self.position:self.position + 1] == b'"':
            return self.string()
        if (match := self.token(WORD)) is not None:
            return WORDS[match[0]]
        if (match := self.token(NUMBER)) is not None:
            return number_value(match[0])
        raise JsonError("json.syntax")

    def document(self, kind):
        """The value that makes up the whole text; the start of one of another kind ends it."""
        open_values = []  # arrays and objects, each with the name that its next value gets
        while True:
            if self.take(b"["):
                value, closing, name = [], b"]", None
            elif self.take(b"{"):
                value, closing, name = {}, b"}", None
            else:
                value, closing = self.scalar(), None
            if not open_values and not isinstance(value, kind):
                raise JsonError("json.no-object")
            if closing is not None and not self.take(closing):
                if isinstance(value, dict):
                    name = self.name()
                open_values.append((value, closing, name))
                continue
            while open_values:
                container, closing, name = open_values.pop()
                if isinstance(container, dict):
                    container[name] = value
                else:
                    container.append(value)
                if self.take(b","):
                    if isinstance(container, dict):
                        name = self.name()
                    open_values.append((container, closing, name))
                    break
                self.expect(closing)
                value = container
            else:
                if self.position != len(self.text):
                    raise JsonError("json.syntax")
                return value


def read_json(text, kind=object):
    """The value of the text, which is of this kind; raises JsonError."""
    return Reader(text).document(kind)
