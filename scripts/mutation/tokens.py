"""Splits C++ source into tokens, each with its place in the text."""

import re
from dataclasses import dataclass

PATTERN = re.compile(
    r"""
      (?P<space>      \s+ )
    | (?P<comment>    //[^\n]* | /\*.*?\*/ )
    | (?P<string>     (?:u8|[uUL])?R"(?P<mark>[^()\s\\]{0,16})\(.*?\)(?P=mark)"
                    | (?:u8|[uUL])?"(?:\\.|[^"\\\n])*" )
    | (?P<character>  (?:u8|[uUL])?'(?:\\.|[^'\\\n])+' )
    | (?P<number>     \.?\d(?:[eEpP][+-]|'?[0-9A-Za-z_.])* )
    | (?P<word>       [A-Za-z_]\w* )
    | (?P<operator>   <<= | >>= | <=> | -> | \.\.\. | :: | \+\+ | -- | && | \|\| | \#\#
                    | [-+*/%&|^=!<>]= | << | >> | [-+*/%&|^~!=<>?:;,.(){}[\]] )
    """,
    re.VERBOSE | re.DOTALL,
)
DIRECTIVE = re.compile(r"[ \t]*#(?:\\\n|//[^\n]*|/\*.*?\*/|[^\n])*", re.DOTALL)


@dataclass(frozen=True)
class Token:
    kind: str  # string, character, number, word or operator
    text: str
    start: int
    end: int


def code_tokens(source):
    """The tokens that the compiler makes code of: no comments, no preprocessor directives.

    What is no token of C++ raises ValueError: better no mutants than wrong ones.
    """
    tokens = []
    place = 0
    line_is_empty = True
    while place < len(source):
        directive = DIRECTIVE.match(source, place) if line_is_empty else None
        if directive:
            place = directive.end()
            line_is_empty = False
            continue
        match = PATTERN.match(source, place)
        if not match:
            line = source.count("\n", 0, place) + 1
            raise ValueError(f"line {line}: no token begins with {source[place : place + 10]!r}")
        kind = match.lastgroup if match.lastgroup != "mark" else "string"
        if kind == "space":
            line_is_empty = line_is_empty or "\n" in match.group()
        elif kind == "comment":
            line_is_empty = False
        else:
            line_is_empty = False
            tokens.append(Token(kind, match.group(), place, match.end()))
        place = match.end()
    return tokens


def calls_of(names, tokens):
    """The first and the last token of each call of one of these functions."""
    for first, token in enumerate(tokens[:-1]):
        if token.text in names and tokens[first + 1].text == "(":
            last, depth = first + 1, 1
            while depth > 0:
                last += 1
                depth += {"(": 1, ")": -1}.get(tokens[last].text, 0)
            yield first, last
