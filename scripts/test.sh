#!/usr/bin/env bash
# Builds the programs and the tests, warnings being errors, and runs every test:
#
#   scripts/test.sh [PRESET]      dev unless told otherwise, or asan, which clang builds
#
# After dev, the tests of the built programs run once more on the release programs, as installed.
set -euo pipefail
cd "$(dirname "$0")/.."
exec </dev/null

preset=${1:-dev}
case $preset in
    dev) purposes=(build test) ;;
    asan) purposes=(build test clang) ;;
    *)
        echo "usage: scripts/test.sh [dev|asan]" >&2
        exit 2
        ;;
esac

scripts/install-packages.sh "${purposes[@]}"
cmake --preset "$preset" -DCMAKE_COMPILE_WARNING_AS_ERROR=ON
cmake --build --preset "$preset"
ctest --preset "$preset" --parallel "$(nproc)"

if [[ $preset == dev ]]; then
    cmake --preset release -DCMAKE_COMPILE_WARNING_AS_ERROR=ON
    cmake --build --preset release
    python3 bench/instruction_counts.py build/release
    SIGN_PROGRAM_FOLDER=$PWD/build/release ctest --preset dev --parallel "$(nproc)" -R '^Pro(gram|jectctl)'
fi
