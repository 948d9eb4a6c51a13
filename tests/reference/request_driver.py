"""A whole request: the kind of its input, the record, the refusals in order, the operation."""

from announced_length import NoMemory
from answer import Ended, refusal
from form_input import NoForm, form_text, record_of_form
from json_input import json_body, record_of_json
from json_reader import JsonError
from request_record import GENERATE
from signature_requests import generate_signature, verify_signature


def answer_to_record(record, default_encoding):
    if record.mode is None:
        return refusal("request.mode", b"'mode' parameter missing or invalid")
    if not record.project:
        return refusal("request.project", b"'project' parameter is required")
    record.encoding = record.encoding or default_encoding
    record.data_encoding = record.data_encoding or b"plain"
    return generate_signature(record) if record.mode == GENERATE else verify_signature(record)


def answer_to_json(environment, body):
    try:
        record = record_of_json(json_body(environment, body))
    except JsonError as error:
        return refusal(error.rule, b"Invalid JSON data")
    return answer_to_record(record, b"json")


def answer_to_form(environment, body):
    try:
        text = form_text(environment, body)
    except NoForm as error:
        return refusal(error.rule, b"Failed to parse input data")
    return answer_to_record(record_of_form(text), b"urlencode")


def expected_answer(environment, body):
    """What the program is to answer, started in the current folder with these."""
    is_json = environment.get(b"CONTENT_TYPE") == b"application/json"
    try:
        return (answer_to_json if is_json else answer_to_form)(environment, body)
    except NoMemory as error:
        return Ended(error.rule)
