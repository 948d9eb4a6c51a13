"""The two operations: what a request must hold, and how the result is rendered."""

import signature_engine
from answer import JSON, OK, TEXT, Answer, SignatureAnswer, refusal
from base64_decoder import Base64Error, base64_decoded
from request_record import terminated
from stopped import Stopped


def input_refusal(record):
    """The refusal of what is to be signed or verified, or None."""
    if bool(record.data) == bool(record.file):
        return refusal("request.two-inputs" if record.data else "request.no-input",
                       b"Either 'data' or 'file' parameter is required")
    if record.data_encoding not in (b"plain", b"base64"):
        return refusal("request.data-encoding",
                       b"Signature encoding must be 'plain' or 'base64'")
    if record.data and record.data_encoding == b"base64":
        try:
            base64_decoded(record.data)
        except Base64Error as error:
            return refusal(error.rule, b"Invalid base64 data")
    return None


def data_bytes(record):
    return base64_decoded(record.data) if record.data_encoding == b"base64" else record.data


def generate_signature(record):
    refused = input_refusal(record)
    if refused is not None:
        return refused
    project = terminated(record.project)
    try:
        if record.data:
            due = signature_engine.sign_data(project, data_bytes(record))
        else:
            due = signature_engine.sign_file(project, terminated(record.file))
    except Stopped as error:
        return refusal(error.rule, b"Signature generation failed")
    if record.encoding == b"json":
        return SignatureAnswer(JSON, b'{"signature":"', b'"}', due)
    return SignatureAnswer(TEXT, b"signature:" if record.gen_pairs else b"", b"", due)


def verdict_answer(record, rule):
    word = b"true" if rule == signature_engine.VALID else b"false"
    if record.encoding == b"json":
        return Answer(rule, OK, JSON, b'{"valid":' + word + b"}")
    return Answer(rule, OK, TEXT, (b"valid:" if record.gen_pairs else b"") + word)


def verify_signature(record):
    if not record.signature:
        return refusal("request.no-signature", b"'signature' parameter is required")
    refused = input_refusal(record)
    if refused is not None:
        return refused
    project, text = terminated(record.project), terminated(record.signature)
    try:
        if record.data:
            signature_engine.verify_data(project, data_bytes(record), text)
        else:
            signature_engine.verify_file(project, terminated(record.file), text)
    except Stopped as error:
        return verdict_answer(record, error.rule)
    return verdict_answer(record, signature_engine.VALID)
