"""Lists the mutants of a source: copies that differ from it in one small change of code.

The sources are formatted by clang-format, and the difference between `a < b` and `array<b>`, or
`a & b` and `T& b`, is taken from there: an operator between two operands has white space on both of
its sides.
"""

import hashlib
import re
from dataclasses import dataclass

from mutation.tokens import calls_of, code_tokens

# Each operator between two operands, and what takes its place.
BINARY = {
    "comparison": {
        "<": ("<=", ">="),
        ">": (">=", "<="),
        "<=": ("<", ">"),
        ">=": (">", "<"),
        "==": ("!=",),
        "!=": ("==",),
    },
    "logical operator": {"&&": ("||",), "||": ("&&",)},
    "arithmetic": {"+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "%": ("*", "/")},
    "bit operator": {"&": ("|",), "|": ("&",), "^": ("|", "&"), "<<": (">>",), ">>": ("<<",)},
    "assignment": {
        "+=": ("-=", "="),
        "-=": ("+=", "="),
        "*=": ("=",),
        "&=": ("|=", "="),
        "|=": ("&=", "="),
        "^=": ("|=", "="),
        "<<=": (">>=", "="),
        ">>=": ("<<=", "="),
    },
}
# Left out: what the compiler alone reads, and the invariants that only a checking build asks for.
NOT_RUN = ("static_assert", "__attribute__", "verify")
CLOSERS = {"(": ")", "[": "]", "{": "}"}
NOT_REMOVABLE = frozenset("case default using delete goto else if for while do switch".split())
INTEGER = re.compile(r"(0[xX])?([0-9A-Fa-f']+?)([uUlLzZ]*)")


@dataclass(frozen=True)
class Mutant:
    """One change: the text from `start` to `end` of the file becomes `replacement`."""

    file: str
    kind: str
    start: int
    end: int
    replacement: str
    line: int
    before: str  # the lines that the change touches, each run of white space one space
    after: str  # the same lines with the change
    occurrence: int  # 1, or the n-th place of the file with such a change

    @property
    def key(self):
        """What stays the same when the lines around the change move."""
        return (self.file, self.occurrence, self.before, self.after)

    @property
    def name(self):
        return hashlib.sha256("\n".join(map(str, self.key)).encode()).hexdigest()[:10]

    def applied(self, source):
        return source[: self.start] + self.replacement + source[self.end :]


class Scan:
    """The tokens of a source, with the bracket that belongs to each, and the changes found."""

    def __init__(self, source):
        self.source = source
        self.tokens = code_tokens(source)
        self.match = {}  # index of a bracket: index of the other one
        self.inside = []  # for each token the index of the bracket that it stands in, or None
        self.changes = []  # (kind, start, end, replacement)
        open_brackets = []
        for i, token in enumerate(self.tokens):
            if token.text in CLOSERS.values() and token.kind == "operator":
                opener = open_brackets.pop()
                if CLOSERS[self.tokens[opener].text] != token.text:
                    raise ValueError(f"bracket at {token.start} closes another kind")
                self.match[opener], self.match[i] = i, opener
            self.inside.append(open_brackets[-1] if open_brackets else None)
            if token.text in CLOSERS and token.kind == "operator":
                open_brackets.append(i)
        if open_brackets:
            raise ValueError("a bracket is never closed")
        self.excluded = set()
        for first, last in calls_of(NOT_RUN, self.tokens):
            self.excluded.update(range(first, last + 1))

    def text(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def change(self, kind, first, last, replacement):
        """Replaces the tokens from `first` to `last`, both included."""
        if first not in self.excluded:
            start, end = self.tokens[first].start, self.tokens[last].end
            if self.source[start:end] != replacement:
                self.changes.append((kind, start, end, replacement))

    def insert_around(self, kind, first, last, before, after):
        start, end = self.tokens[first].start, self.tokens[last].end
        self.change(kind, first, last, before + self.source[start:end] + after)

    def is_spaced(self, index):
        token = self.tokens[index]
        around = self.source[token.start - 1 : token.start] + self.source[token.end : token.end + 1]
        return len(around) == 2 and around.isspace()

    def operators(self):
        for i, token in enumerate(self.tokens):
            if token.kind != "operator":
                continue
            for kind, table in BINARY.items():
                for other in table.get(token.text, ()) if self.is_spaced(i) else ():
                    self.change(kind, i, i, other)
            if token.text == "++":
                self.change("step", i, i, "--")
            elif token.text == "--":
                self.change("step", i, i, "++")
            elif token.text in "!-~" and not self.is_spaced(i) and not self.is_destructor(i):
                self.change("negation", i, i, "")

    def is_destructor(self, index):
        return self.text(index) == "~" and self.text(index + 2) == "(" and (
            self.text(index + 3) == ")" and self.text(index + 4) in ("{", ";")
        )

    def constants(self):
        for i, token in enumerate(self.tokens):
            if token.kind == "number":
                for other in other_numbers(token.text):
                    self.change("constant", i, i, other)
            elif token.kind == "character":
                self.change("constant", i, i, other_character(token.text))
            elif token.kind == "string" and not token.text.startswith("R"):
                self.change("text", i, i, other_string(token.text))
            elif token.text in ("true", "false"):
                self.change("constant", i, i, "false" if token.text == "true" else "true")

    def conditions(self):
        for i, token in enumerate(self.tokens):
            head = i + 2 if self.text(i + 1) == "constexpr" else i + 1
            if token.text in ("if", "while") and self.text(head) == "(":
                first, last = head + 1, self.match[head] - 1
                if not self.declares(head):
                    if not self.has_other_negation(first, last):
                        self.insert_around("condition", first, last, "!(", ")")
                    self.insert_around("condition", first, last, "(", ") && false")
                    if token.text == "if":
                        self.insert_around("condition", first, last, "(", ") || true")
            elif token.text == "?":
                self.swapped_choice(i)

    def declares(self, head):
        """Whether the condition in these parentheses is a declaration, which has no negation."""
        inner = range(head + 1, self.match[head])
        return any(self.inside[i] == head and self.text(i) == "=" for i in inner)

    def has_other_negation(self, first, last):
        """Whether another change negates the whole condition already."""
        operators = [self.text(j) for j in range(first, last + 1)]
        if "&&" in operators or "||" in operators:
            return False
        return operators[0] == "!" or "==" in operators or "!=" in operators

    def swapped_choice(self, question):
        level = self.inside[question]
        depth = 0
        colon = end = None
        for i in range(question + 1, len(self.tokens)):
            if self.inside[i] != level:
                continue
            if self.text(i) == "?":
                depth += 1
            elif self.text(i) == ":" and depth > 0:
                depth -= 1
            elif self.text(i) == ":" and colon is None:
                colon = i
            elif self.text(i) in (",", ";") or i == self.match.get(level):
                end = i
                break
        if colon is None or end is None:
            end = self.match.get(level, end)
        yes = self.source[self.tokens[question + 1].start : self.tokens[colon - 1].end]
        no = self.source[self.tokens[colon + 1].start : self.tokens[end - 1].end]
        self.change("condition", question + 1, end - 1, f"{no} : {yes}")

    def statements(self):
        for i, token in enumerate(self.tokens):
            if not self.begins_statement(i):
                continue
            end = self.end_of_statement(i)
            if token.text == "return" and end > i + 1:
                if self.text(i + 1) not in ("false", "0", "nullptr") or end > i + 2:
                    self.change("return", i + 1, end - 1, "{}")
            elif self.is_removable(i, end):
                lines = self.source[token.start : self.tokens[end - 1].end].count("\n")
                self.change("statement", i, end - 1, "\n" * lines)

    def begins_statement(self, index):
        level = self.inside[index]
        if level is None or self.text(level) != "{":
            return False
        before = self.text(index - 1)
        if before == ")":
            return self.text(self.match[index - 1] - 1) in ("if", "for", "while", "constexpr")
        if before == ":":
            return self.is_label(index - 1)
        return before in ("{", "}", ";", "else", "do")

    def is_label(self, colon):
        for i in range(colon - 1, -1, -1):
            if self.text(i) in ("case", "default"):
                return True
            if self.text(i) in (":", "?", ";", "{", "}", ",", "="):
                return False
        return False

    def end_of_statement(self, index):
        """The semicolon that ends what begins here, or the brace that begins a block in it."""
        level = self.inside[index]
        for i in range(index, len(self.tokens)):
            if self.inside[i] == level and self.text(i) == ";":
                return i
            if i == self.match.get(level):
                return index
        return index

    def is_removable(self, first, end):
        """Whether the tokens up to `end` are a statement of an expression, or a jump.

        Removing a declaration would only be refused by the compiler.
        """
        if self.text(first) == "return":
            return end == first + 1
        if end <= first or self.text(first) in NOT_REMOVABLE:
            return False
        if self.text(end - 1) in ("delete", "default"):
            return False
        if self.text(first) in ("break", "continue", "throw"):
            return True
        i = first
        while self.text(i) in ("*", "++", "--", "::", "("):
            i = self.match[i] + 1 if self.text(i) == "(" else i + 1
        while i < end:
            if self.text(i) in ("(", "["):
                i = self.match[i] + 1
            elif self.tokens[i].kind == "word" and (
                i == first or self.text(i - 1) in ("::", ".", "->", "*", "++", "--")
            ):
                i += 1
            elif self.text(i) in ("::", ".", "->"):
                i += 1
            else:
                break
        followers = {"=", "++", "--", *BINARY["assignment"]}
        return i > first and (i == end or self.text(i) in followers)


def other_numbers(text):
    match = INTEGER.fullmatch(text)
    if not match:
        return []
    prefix, digits, suffix = match.groups()
    if prefix:
        width = len(digits)
        return [f"{prefix}{int(digits, 16) ^ 1:0{width}X}{suffix}"]
    value = int(digits.replace("'", ""))
    return [f"{other}{suffix}" for other in (value + 1, value - 1) if other >= 0]


def other_character(text):
    if text == r"'\0'":
        return r"'\1'"
    if text.startswith(r"'\x") or text.startswith("'\\"):
        return "'x'"
    return f"'{chr(ord(text[1]) + 1)}'"


def other_string(text):
    """Without its last character; of an empty text, with one."""
    opening = text.index('"') + 1
    content = text[opening:-1]
    if not content:
        return f'{text[:opening]}x"'
    shorter = re.match(r"((?:\\.|[^\\])*?)(?:\\.|[^\\])$", content, re.DOTALL).group(1)
    return f'{text[:opening]}{shorter}"'


def touched_lines(source, start, end):
    first = source.rfind("\n", 0, start) + 1
    last = source.find("\n", end)
    return first, last if last != -1 else len(source)


def mutants_of(file, source):
    """All mutants of a source, in the order of their places."""
    scan = Scan(source)
    scan.operators()
    scan.constants()
    scan.conditions()
    scan.statements()
    mutants = []
    seen = {}
    for kind, start, end, replacement in sorted(scan.changes, key=lambda c: (c[1], c[2], c[3])):
        first, last = touched_lines(source, start, end)
        before = " ".join(source[first:last].split())
        after = " ".join((source[first:start] + replacement + source[end:last]).split())
        seen[before, after] = seen.get((before, after), 0) + 1
        line = source.count("\n", 0, start) + 1
        mutants.append(
            Mutant(file, kind, start, end, replacement, line, before, after, seen[before, after])
        )
    return mutants
