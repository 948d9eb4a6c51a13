"""The two operations: what a request must hold, and how the result is rendered."""

import signature_engine
from answer import JSON, OK, TEXT, Answer, SignatureAnswer, refusal
from base64_decoder import Base64Error, base64_decoded
from request_record import terminated

NOT_MADE = refusal(b"Signature generation failed")


def input_refusal(record):
    """The refusal of what is to be signed or verified, or None."""
    if bool(record.data) == bool(record.file):
        return refusal(b"Either 'data' or 'file' parameter is required")
    if record.data_encoding not in (b"plain", b"base64"):
        return refusal(b"Signature encoding must be 'plain' or 'base64'")
    if record.data and record.data_encoding == b"base64":
        try:
            base64_decoded(record.data)
        except Base64Error:
            return refusal(b"Invalid base64 data")
    return None


def data_bytes(record):
    return base64_decoded(record.data) if record.data_encoding == b"base64" else record.data


def generate_signature(record):
    refused = input_refusal(record)
    if refused is not None:
        return refused
    project = terminated(record.project)
    if record.data:
        due = signature_engine.sign_data(project, data_bytes(record))
    else:
        due = signature_engine.sign_file(project, terminated(record.file))
    if due is None:
        return NOT_MADE
    if record.encoding == b"json":
        return SignatureAnswer(JSON, b'{"signature":"', b'"}', due)
    return SignatureAnswer(TEXT, b"signature:" if record.gen_pairs else b"", b"", due)


def verdict_answer(record, verdict):
    word = b"true" if verdict else b"false"
    if record.encoding == b"json":
        return Answer(OK, JSON, b'{"valid":' + word + b"}")
    return Answer(OK, TEXT, (b"valid:" if record.gen_pairs else b"") + word)


def verify_signature(record):
    if not record.signature:
        return refusal(b"'signature' parameter is required")
    refused = input_refusal(record)
    if refused is not None:
        return refused
    project, text = terminated(record.project), terminated(record.signature)
    if record.data:
        verdict = signature_engine.verify_data(project, data_bytes(record), text)
    else:
        verdict = signature_engine.verify_file(project, terminated(record.file), text)
    return verdict_answer(record, verdict)
