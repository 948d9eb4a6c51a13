"""What the program makes of a project and bytes or a file: a signature, or a verdict on one."""

from dataclasses import dataclass

import project_file
import signature_scheme
from input_file import signed_content
from project_key import project_key


@dataclass(frozen=True)
class SignatureDue:
    """A signature of `data` by this scalar on this base point."""
    base: tuple
    scalar: int
    data: bytes

    def accepts(self, text):
        return signature_scheme.was_made_with(self.base, self.scalar, self.data, text)


def sign_data(project, data):
    """SignatureDue, or None for a refusal."""
    table = project_file.load(project) if data else None
    if table is None:
        return None
    key = project_key(table)
    if key.scalar is None or not key.has_public_point() or not key.base_states_the_degree():
        return None
    e = signature_scheme.message_number(data)
    if not signature_scheme.can_be_signed(key.base(), key.scalar, e):
        return None
    return SignatureDue(key.base(), key.scalar, data)


def verify_data(project, data, text):
    table = project_file.load(project) if data else None
    if table is None:
        return False
    key = project_key(table)
    return (key.has_public_point() and key.public_states_the_degree()
            and key.base_states_the_degree()
            and signature_scheme.is_valid(key.base(), key.public(), data, text))


def sign_file(project, path):
    return sign_data(project, signed_content(path))


def verify_file(project, path, text):
    return verify_data(project, signed_content(path), text)
