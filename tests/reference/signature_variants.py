"""Texts made from that of a valid signature: some verify as it does, most do not."""

import core_text
from curve_point import ORDER
from signature_scheme import LONGEST_HALF

PAIR_BYTES = 2 * LONGEST_HALF


def pair(text):
    raw, count = core_text.decode(text)
    half = count // 2
    return tuple(int.from_bytes(raw[start:start + half], "little") for start in (0, half))


def packed(r, s, size=LONGEST_HALF):
    """The text of two halves of this size, which keep what fits."""
    cut = 1 << 8 * size
    return core_text.encode((r % cut).to_bytes(size, "little") + (s % cut).to_bytes(size, "little"))


def one_byte_changed(choice, text):
    place = choice.randrange(len(text))
    return text[:place] + bytes([choice.randrange(256)]) + text[place + 1:]


def one_bit_changed(choice, text):
    place = choice.randrange(len(text))
    return text[:place] + bytes([text[place] ^ 1 << choice.randrange(8)]) + text[place + 1:]


def other_last_character(choice, text):
    place = len(text.rstrip(b"=")) - 1
    return text[:place] + choice.choice(core_text.ALPHABET).to_bytes(1, "big") + text[place + 1:]


def padding_inside(choice, text):
    place = choice.randrange(len(text))
    return text[:place] + b"=" + text[place + choice.randrange(2):]


def longest_text(choice, text):
    """A text of 128 characters or more, with just or nearly the padding that leaves its bytes."""
    size, pads = choice.choice(((128, 54), (132, 57), (132, 57), (128, 52), (128, 53), (128, 56)))
    return (text + b"=" * pads).ljust(size, b"A")


SAME_SIGNATURE = (
    lambda choice, text: packed(*pair(text)),
    lambda choice, text: text.replace(b"A", choice.choice((b"!", b" ", b"-", b"\x7f"))),
    lambda choice, text: text + choice.choice((b"A===", b"====A=A=", b"B===", b"====")),
    lambda choice, text: text + b"\0" + choice.randbytes(choice.randrange(9)),
    lambda choice, text: packed(pair(text)[0], ORDER - pair(text)[1]),
    other_last_character,
    longest_text,
)

OTHER_SIGNATURES = (
    lambda choice, text: packed(*pair(text)[::-1]),
    lambda choice, text: packed(*pair(text), choice.randrange(1, 30)),
    lambda choice, text: packed(pair(text)[0] + ORDER, pair(text)[1]),
    lambda choice, text: packed(pair(text)[0], pair(text)[1] + ORDER),
    lambda choice, text: packed(0, pair(text)[1]),
    lambda choice, text: packed(pair(text)[0], 0),
    lambda choice, text: packed(0, 0, choice.randrange(1, 22)),
    lambda choice, text: packed(choice.choice((ORDER - 1, ORDER, ORDER + 1, 1)), pair(text)[1]),
    lambda choice, text: packed(pair(text)[0], choice.choice((ORDER - 1, ORDER, ORDER + 1, 0, 1))),
    lambda choice, text: packed(choice.randrange(1, ORDER), choice.randrange(1, ORDER)),
    lambda choice, text: choice.choice((b"signature:", b" ")) + text,
    lambda choice, text: choice.choice((b"\0", b"\0" + text)),
    lambda choice, text: text[:choice.randrange(len(text))] or b"=",
    lambda choice, text: text[choice.randrange(1, len(text)):],
    lambda choice, text: text + text,
    lambda choice, text: text.ljust(choice.choice((124, 125, 128, 129, 132, 4000)), b"A"),
    lambda choice, text: b"=" * choice.choice((4, 8, 12, 56, 124, 128)),
    lambda choice, text: b"A" * choice.randrange(3) + b"=" * choice.choice((4, 8, 57, 125, 126)),
    lambda choice, text: choice.randbytes(choice.choice((1, 4, 52, 56, 60, 128))),
    lambda choice, text: bytes(choice.choices(core_text.ALPHABET, k=choice.choice((4, 52, 56)))),
    lambda choice, text: choice.choice((b"A===", b"AA======", b"=A==", b"A=B=C=======")),
    lambda choice, text: choice.choice((b"S", b"AAAA", b"A===", b"0", b"false", b"hJ2Y")),
    lambda choice, text: text.swapcase(),
    one_byte_changed,
    one_bit_changed,
    padding_inside,
)


def same_signature(choice, text):
    return choice.choice(SAME_SIGNATURE)(choice, text)


def other_signature(choice, text):
    return choice.choice(OTHER_SIGNATURES)(choice, text)
