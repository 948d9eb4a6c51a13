"""A request to a FastCGI socket whose body ends when it is told to, so that a program waits for it."""

import contextlib
import socket
import struct

from fastcgi import (BEGIN_REQUEST, PARAMS, RESPONDER, STDIN, STDOUT, pair, read_records, record,
                     stream)

# fcgiwrap hands a body on whenever so many bytes of it have come, and when it ends.
BUFFER = 65536


class HeldRequest:
    def __init__(self, path, seconds, **parameters):
        self.connection = socket.socket(socket.AF_UNIX)
        self.connection.settimeout(seconds)
        self.connection.connect(str(path))
        pairs = b"".join(pair(name.encode(), value.encode()) for name, value in parameters.items())
        self.connection.sendall(record(BEGIN_REQUEST, struct.pack("!HB5x", RESPONDER, 0))
                                + stream(PARAMS, pairs))

    def send(self, body):
        self.connection.sendall(stream(STDIN, body)[:-len(record(STDIN))])

    def finish(self):
        """Ends the body; gives what the program answers, as far as it comes."""
        answer = b""
        with self.connection:
            with contextlib.suppress(BrokenPipeError):
                self.connection.sendall(record(STDIN))
            with contextlib.suppress(ConnectionResetError):
                for kind, content in read_records(self.connection):
                    answer += content if kind == STDOUT else b""
        return answer

    def close(self):
        self.connection.close()
