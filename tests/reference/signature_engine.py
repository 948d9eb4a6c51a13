"""What the program makes of a project and bytes or a file: a signature, or a verdict on one."""

from dataclasses import dataclass

import project_file
import signature_scheme
from input_file import signed_content
from key_soundness import is_sound
from project_key import project_key
from stopped import Stopped

VALID = "signature.valid"


@dataclass(frozen=True)
class SignatureDue:
    """A signature of `data` by this scalar on this base point."""
    base: tuple
    scalar: int
    data: bytes

    def accepts(self, text):
        return signature_scheme.was_made_with(self.base, self.scalar, self.data, text)


def loaded_key(project, data):
    if not data:
        raise Stopped("data.empty")
    return project_key(project_file.load(project))


def sign_data(project, data):
    """SignatureDue; Stopped where none is made."""
    key = loaded_key(project, data)
    key.require_for_signing()
    e = signature_scheme.message_number(data)
    if not signature_scheme.can_be_signed(key.base(), key.scalar, e):
        raise Stopped("signature.none")
    return SignatureDue(key.base(), key.scalar, data)


def verify_data(project, data, text):
    """Stopped where the verdict is false."""
    key = loaded_key(project, data)
    key.require_for_verifying()
    if not signature_scheme.fits(key.base(), key.public(), data, text):
        raise Stopped("signature.mismatch" if is_sound(key) else "key.unsound")


def sign_file(project, path):
    return sign_data(project, signed_content(path))


def verify_file(project, path, text):
    verify_data(project, signed_content(path), text)
