"""Project files: a header, a directory of numbered values, an MD5 of all behind the header."""

import hashlib
import struct

MAGIC = b"VLT2"
HEADER = struct.Struct("<4sI16s")
ENTRY = struct.Struct("<III")


def attributes(content):
    """The values by id, or None for content that is refused; the first value of an id counts."""
    if len(content) < HEADER.size:
        return None
    magic, entry_count, digest = HEADER.unpack_from(content)
    if magic != MAGIC:
        return None
    if entry_count == 0:
        return {}
    body = content[HEADER.size:]
    if not body or hashlib.md5(body).digest() != digest:
        return None
    if entry_count * ENTRY.size > len(body):
        return None
    table = {}
    for index in range(entry_count):
        identifier, offset, size = ENTRY.unpack_from(body, index * ENTRY.size)
        if size == 0 or offset + size > len(content):
            return None
        table.setdefault(identifier, content[offset:offset + size])
    return table


def load(path):
    """The attributes of the file at this path, or None."""
    try:
        with open(path, "rb") as file:
            return attributes(file.read())
    except OSError:
        return None
