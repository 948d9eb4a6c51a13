"""The bytes of a response (RFC 3875, 6.2; under an "nph-" name the first line of RFC 1945, 6.1)."""


def response(nph, status, content_type, body):
    """The body is written up to its first zero byte, while its announced length counts all."""
    lines = (b"HTTP/1.0 " if nph else b"Status: ") + status + b"\r\n"
    if not body:
        return lines + b"\r\n\n"
    lines += b"Content-Type: " + content_type + b"\r\n"
    lines += b"Content-Length: %d\r\n\r\n" % len(body)
    return lines + body.partition(b"\0")[0]
