"""Project files for requests: sound ones, and ones that are damaged or incomplete."""

import hashlib
import struct
from dataclasses import dataclass

from binary_field import DEGREE, product, square, square_root
from curve_point import COEFFICIENT_B, ORDER, PUBLISHED_BASE, multiplied
from project_file import ENTRY, HEADER, MAGIC
from project_key import BASE_X, BASE_Y, PRIVATE_SCALAR, PUBLIC_X, PUBLIC_Y

ODD_NUMBERS = (0, 1, 2, 4, 6, 24, 162, 164, 512, 513, 2**31, 2**32 - 1)
ORDER_TWO = (0, square_root(COEFFICIENT_B))


@dataclass(frozen=True)
class Key:
    """A base point, a private scalar and, unless told otherwise, the public point of both."""
    base: tuple
    scalar: int
    public: tuple | None = None

    def public_point(self):
        return self.public or multiplied(self.scalar % ORDER, self.base)


def half_trace(value):
    """z with z^2 + z = value, if there is one."""
    result = value
    for _ in range((DEGREE - 1) // 2):
        result = square(square(result)) ^ value
    return result


def point_with(x):
    """The point of the curve with this x and of its order, or None."""
    inverse_square = 1  # x^-2 = x^(2^163 - 3), as x^(2^163 - 1) = 1
    power = x
    for bit in range(DEGREE):
        if bit != 1:
            inverse_square = product(inverse_square, power)
        power = square(power)
    value = x ^ 1 ^ product(COEFFICIENT_B, inverse_square)
    z = half_trace(value)
    if square(z) ^ z != value:
        return None
    point = x, product(x, z)
    return point if multiplied(ORDER, point) is None else None


def points_from(x):
    """Points of the curve's order with the next x values from this one up."""
    while True:
        point = point_with(x)
        if point is not None:
            yield point
        x += 1


def element(value, degree=DEGREE, gap=b"\0\0\0\0"):
    return struct.pack("<I", degree) + gap + value.to_bytes((degree + 31) // 32 * 4, "little")


def scalar_value(number, bits=None):
    bits = number.bit_length() if bits is None else bits
    return struct.pack("<I", bits) + number.to_bytes((bits & 0x7FFFFFFF) + 7 >> 3, "little")


def key_values(key):
    (base_x, base_y), (public_x, public_y) = key.base, key.public_point()
    return {BASE_X: element(base_x), BASE_Y: element(base_y),
            PRIVATE_SCALAR: scalar_value(key.scalar),
            PUBLIC_X: element(public_x), PUBLIC_Y: element(public_y)}


def sealed(body, entry_count):
    return HEADER.pack(MAGIC, entry_count, hashlib.md5(body).digest()) + body


def container(entries, gap=b""):
    """A file of these pairs of id and value, in this order; `gap` stands in front of each value."""
    entries = list(entries)
    directory, values = b"", b""
    start = HEADER.size + ENTRY.size * len(entries)
    for identifier, value in entries:
        values += gap
        directory += ENTRY.pack(identifier, start + len(values), len(value))
        values += value
    return sealed(directory + values, len(entries))


def with_entry(content, index, **changes):
    """The file with fields of one directory entry changed, sealed anew."""
    entry_count = HEADER.unpack_from(content)[1]
    body = bytearray(content[HEADER.size:])
    fields = dict(zip(("identifier", "offset", "size"),
                      ENTRY.unpack_from(body, ENTRY.size * index), strict=True))
    fields.update(changes)
    ENTRY.pack_into(body, ENTRY.size * index, *fields.values())
    return sealed(bytes(body), entry_count)


def random_key(choice):
    base = multiplied(choice.randrange(1, ORDER), PUBLISHED_BASE)
    return Key(base, choice.randrange(1, ORDER))


def sound_keys(choice):
    """Keys by name, all of them sound, some at the limits of the arithmetic."""
    keys = {f"random-{number}": random_key(choice) for number in range(3)}
    base = keys["random-0"].base
    for name, scalar in (("one", 1), ("two", 2), ("minus-one", ORDER - 1), ("minus-two", ORDER - 2),
                         ("above-order", ORDER + choice.randrange(1, ORDER)),
                         ("widest", choice.getrandbits(320) | 1 << 319)):
        keys[f"scalar-{name}"] = Key(base, scalar)
    for name, x in (("one-limb", choice.getrandbits(60)), ("two-limbs", choice.getrandbits(126)),
                    ("three-limbs", 2**128), ("above-order", ORDER + choice.getrandbits(40)),
                    ("above-order-two-limbs", ORDER + (choice.getrandbits(100) | 1 << 100))):
        small = next(points_from(x))
        keys[f"x-{name}"] = Key(small, choice.randrange(3, ORDER - 3))
        keys[f"x-{name}-minus-one"] = Key(small, ORDER - 1)
    return keys


def sound_files(key, choice):
    """Files by name that hold this key in unusual ways."""
    values = key_values(key)
    entries = list(values.items())
    others = [(choice.getrandbits(32) | 128, choice.randbytes(size)) for size in (1, 9, 500)]
    mixed = entries + others
    choice.shuffle(mixed)
    yield "mixed", container(mixed, gap=choice.randbytes(3))
    yield "first-entry-counts", container(entries + [(name, b"\1" * 40) for name in values])
    yield "without-scalar", container((i, v) for i, v in entries if i != PRIVATE_SCALAR)
    yield "longest-values", container((i, v.ljust(296, b"\xff")) for i, v in entries)
    yield "dirty-gaps", container((i, v[:4] + b"\xff" * 4 + v[8:] if i != PRIVATE_SCALAR else v)
                                  for i, v in entries)
    negative = struct.unpack_from("<I", values[PRIVATE_SCALAR])[0] | 1 << 31
    yield "negative-scalar", container(
        (i, struct.pack("<I", negative) + v[4:] if i == PRIVATE_SCALAR else v) for i, v in entries)
    body = container(entries)[HEADER.size:]
    yield "junk-behind", sealed(body + choice.randbytes(77), len(entries))
    body = container(entries + [(5, b"x")])[HEADER.size:]
    yield "fewer-entries", sealed(body, len(entries))


def damaged_files(key, choice):
    """Files by name that do not load, or load without attributes."""
    content = container(key_values(key).items())
    yield "empty", b""
    for size in (1, 23, 24, 25, 83, 84, len(content) - 1):
        yield f"cut-{size}", content[:size]
    yield "magic", b"VLT1" + content[4:]
    for number in range(6):
        place = choice.randrange(choice.choice((HEADER.size, len(content))))
        flipped = bytes([content[place] ^ 1 << choice.randrange(8)])
        yield f"flipped-{number}", content[:place] + flipped + content[place + 1:]
    yield "no-entries", MAGIC + bytes(20)
    yield "no-entries-and-junk", MAGIC + bytes(4) + content[8:]
    yield "two-entries", content[:4] + struct.pack("<I", 2) + content[8:]
    for count in (6, 17, 18, 2**31, 2**32 - 1):
        yield f"count-{count}", content[:4] + struct.pack("<I", count) + content[8:]
    yield "header-and-count", HEADER.pack(MAGIC, 1, hashlib.md5(b"").digest())
    yield "size-zero", with_entry(content, 2, size=0)
    yield "offset-behind", with_entry(content, 4, offset=len(content) - 31)
    yield "offset-at-end", with_entry(content, 4, offset=len(content))
    yield "offset-largest", with_entry(content, 1, offset=2**32 - 1)
    yield "size-large", with_entry(content, 0, size=2**20)
    yield "other-id", with_entry(content, 0, identifier=77)
    yield "shared-bytes", with_entry(content, 0, offset=0, size=len(content))
    yield "random", choice.randbytes(300)


def changed_files(key, choice):
    """Files by name with bits or a number changed in directory or values; their digest fits."""
    content = container(key_values(key).items())
    for number in range(30):
        body = bytearray(content[HEADER.size:])
        for _ in range(choice.choice((1, 1, 2, 8))):
            body[choice.randrange(len(body))] ^= 1 << choice.randrange(8)
        yield f"{number}", sealed(bytes(body), 5)
    for number in range(20):
        entries = choice.sample(list(key_values(key).items()), choice.choice((4, 5, 5, 5)))
        place = choice.randrange(len(entries))
        identifier, value = entries[place]
        odd = choice.choice(ODD_NUMBERS)
        if choice.random() < 0.5:
            name = choice.choice(("identifier", "offset", "size"))
            yield f"{name}-{number}", with_entry(container(entries), place, **{name: odd})
        else:
            value = struct.pack("<I", odd) + value[4:choice.choice((5, 12, 295, 296))]
            entries[place] = identifier, value.ljust(choice.choice((1, 295, 296, 297)), b"\0")
            yield f"value-{number}", container(entries)


def incomplete_files(key, choice):
    """Files by name that load and whose key cannot be used for one operation or for both."""
    values = key_values(key)

    def changed(**changes):
        replaced = {int(name[1:]): value for name, value in changes.items()}
        return container((values | replaced).items())

    for missing in values:
        yield f"without-{missing}", container((i, v) for i, v in values.items() if i != missing)
        yield f"long-{missing}", changed(**{f"_{missing}": values[missing].ljust(297, b"\0")})
        yield f"short-{missing}", changed(**{f"_{missing}": values[missing][:-9]})
        yield f"byte-{missing}", changed(**{f"_{missing}": values[missing][:1]})
    for degree in (0, 1, 162, 164, 192, 511, 512, 513, 2**31, 2**32 - 1):
        stated = {i: struct.pack("<I", degree) + v[4:] for i, v in values.items()}
        yield f"base-{degree}", changed(_72=stated[BASE_X], _73=stated[BASE_Y])
        yield f"public-{degree}", changed(_75=stated[PUBLIC_X], _76=stated[PUBLIC_Y])
        yield f"public-x-{degree}", changed(_75=stated[PUBLIC_X])
        yield f"base-y-{degree}", changed(_73=stated[BASE_Y])
    for bits in (0, 1, 8, 64, 65, 128, 160, 319, 320):
        yield f"zero-scalar-{bits}", changed(_74=scalar_value(0, bits))
    for bits in (2**31, 2**31 | 64):
        yield f"zero-scalar-{bits}", changed(_74=scalar_value(0, bits))
    for bits in (321, 328, 2336, 2**20):
        yield f"scalar-{bits}", changed(_74=struct.pack("<I", bits) + choice.randbytes(292))
    yield "scalar-order", changed(_74=scalar_value(ORDER))
    yield "none", container([(1, b"x")])
