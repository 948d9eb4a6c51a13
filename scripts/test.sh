#!/usr/bin/env bash
# Installs what is missing, builds the programs and the tests, warnings being errors, and runs tests:
#
#   scripts/test.sh                the quick ones: what takes a compiler, GoogleTest, openssl and Python
#   scripts/test.sh all            every test, behind servers, in a browser and under valgrind too; those of
#                                  the built programs once more on the release programs, as installed, and
#                                  on the CGI program with the defining arithmetic alone
#   scripts/test.sh asan [quick]   those that can run under sanitizers, built by clang; quick is the
#                                  corpora of the fuzz targets and random requests
set -euo pipefail
cd "$(dirname "$0")/.."
exec </dev/null
SECONDS=0

usage() {
    echo "usage: scripts/test.sh [all | asan [quick]]" >&2
    exit 2
}

what=${1:-quick}
preset=dev
targets=(all)
which_tests=()
options=()
case $what:${2:-} in
    quick:) purposes=(build test) options=(-DSIGN_QUICK_TESTS=ON) ;;
    all:) purposes=(build test suite) targets+=(sign_headers_alone) ;;
    asan:) purposes=(build test suite clang) preset=asan ;;
    asan:quick)
        purposes=(build test clang) preset=asan
        targets=(sign_cgi projectctl fuzz_targets)
        which_tests=(-R '^(Fuzz|ProgramAgainstReference)')
        ;;
    *) usage ;;
esac
[[ $# -le 2 ]] || usage

output=$(mktemp)
step=
trap 'rm -f "$output"; [[ -z $step ]] || echo "test: FAILED after $SECONDS s: $step" >&2' EXIT
trap 'exit 130' INT TERM

# Prints the output of a command that fails.
quietly() {
    "$@" >"$output" 2>&1 || {
        cat "$output"
        return 1
    }
}

configure_and_build() {
    local preset=$1
    shift
    step="configuring build/$preset"
    quietly cmake --preset "$preset" -DCMAKE_COMPILE_WARNING_AS_ERROR=ON "${options[@]}"
    if [[ $what == all && -s build/dev/left-out.txt ]]; then
        step="not all tests can run: $(head -n 1 build/dev/left-out.txt)"
        exit 1
    fi
    step="building build/$preset"
    echo "Building build/$preset"
    # More compilers than processors take each other's cache.
    cmake --build --preset "$preset" --parallel "$(nproc)" --target "$@" 2>&1 | awk -f scripts/tenths.awk
}

# Some tests wait more than they work.
run_tests() {
    step="running the tests of build/$preset $*"
    echo "Running the tests${1:+ $*}"
    ctest --preset "$preset" --parallel $(($(nproc) + 2)) "$@" 2>&1 | tee "$output" | awk -f scripts/tenths.awk
    tests=$((tests + $(sed -n 's/.* tests failed out of \([0-9]*\)$/\1/p' "$output")))
}

step="installing packages"
scripts/install-packages.sh "${purposes[@]}"
tests=0
configure_and_build "$preset" "${targets[@]}"
run_tests "${which_tests[@]}"

if [[ $what == all ]]; then
    # Of the release programs, only what chooses the route is compiled twice.
    options=(-DSIGN_DEFINING_ROUTE_ONLY=ON)
    configure_and_build release all
    SIGN_PROGRAM_FOLDER=$PWD/build/release run_tests -R '^Program'
    options=()
    configure_and_build release all
    step="counting instructions"
    python3 bench/instruction_counts.py build/release
    SIGN_PROGRAM_FOLDER=$PWD/build/release run_tests -R '^Pro(gram|jectctl)'
fi

step=
left_out=$(wc -l <"build/$preset/left-out.txt")
sed 's/^/Left out: /' "build/$preset/left-out.txt"
if [[ $left_out -gt 0 ]]; then
    more="; $left_out lines of tests left out, as listed: scripts/test.sh all"
fi
echo "test: all $tests tests passed in $((SECONDS / 60)) min $((SECONDS % 60)) s${more:-}"
