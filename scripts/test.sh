#!/usr/bin/env bash
# Builds the programs and the tests, warnings being errors, and runs every test:
#
#   scripts/test.sh [PRESET [quick]]   dev unless told otherwise, or asan, which clang builds
#
# Quick is the program with what sends it the most various requests: the corpora of the fuzz targets
# and random requests. After dev, the tests of the built programs run once more on the release
# programs, as installed, and those of the CGI program on one that computes with points by the defining
# arithmetic alone.
set -euo pipefail
cd "$(dirname "$0")/.."
exec </dev/null

preset=${1:-dev}
case $preset in
    dev) purposes=(build test) ;;
    asan) purposes=(build test clang) ;;
    *)
        echo "usage: scripts/test.sh [dev|asan [quick]]" >&2
        exit 2
        ;;
esac
targets=(all)
which_tests=()
if [[ ${2:-} == quick ]]; then
    targets=(sign_cgi projectctl fuzz_targets)
    which_tests=(-R '^(Fuzz|ProgramAgainstReference)')
fi

scripts/install-packages.sh "${purposes[@]}"
# Some tests wait more than they work.
at_a_time=$(($(nproc) + 2))
cmake --preset "$preset" -DCMAKE_COMPILE_WARNING_AS_ERROR=ON
cmake --build --preset "$preset" --target "${targets[@]}"
ctest --preset "$preset" --parallel "$at_a_time" "${which_tests[@]}"

if [[ $preset == dev ]]; then
    cmake --preset release -DCMAKE_COMPILE_WARNING_AS_ERROR=ON
    cmake --build --preset release
    python3 bench/instruction_counts.py build/release
    SIGN_PROGRAM_FOLDER=$PWD/build/release ctest --preset dev --parallel "$at_a_time" -R '^Pro(gram|jectctl)'

    cmake --preset release -B build/defining -DSIGN_DEFINING_ROUTE_ONLY=ON
    cmake --build build/defining --target sign_cgi projectctl
    SIGN_PROGRAM_FOLDER=$PWD/build/defining ctest --preset dev --parallel "$at_a_time" -R '^Program'
fi
