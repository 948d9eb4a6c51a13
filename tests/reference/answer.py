"""What a request is to be answered with, and whether the program's output is that."""

import signal
from dataclasses import dataclass, field

from response_writer import response

OK, BAD_REQUEST = b"200 OK", b"400 Bad Request"
TEXT, JSON = b"text/plain", b"application/json"


@dataclass(frozen=True)
class Answer:
    """These bytes and the exit status that goes with them, by the rule of this code."""
    rule: str
    status: bytes
    content_type: bytes
    body: bytes

    def kind(self):
        return f"{self.status.decode()}, {self.content_type.decode()}: {self.body.decode()}"

    def explained(self):
        return self.status.decode(), self.body.decode(), self.rule

    def accepts(self, nph, output, exit_status):
        return (output == response(nph, self.status, self.content_type, self.body)
                and exit_status == (0 if self.status == OK else 255))


@dataclass(frozen=True)
class SignatureAnswer:
    """A success with a fresh signature between two texts; `due` judges the signature."""
    content_type: bytes
    before: bytes
    after: bytes
    due: object = field(repr=False)
    rule: str = "signature.made"

    def kind(self):
        return f"200 OK, {self.content_type.decode()}: {(self.before + b'S' + self.after).decode()}"

    def explained(self):
        return "200 OK", (self.before + b"<signature>" + self.after).decode(), self.rule

    def accepts(self, nph, output, exit_status):
        body = output.rpartition(b"\r\n\r\n")[2]
        text = body.removeprefix(self.before).removesuffix(self.after)
        answer = Answer(self.rule, OK, self.content_type, self.before + text + self.after)
        return answer.accepts(nph, output, exit_status) and self.due.accepts(text)


@dataclass(frozen=True)
class Ended:
    """No room for the body: no output, and the end by SIGABRT."""
    rule: str

    @staticmethod
    def kind():
        return "no response"

    def explained(self):
        return None, None, self.rule

    def accepts(self, nph, output, exit_status):
        return output == b"" and exit_status == -signal.SIGABRT


def refusal(rule, message):
    return Answer(rule, BAD_REQUEST, TEXT, message)
