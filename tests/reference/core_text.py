"""The radix-64 text of signatures: RFC 4648's alphabet, the bits of three bytes lowest first."""

ALPHABET = b"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"
VALUES = {character: value for value, character in enumerate(ALPHABET)}
PAD = ord("=")


def encode(data):
    text = bytearray()
    for start in range(0, len(data), 3):
        group = data[start:start + 3]
        value = int.from_bytes(group, "little")
        text += bytes(ALPHABET[value >> shift & 63] for shift in range(0, 6 * len(group) + 6, 6))
        text += b"=" * (3 - len(group))
    return bytes(text)


def decode(text):
    """The bytes of all groups, and the count of those that belong to the text.

    A byte outside the alphabet counts as "A". Each "=", wherever it stands, takes one from the
    count, which can get below zero. A text that is not made of whole groups has none.
    """
    if len(text) % 4:
        return b"", 0
    data = bytearray()
    for start in range(0, len(text), 4):
        value = sum(VALUES.get(character, 0) << 6 * place
                    for place, character in enumerate(text[start:start + 4]))
        data += value.to_bytes(3, "little")
    return bytes(data), len(data) - text.count(PAD)
