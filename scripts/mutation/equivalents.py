"""The record of mutants that no input can tell from the original, each with its reason.

An entry of the file names a source and gives the lines that the mutant touches, before and after,
and the reason, which may go on for several lines; an empty line ends it:

    core/example.cpp
    - while (length > 0) {
    + while (length != 0) {
    = `length` is unsigned: above 0 and not 0 are the same.

`core/example.cpp 2` is the second place of the file with the same lines. Line numbers do not
matter, so that an entry lasts as long as the lines that it is about.
"""


def read_equivalents(text):
    """From the keys of the mutants to their reasons; ValueError names a malformed entry."""
    reasons = {}
    for entry in text.split("\n\n"):
        lines = [line for line in entry.splitlines() if not line.startswith("#")]
        if not "".join(lines).strip():
            continue
        lines = [line.strip() for line in lines if line.strip()]
        marks = [line[:2] for line in lines[1:]]
        if len(lines) < 4 or marks[:2] != ["- ", "+ "] or set(marks[2:]) != {"= "}:
            raise ValueError(f"no entry of a name, -, + and =: {lines[0]}")
        file, _, occurrence = lines[0].partition(" ")
        key = (file, int(occurrence or 1), lines[1][2:], lines[2][2:])
        if key in reasons:
            raise ValueError(f"entered twice: {lines[0]}: {lines[2]}")
        reasons[key] = " ".join(line[2:] for line in lines[3:])
    return reasons
