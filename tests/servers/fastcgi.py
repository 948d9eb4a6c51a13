"""A FastCGI client that says to an application's socket whatever it is told to (FastCGI 1.0)."""

import socket
import struct

BEGIN_REQUEST, END_REQUEST, PARAMS, STDIN, STDOUT, STDERR = 1, 3, 4, 5, 6, 7
RESPONDER = 1
MOST_IN_A_RECORD = 65535
SECONDS_FOR_AN_ANSWER = 60


def record(kind, content=b""):
    return struct.pack("!BBHHBx", 1, kind, 1, len(content), 0) + content


def stream(kind, content):
    """The records of a stream, which an empty one ends."""
    pieces = [content[at:at + MOST_IN_A_RECORD]
              for at in range(0, len(content), MOST_IN_A_RECORD)]
    return b"".join(record(kind, piece) for piece in (*pieces, b""))


def pair(name, value):
    lengths = b"".join(struct.pack("!I", len(text) | 1 << 31) for text in (name, value))
    return lengths + name + value


def pairs(content):
    """The names and values in the content of a PARAMS stream."""
    def take(length):
        nonlocal content
        taken, content = content[:length], content[length:]
        return taken

    def take_length():
        first = take(1)
        if first[0] < 128:
            return first[0]
        return int.from_bytes(first + take(3), "big") - (1 << 31)

    while content:
        name, value = take_length(), take_length()
        yield take(name), take(value)


def read_records(connection):
    """Kind and content of each record, to the end of the connection."""
    reader = connection.makefile("rb")
    while header := reader.read(8):
        _, kind, _, length, padding = struct.unpack("!BBHHBx", header)
        yield kind, reader.read(length + padding)[:length]


def ask(path, parameters, body):
    """What the application behind this socket writes in answer to (name, value) pairs and a body."""
    pairs = b"".join(pair(str(name).encode(), str(value).encode()) for name, value in parameters)
    with socket.socket(socket.AF_UNIX) as connection:
        connection.settimeout(SECONDS_FOR_AN_ANSWER)
        connection.connect(str(path))
        connection.sendall(record(BEGIN_REQUEST, struct.pack("!HB5x", RESPONDER, 0)) +
                           stream(PARAMS, pairs) + stream(STDIN, body))
        return b"".join(content for kind, content in read_records(connection) if kind == STDOUT)
