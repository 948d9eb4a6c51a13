"""Copies of the source tree that mutants are written into."""

import hashlib
import os
import shutil

LEFT_OUT = frozenset({".git", "build", "__pycache__"})


def files_below(root):
    for folder, folders, names in os.walk(root):
        folders[:] = sorted(set(folders) - LEFT_OUT)
        for name in names:
            yield os.path.relpath(os.path.join(folder, name), root)


def update(source, copy):
    """Makes `copy` the same as `source`, touching no file that is so already."""
    copy.mkdir(parents=True, exist_ok=True)
    wanted = set(files_below(source))
    for name in set(files_below(copy)) - wanted:
        (copy / name).unlink()
    for name in sorted(wanted):
        original, target = source / name, copy / name
        if original.is_symlink():
            target.parent.mkdir(parents=True, exist_ok=True)
            target.unlink(missing_ok=True)
            target.symlink_to(os.readlink(original))
        elif not target.exists() or target.read_bytes() != original.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            target.unlink(missing_ok=True)
            shutil.copyfile(original, target)
            shutil.copymode(original, target)


def digest(root):
    """Tells any two trees apart: of the names and the content of all files."""
    whole = hashlib.sha256()
    for name in sorted(files_below(root)):
        file = root / name
        content = os.readlink(file).encode() if file.is_symlink() else file.read_bytes()
        whole.update(f"{name}\0{hashlib.sha256(content).hexdigest()}\n".encode())
    return whole.hexdigest()
