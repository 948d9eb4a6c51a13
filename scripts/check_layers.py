#!/usr/bin/env python3
"""Checks which folder includes what, and how headers and sources begin.

    scripts/check_layers.py [ROOT]

Prints one line for each breach and exits 1 if there is any. The rules:

- A folder includes its own headers and what LAYERS grants it, nothing else; a header that is not
  known here counts as not granted.
- Every folder with C++ in it is named here. C stands in examples and tests alone.
- A header begins with `#pragma once`; a source whose folder has a header of its name begins its
  includes with that one.
"""

import re
import sys
from dataclasses import dataclass, field
from pathlib import Path

STANDARD_LIBRARY = frozenset(
    """
    algorithm any array atomic barrier bit bitset charconv chrono codecvt compare complex concepts
    condition_variable coroutine deque exception execution filesystem format forward_list fstream
    functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits
    list locale map memory memory_resource mutex new numbers numeric optional ostream queue random
    ranges ratio regex scoped_allocator semaphore set shared_mutex source_location span sstream
    stack stdexcept stop_token streambuf string string_view syncstream system_error thread tuple
    type_traits typeindex typeinfo unordered_map unordered_set utility valarray variant vector
    version
    cassert cctype cerrno cfenv cfloat cinttypes climits clocale cmath csetjmp csignal cstdarg
    cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype
    """.split()
)

# The records that the entries of core/ and curve/ take and give.
ENTRIES = frozenset(
    {
        "core/entry.h",
        "curve/entry.h",
        "core/core_integer.h",
        "curve/field_element.h",
        "curve/curve_domain.h",
    }
)


@dataclass(frozen=True)
class Layer:
    """What a folder may include beside its own headers and the standard library."""

    folders: frozenset = frozenset()  # every header of these
    headers: frozenset = frozenset()  # these, in each of its files
    only_in: dict = field(default_factory=dict)  # file name: what that file alone may include


LAYERS = {
    "core": Layer(),
    "curve": Layer(
        folders=frozenset({"core"}),
        only_in={
            "fast/carryless_products.h": {"emmintrin.h", "wmmintrin.h"},
            "fast/processor.cpp": {"sys/platform/x86.h"},
        },
    ),
    "random": Layer(
        headers=frozenset({"core/host.h", "core/entry.h", "pthread.h"}),
        only_in={"random_device.cpp": {"sys/stat.h", "sys/sysmacros.h"}},
    ),
    "project": Layer(
        headers=ENTRIES,
        only_in={"open_to_read.cpp": {"fcntl.h"}, "project_file_format.cpp": {"unistd.h"}},
    ),
    "engine": Layer(
        folders=frozenset({"project"}),
        headers=ENTRIES | {"curve/sect163r2.h"},
        only_in={"mapped_file.cpp": {"sys/mman.h", "sys/stat.h", "unistd.h"}},
    ),
    "verifier": Layer(
        folders=frozenset({"core", "curve", "project", "engine"}),
        only_in={"sign_verify.h": {"stddef.h"}},
    ),
    "frontend": Layer(
        headers=frozenset(
            {"engine/signature_engine.h", "nlohmann/json.hpp", "nlohmann/json_fwd.hpp"}
        ),
        only_in={"main.cpp": {"core/entry.h"}},
    ),
    "launcher": Layer(
        headers=frozenset({"random/random_device.h"}),
        only_in={
            "limits.cpp": {"signal.h", "sys/resource.h", "unistd.h"},
            "main.cpp": {"unistd.h"},
            "request_program.cpp": {"sys/auxv.h"},
        },
    ),
    "tools": Layer(
        folders=frozenset(
            {"core", "curve", "random", "project", "engine", "verifier", "frontend"}
        ),
        headers=frozenset({"nlohmann/json.hpp", "nlohmann/json_fwd.hpp"}),
        only_in={
            "argument_errors.cpp": {"CLI/CLI.hpp"},
            "command_line.cpp": {"CLI/CLI.hpp"},
            "files/cut_file.cpp": {"setjmp.h", "unistd.h"},
            "files/input_file.cpp": {"fcntl.h", "stdlib.h", "sys/stat.h", "unistd.h"},
            "files/mapping_progress.cpp": {"fcntl.h", "unistd.h"},
            "files/whole_file.cpp": {"fcntl.h", "stdio.h", "sys/types.h", "unistd.h"},
            "files/write_all.cpp": {"unistd.h"},
            "help_format.cpp": {"CLI/CLI.hpp"},
            "project/project_protection.cpp": {"sys/stat.h", "unistd.h"},
            "projectctl.cpp": {"fcntl.h", "unistd.h"},
            "report.cpp": {"unistd.h"},
            "request/raw_request.cpp": {"fcntl.h", "stdlib.h", "sys/mman.h", "unistd.h"},
        },
    ),
}

