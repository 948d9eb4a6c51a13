"""The folders whose sources are changed, and the tests that meet each."""

PROGRAM_TESTS = "program_tests"
# A change in a header of one folder changes the objects of its whole group: the program that is
# built of a group, and the folders.
GROUPS = {
    "sign_cgi": ("core", "curve", "random", "project", "engine", "frontend"),
    "projectctl": ("verifier", "tools"),
}
DEFAULT_FOLDERS = GROUPS["sign_cgi"]
FOLDERS = tuple(folder for folders in GROUPS.values() for folder in folders)
# Becomes another program, which loses the counts of its coverage; its tests look from outside.
FOLDERS_LEFT_OUT = ("launcher",)

# Executables in the order in which they run: a folder's own tests, and those of the layers above it.
TESTS = {
    "core": (
        *("unit_core", "unit_core_host", "unit_random", "unit_project", "unit_curve"),
        *("unit_engine", "unit_frontend", PROGRAM_TESTS),
    ),
    "curve": ("unit_curve", "unit_project", "unit_engine", "unit_frontend", PROGRAM_TESTS),
    "random": ("unit_random", "unit_curve", "unit_engine", "unit_frontend", PROGRAM_TESTS),
    "project": ("unit_project", "unit_engine", "unit_frontend", PROGRAM_TESTS),
    # Only the tools read what these report beside their answers.
    "engine": ("unit_engine", "unit_frontend", "unit_tools", PROGRAM_TESTS),
    "frontend": ("unit_frontend", "unit_tools", PROGRAM_TESTS),
    "verifier": ("unit_verifier", "unit_tools", "projectctl_tests"),
    "tools": ("unit_tools", "projectctl_tests"),
}
# Tests of ctest that run behind them, on what no executable has failed on.
SCRIPTS = {
    "tools": ("ProjectctlTerminal", "ProjectctlManual", "ProjectctlInteroperability",
              "ProjectctlCompletionInBash", "ProjectctlOpens"),
}


def folder_of(file):
    return file.split("/")[0]


def program_of(folder):
    """The program that a folder is a part of."""
    return next(program for program, folders in GROUPS.items() if folder in folders)
