"""The folder that requests name: projects, files, and signatures over what can be asked for."""

import collections
import json
import os
import shutil
from dataclasses import dataclass, field
from pathlib import Path

import project_file
import project_maker
import signature_scheme
from base64_decoder import base64_decoded
from curve_point import ORDER
from input_file import signed_content
from project_key import project_key
from stopped import Stopped
from unsound_keys import keys_of_mixed_words, unsound_keys

VECTORS = Path(__file__).resolve().parents[1] / "vectors"
BASE64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"


@dataclass(frozen=True)
class Document:
    """Bytes, and one way to ask for them."""
    content: bytes
    data: bytes = b""
    data_encoding: bytes = b""
    file: bytes = b""


@dataclass(frozen=True)
class Signed:
    """A signature that is valid, but where the arithmetic's rules refuse it."""
    project: bytes
    document: Document
    text: bytes


@dataclass
class Material:
    documents: list = field(default_factory=list)
    signed: list = field(default_factory=list)
    sound: list = field(default_factory=list)
    projects: list = field(default_factory=list)
    relatives: list = field(default_factory=list)  # files made of one key, good and bad
    signed_by_their_key: list = field(default_factory=list)
    unsound: list = field(default_factory=list)  # pairs of a project and its key
    never_signing: list = field(default_factory=list)  # projects that sign no first document
    files: list = field(default_factory=list)
    # Lists of what the same rule stops, or none: rare rules are met as often as others.
    signing_projects: list = field(default_factory=list)
    verifying_projects: list = field(default_factory=list)
    files_by_rule: list = field(default_factory=list)


def base64_document(choice, groups):
    text = "".join(choice.choices(BASE64, k=4 * groups))
    text = (text[:-2] + choice.choice(("==", text[-2] + "=", text[-2:]))).encode()
    return Document(base64_decoded(text), text, b"base64")


def add_documents(material, choice, folder):
    for text in ("hello", "0", "\x00", "a+b & c=d%41", "\u20ac \U0001f600 \x7f", "x" * 4000,
                 '"\\/\b\f\n\r\t'):
        data = text.encode()
        material.documents.append(Document(data, data, choice.choice((b"", b"plain"))))
    for size in (1, 55, 56, 63, 64, 65, 300):
        data = choice.randbytes(size)
        material.documents.append(Document(data, data, b"plain"))
    for groups in (1, 1, 1, 2, 2, 3, 14, 200):
        material.documents.append(base64_document(choice, groups))
    for size in (1, 2, 64, 4096, 100_000):
        content = choice.randbytes(size)
        name = f"file-{size}"
        (folder / name).write_bytes(content)
        material.documents.append(Document(content, file=name.encode()))


def add_files(material, choice, folder):
    """Files that are refused, and those whose size counts modulo 2^32."""
    (folder / "file-0").touch()
    (folder / "folder").mkdir()
    content = choice.randbytes(5)
    for name, size in (("size-2-31", 2**31), ("size-2-32", 2**32), ("size-2-32-and-5", 2**32 + 5)):
        with open(folder / name, "wb") as file:
            file.write(content)
            file.truncate(size)
        material.files.append(name.encode())
    material.documents.append(Document(content, file=b"size-2-32-and-5"))
    (folder / "link").symlink_to("file-64")
    (folder / "link-to-nothing").symlink_to("nothing")
    (folder / "link-to-itself").symlink_to("link-to-itself")
    (folder / "unreadable").write_bytes(b"secret")
    (folder / "unreadable").chmod(0)
    material.files += [b"file-0", b"file-1", b"file-64", b"file-100000", b"folder", b"folder/",
                       b"link", b"link-to-nothing", b"link-to-itself", b"unreadable", b"./file-2",
                       b"folder/../file-2", b"file-2/", b"", b".", b"/", b"/dev/null", b"nothing",
                       b"x" * 300, b"y/" * 3000, b" file-2", b"file-2 ", b"\xff\xfe", b"FILE-2"]


def write_project(material, folder, name, content, sound=False):
    (folder / name).write_bytes(content)
    material.projects.append(name.encode())
    if sound:
        material.sound.append(name.encode())


