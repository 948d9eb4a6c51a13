"""A JSON body, copied into the record."""

from announced_length import json_length, require_room
from json_reader import JsonError, read_json
from request_record import GENERATE, VERIFY, RequestRecord, text_encoding


def json_body(environment, body):
    """The bytes that are parsed: zeros take the place of those that did not come."""
    length = json_length(environment.get(b"CONTENT_LENGTH", b""))
    if length == 0:
        return b""
    require_room(length)
    read = body[:length]
    if len(read) < length:
        return read + b"\0" if read else b""
    return read


def member(values, name, default):
    """A known member; JsonError if it is there with another type than the default's."""
    value = values.get(name, default)
    if type(value) is not type(default):
        raise JsonError(f"{name!r} has another type")
    return value


def record_of_json(text):
    """The record; raises JsonError."""
    values = read_json(text)
    if not isinstance(values, dict):
        raise JsonError("not an object")
    record = RequestRecord()
    record.project = member(values, b"project", b"")
    mode = member(values, b"mode", b"")
    record.mode = mode if mode in (GENERATE, VERIFY) else None
    record.encoding = text_encoding(member(values, b"encoding", b""))
    record.gen_pairs = member(values, b"genPairs", False)
    signature = values.get(b"signature")
    if isinstance(signature, dict):
        record.data = member(signature, b"data", b"")
        record.data_encoding = text_encoding(member(signature, b"encoding", b""))
        record.file = member(signature, b"file", b"")
        record.signature = member(signature, b"signature", b"")
    return record
