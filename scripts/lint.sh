#!/usr/bin/env bash
# Checks the messages of commits and the formatting of all sources and runs shellcheck, cppcheck and
# clang-tidy; any finding is an error.
#
#   scripts/lint.sh [FOLDER...]      clang-tidy in these folders alone
set -euo pipefail
cd "$(dirname "$0")/.."
exec </dev/null

# What is under build/ and hidden folders is nobody's source.
sources() {
    find . -path ./build -prune -o -path './.*' -prune -o \( "$@" \) -type f -print0
}

is_in=(-true)
if [[ $# -gt 0 ]]; then
    is_in=(-false)
    for folder in "$@"; do
        is_in+=(-o -path "./${folder%/}/*")
    done
fi

scripts/install-packages.sh build test suite bench clang lint

echo "commits"
/usr/bin/python3 -B scripts/check_commits.py

echo "clang-format"
sources -name '*.h' -o -name '*.cpp' | xargs -0 clang-format-14 --dry-run -Werror

echo "shellcheck"
shellcheck --shell=bash completions/projectctl
grep -rlIE --exclude-dir=.git --exclude-dir=build '^#!(/bin/sh|/usr/bin/env bash)$' . |
    xargs shellcheck

# Its parser stops at the macros of typed tests, so the tests are left to clang-tidy.
echo "cppcheck"
cppcheck --quiet --std=c++20 --language=c++ --enable=warning,performance,portability \
    --inline-suppr --error-exitcode=1 -j "$(nproc)" -I . \
    core curve random project engine verifier frontend launcher tools bench fuzz tests/support

# It counts on standard error what it found in other people's headers, which is nobody's concern.
echo "clang-tidy"
cmake --preset dev -B build/lint -DCMAKE_CXX_COMPILER=clang++ -DSIGN_BENCH=ON \
    -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON -DCMAKE_UNITY_BUILD=OFF >/dev/null
sources -name '*.cpp' -a \( "${is_in[@]}" \) |
    xargs -0 -n 1 -P "$(nproc)" clang-tidy --quiet -p build/lint \
        2> >(grep -v ' warnings\? generated\.$' >&2)
