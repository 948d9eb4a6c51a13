"""A JSON body, copied into the record."""

from announced_length import json_length, require_room
from json_reader import JsonError, read_json
from request_record import GENERATE, VERIFY, RequestRecord, text_encoding


def json_body(environment, body):
    """The bytes that are parsed; JsonError where they cannot be a text, whatever they say."""
    announced = environment.get(b"CONTENT_LENGTH")
    if announced is None:
        raise JsonError("json.length-unset")
    length = json_length(announced)
    if length == 0:
        raise JsonError("json.length-zero")
    require_room("json", length)
    if len(body) < length:
        raise JsonError("json.body-short")
    text = body[:length]
    if b"\0" in text:
        raise JsonError("json.zero-byte")
    return text


def member(values, name, default):
    """A known member; JsonError if it is there with another type than the default's."""
    value = values.get(name, default)
    if type(value) is not type(default):
        raise JsonError("json.member-type")
    return value


def record_of_json(text):
    """The record; raises JsonError."""
    values = read_json(text, dict)
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
