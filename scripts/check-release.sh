#!/usr/bin/env bash
# The long run of what scripts/test.sh does in short, and what it leaves out; some hours on two cores:
#
#   scripts/check-release.sh [CHECK...]
#
# The checks are suite, sanitizers, checkers, coverage, faults, valgrind, reference, randomness, mutation
# and fuzz, in this order; all of them unless told otherwise. Each writes its figures, with the commit
# and the seed, into the table of docs/testing.md. The first that fails ends the run. SIGN_TEST_SEED is
# the seed of all, which is otherwise a new one.
set -euo pipefail
cd "$(dirname "$0")/.."
exec </dev/null

seed=${SIGN_TEST_SEED:-$((RANDOM << 15 | RANDOM))}
export SIGN_TEST_SEED=$seed
log=build/check-release.log
mkdir -p build

# Writes the figures $2 of check $1, with the seed or without where $3 says "-".
record() {
    [[ -n $2 ]] || {
        echo "check-release: $1 printed no figures" >&2
        exit 1
    }
    /usr/bin/python3 scripts/record_figures.py "$1" "$2" "${3:-$seed}"
    echo "$1: $2"
}

# Runs a command with its output in the log as well, and gives back how it ended.
logged() {
    "$@" 2>&1 | tee "$log"
}

# Builds the tests and the programs as installed.
build_all() {
    for preset in dev release; do
        cmake --preset "$preset" >/dev/null
        cmake --build --preset "$preset" >/dev/null
    done
}

# The number of GoogleTest cases that passed, which is not there when none ran.
passed() {
    sed -n 's/^\[  PASSED  \] \([1-9][0-9]*\) tests\{0,1\}\.$/\1/p' "$log"
}

check_suite() {
    logged scripts/test.sh
    record suite "$(sed -n 's/^100% tests passed.* out of //p' "$log" | paste -sd+ | sed 's/+/ and /') tests, all pass"
}

check_sanitizers() {
    logged scripts/test.sh asan
    record sanitizers "$(sed -n 's/^100% tests passed.* out of //p' "$log") tests under AddressSanitizer, LeakSanitizer, UndefinedBehaviorSanitizer and assertions, all pass"
}

check_checkers() {
    logged scripts/lint.sh
    record checkers "clang-format, shellcheck, cppcheck and clang-tidy: no finding" -
}

check_coverage() {
    logged scripts/coverage.sh
    record coverage "$(grep -E '^[a-z]+: .* branches$' "$log" | paste -sd';' | sed 's/;/; /g')"
}

check_faults() {
    build_all
    SIGN_LONG_RUN=1 SIGN_PROGRAM_FOLDER=$PWD/build/release logged build/dev/tests/fault_tests
    record faults "$(sed -n 's/^\(.*: [0-9]*\) \(runs\|files\);.*/\1/p; s/^\([0-9]* unsound projects\):.*; \(slowest .* ms\) of .*/\1: \2/p' "$log" | paste -sd';' | sed 's/;/; /g')"
}

check_valgrind() {
    build_all
    SIGN_LONG_RUN=1 logged build/dev/tests/program_tests \
        --gtest_filter='ProgramUnderValgrind.*'
    record valgrind "$(sed -n '/ random requests under valgrind$/p' "$log") and those of $(passed) tests: no error, no leak"
}

check_reference() {
    build_all
    logged /usr/bin/python3 -B tests/reference/compare_requests.py --program build/release \
        --seed "$seed" --count 100000 --jobs "$(nproc)" --kinds
    record reference "$(tail -n 1 "$log")"
}

check_randomness() {
    build_all
    local nonces
    SIGN_LONG_RUN=1 logged build/dev/tests/unit_random --gtest_filter='NonceDistribution.*'
    nonces="$(sed -n '/ nonces of one process$/p' "$log"): $(passed) tests of uniformity pass"
    logged build/dev/tests/unit_random --gtest_filter='RandomGenerator.StreamOfAThousandSeeds*'
    [[ $(passed) == 1 ]]
    SIGN_LONG_RUN=1 logged /usr/bin/python3 -B tests/reference/nonces_test.py build/release
    record randomness "$nonces; the streams of 1000 seeds are the model's; $(sed -n '/, as many nonces$/p' "$log")"
}

check_mutation() {
    logged scripts/mutate.py --seed "$seed" --jobs "$(nproc)" --least 500
    record mutation "$(tail -n 2 "$log" | paste -sd';' | sed 's/;/; /')"
}

check_fuzz() {
    # As many runs, or as long as is worth it where they are slow.
    FUZZ_SEED=$seed FUZZ_RUNS=10000000 logged scripts/fuzz.sh 1800
    while IFS=: read -r target figures; do
        record "fuzz: $target" "${figures# }"
    done < <(sed -n 's/, seed [0-9]*$//p' "$log" | grep -E '^[a-z0-9_]+: [0-9]+ runs')
}

checks=(suite sanitizers checkers coverage faults valgrind reference randomness mutation fuzz)
if [[ $# -gt 0 ]]; then
    for check in "$@"; do
        [[ " ${checks[*]} " == *" $check "* ]] || {
            echo "usage: scripts/check-release.sh [CHECK...], of: ${checks[*]}" >&2
            exit 2
        }
    done
    checks=("$@")
fi
scripts/install-packages.sh build test clang coverage lint bench
for check in "${checks[@]}"; do
    "check_$check"
done
