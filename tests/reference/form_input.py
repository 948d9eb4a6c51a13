"""Form text: cut, decoded and copied into the record."""

import re

from announced_length import BEYOND, form_length, require_room
from request_record import GENERATE, VERIFY, RequestRecord, text_encoding
from stopped import Stopped

HEXADECIMAL = re.compile(rb"[ \t\n\v\f\r]*([+-]?)([0-9A-Fa-f]+)")


class NoForm(Stopped):
    """No form text is found."""


def form_text(environment, body):
    """The text that the program finds; raises NoForm."""
    announced = environment.get(b"CONTENT_LENGTH")
    if announced is None:
        raise NoForm("form.length-unset")
    length = form_length(announced)
    if length == 0:
        raise NoForm("form.length-zero")
    if length == BEYOND - 1:
        raise NoForm("form.length-range")
    require_room("form", length)
    if not body:
        raise NoForm("form.body-empty")
    return body[:length].partition(b"\0")[0]


def percent_byte(text):
    """The low eight bits of the hexadecimal number in these two bytes or fewer; 0 without one."""
    number = HEXADECIMAL.match(text)
    if number is None:
        return 0
    return (-1 if number[1] == b"-" else 1) * int(number[2], 16) & 0xFF


def decoded(text):
    result = bytearray()
    position = 0
    while position < len(text):
        character = text[position]
        if character == ord("%"):
            result.append(percent_byte(text[position + 1:position + 3]))
            position += 3
            continue
        result.append(ord(" ") if character == ord("+") else character)
        position += 1
    return bytes(result)


def parameters(text):
    """Names and values of the pieces that have a "="; the last of a name counts."""
    result = {}
    for piece in text.split(b"&"):
        name, equals, value = piece.partition(b"=")
        if equals:
            result[decoded(name)] = decoded(value)
    return result


def record_of_form(text):
    values = parameters(text)
    record = RequestRecord()
    if values.get(b"sig_create") == b"true":
        record.mode = GENERATE
    if values.get(b"sig_verify") == b"true":
        record.mode = VERIFY
    record.project = values.get(b"project", b"")
    record.encoding = text_encoding(values.get(b"encoding", b""))
    record.gen_pairs = values.get(b"genpairs", b"false") != b"false"
    record.data = values.get(b"sig_data", b"")
    record.data_encoding = text_encoding(values.get(b"sig_data_encoding", b""))
    record.file = values.get(b"sig_file", b"")
    record.signature = values.get(b"sig", b"")
    return record
