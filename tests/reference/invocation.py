"""The name that the program was started by."""


def file_stem(path):
    """The file name without what stands from its last dot on; both slashes separate."""
    start = max(path.rfind(b"/"), path.rfind(b"\\")) + 1
    dot = path.rfind(b".")
    return path[start:dot] if dot >= start else path[start:]


def is_nph(path):
    return file_stem(path).startswith(b"nph-")
