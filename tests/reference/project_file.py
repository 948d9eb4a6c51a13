"""Project files: a header, a directory of numbered values, an MD5 of all behind the header."""

import hashlib
import struct

from input_file import opened
from stopped import Stopped

MAGIC = b"VLT2"
HEADER = struct.Struct("<4sI16s")
ENTRY = struct.Struct("<III")


def attributes(content):
    """The values by id; the first value of an id counts. Stopped for content that is refused.

    That the directory is there in full comes before what its entries say.
    """
    if len(content) < HEADER.size:
        raise Stopped("project.header")
    magic, entry_count, digest = HEADER.unpack_from(content)
    if magic != MAGIC:
        raise Stopped("project.magic")
    if entry_count == 0:
        return {}
    body = content[HEADER.size:]
    if not body:
        raise Stopped("project.no-body")
    if hashlib.md5(body).digest() != digest:
        raise Stopped("project.digest")
    if entry_count * ENTRY.size > len(body):
        raise Stopped("project.entries")
    table = {}
    for index in range(entry_count):
        identifier, offset, size = ENTRY.unpack_from(body, index * ENTRY.size)
        if size == 0:
            raise Stopped("project.entry-empty")
        if offset + size > len(content):
            raise Stopped("project.entry-range")
        table.setdefault(identifier, content[offset:offset + size])
    return table


def load(path):
    """The attributes of the file at this path; Stopped for one that is refused."""
    with opened(path, "project") as file:
        return attributes(file.read())