def add_projects(material, choice, folder):
    keys = project_maker.sound_keys(choice)
    for name, key in keys.items():
        write_project(material, folder, f"key-{name}",
                      project_maker.container(project_maker.key_values(key).items()), sound=True)
    key = keys["random-0"]
    for kind in ("sound", "damaged", "changed", "incomplete"):
        for name, content in getattr(project_maker, f"{kind}_files")(key, choice):
            write_project(material, folder, f"{kind}-{name}", content, sound=kind == "sound")
            material.relatives.append(f"{kind}-{name}".encode())
    add_unsound_projects(material, choice, folder)
    material.projects += [b"nothing", b"folder", b"/", b"/dev/null", b"link-to-nothing",
                          b"file-4096", b"./key-random-0", b"folder/../key-random-1",
                          b"key-random-0/"]
    return keys


def add_unsound_projects(material, choice, folder):
    numbers = [signature_scheme.message_number(document.content) for document in material.documents]
    for name, key in unsound_keys(choice, numbers[0]):
        material.unsound.append((write_unsound_project(material, folder, name, key), key))
    material.never_signing = [b"unsound-r-of-zero", b"unsound-s-of-zero"]
    mixed = ((document, e) for document, e in zip(material.documents, numbers, strict=True)
             if any(keys_of_mixed_words(e)))
    document, e = next(mixed)
    for name, key in keys_of_mixed_words(e):
        project = write_unsound_project(material, folder, name, key)
        material.signed.append(Signed(project, document, signature_scheme.rendered(e, e)))


def write_unsound_project(material, folder, name, key):
    values = project_maker.key_values(key)
    write_project(material, folder, f"unsound-{name}", project_maker.container(values.items()))
    return material.projects[-1]


def add_signatures(material, choice, keys):
    """Signatures by each sound key; of those with an odd base point r is its x every other time."""
    for name, key in keys.items():
        count = 24 if name == "random-0" else 4
        for place, document in enumerate(choice.sample(material.documents, count)):
            odd = name.startswith("x-") and place % 2 == 0
            nonce = 1 if odd else choice.randrange(1, ORDER)
            text = signature_scheme.signed(key.base, key.scalar, document.content, nonce)
            material.signed.append(Signed(f"key-{name}".encode(), document, text))
    material.signed_by_their_key = [signed for signed in material.signed
                                    if signed.project == b"key-random-0"]


def add_vectors(material, folder):
    """The signatures of tests/vectors/signatures.json, of data that no text of JSON can hold."""
    vectors = json.loads((VECTORS / "signatures.json").read_text(encoding="utf-8"))["signatures"]
    for vector in vectors:
        name = Path(vector["project"]).name
        if not (folder / name).exists():
            shutil.copy(VECTORS / "projects" / name, folder / name)
            material.projects.append(name.encode())
            material.sound.append(name.encode())
        message = bytes.fromhex(vector["message"])
        material.signed.append(Signed(name.encode(), Document(message, message, b"plain"),
                                      vector["text"].encode()))


def by_rule(folder, names, read):
    """The names in lists of those that the same rule stops."""
    lists = collections.defaultdict(list)
    for name in names:
        try:
            read(name and os.path.join(bytes(folder), name))
            lists[None].append(name)
        except Stopped as stopped:
            lists[stopped.rule].append(name)
    return list(lists.values())


def order_by_rules(material, folder):
    def loaded(path):
        return project_key(project_file.load(path))

    material.signing_projects = by_rule(folder, material.projects,
                                        lambda path: loaded(path).require_for_signing())
    material.verifying_projects = by_rule(folder, material.projects,
                                          lambda path: loaded(path).require_for_verifying())
    material.files_by_rule = by_rule(folder, material.files, signed_content)


def made_in(folder, choice):
    """Fills the folder, the same for the same state of `choice`."""
    material = Material()
    folder = Path(folder)
    add_documents(material, choice, folder)
    add_files(material, choice, folder)
    keys = add_projects(material, choice, folder)
    add_signatures(material, choice, keys)
    add_vectors(material, folder)
    order_by_rules(material, folder)
    return material