# They look into everything and nothing may look into them.
FREE_FOLDERS = frozenset({"tests", "bench", "fuzz", "examples"})

SKIPPED_FOLDERS = frozenset({"build"})

SUFFIXES = frozenset({".h", ".cpp"})
OTHER_SUFFIXES = frozenset(
    {".c", ".cc", ".cxx", ".c++", ".hh", ".hpp", ".hxx", ".h++", ".inc", ".ipp", ".tpp", ".ixx"}
)

COMMENT = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', re.DOTALL)
DIRECTIVE = re.compile(r"^[ \t]*#[ \t]*(?:include|include_next|import)\b[ \t]*(.*?)[ \t]*$")
OPERAND = re.compile(r'^(?:"([^"]+)"|<([^>]+)>)$')


@dataclass(frozen=True)
class Include:
    line: int
    name: str
    quoted: bool


def without_comments(text):
    """The text with its comments blanked and its lines where they were."""

    def blank(match):
        found = match.group()
        return found if found.startswith('"') else "\n" * found.count("\n")

    return COMMENT.sub(blank, text)


def read_includes(text):
    """Every include of a file; the name is None where it is not written out."""
    for number, line in enumerate(without_comments(text).split("\n"), start=1):
        directive = DIRECTIVE.match(line)
        if directive is None:
            continue
        operand = OPERAND.match(directive.group(1))
        if operand is None or ".." in directive.group(1):
            yield Include(number, None, False)
        else:
            quoted = operand.group(1) is not None
            yield Include(number, operand.group(1) if quoted else operand.group(2), quoted)


def is_granted(path, include):
    folder = path.parts[0]
    layer = LAYERS[folder]
    granted = layer.headers | set(layer.only_in.get("/".join(path.parts[1:]), ()))
    if include.quoted:
        target = include.name.split("/")[0]
        return target == folder or target in layer.folders or include.name in granted
    return include.name in STANDARD_LIBRARY or include.name in granted


def include_breaches(root, path, includes):
    for include in includes:
        if include.name is None:
            yield include.line, "an include must write its header out"
        elif include.quoted and not (root / include.name).is_file():
            yield include.line, f'"{include.name}" is no header of this tree, from its root'
        elif not include.quoted and (root / include.name).is_file():
            yield include.line, f"<{include.name}> is a header of this tree: use quotation marks"
        elif path.parts[0] in LAYERS and not is_granted(path, include):
            yield include.line, f"{path.parts[0]}/ may not include {include.name} here"


def beginning_breaches(root, path, text, includes):
    if path.suffix == ".h":
        if text.split("\n", 1)[0] != "#pragma once":
            yield 1, "a header begins with #pragma once"
        return
    own = path.with_suffix(".h")
    if (root / own).is_file() and (not includes or includes[0].name != own.as_posix()):
        yield (includes[0].line if includes else 1), f"{own} must be included first"


def file_breaches(root, path):
    if len(path.parts) == 1:
        return [(1, "C++ outside of a folder")]
    if path.parts[0] not in LAYERS and path.parts[0] not in FREE_FOLDERS:
        return [(1, f"the folder {path.parts[0]}/ has no rule in check_layers.py")]
    if path.suffix == ".c" and path.parts[0] in FREE_FOLDERS:
        return []
    if path.suffix not in SUFFIXES:
        return [(1, "C++ is written in .h and .cpp files")]
    text = (root / path).read_text(encoding="utf-8")
    includes = list(read_includes(text))
    return [
        *beginning_breaches(root, path, text, includes),
        *include_breaches(root, path, includes),
    ]


def find_sources(root):
    for path in sorted(root.rglob("*")):
        relative = path.relative_to(root)
        if relative.parts[0] in SKIPPED_FOLDERS or relative.parts[0].startswith("."):
            continue
        if path.suffix in SUFFIXES | OTHER_SUFFIXES and path.is_file():
            yield relative


def check(root):
    """All breaches under `root`, as lines to print."""
    sources = list(find_sources(root))
    if not sources:
        return [f"{root}: no C++ here"]
    return [
        f"{path}:{line}: {message}"
        for path in sources
        for line, message in file_breaches(root, path)
    ]


def main(arguments):
    if len(arguments) > 1:
        print(__doc__, file=sys.stderr)
        return 2
    root = Path(arguments[0]) if arguments else Path(__file__).resolve().parent.parent
    breaches = check(root)
    for breach in breaches:
        print(breach)
    return 1 if breaches else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
