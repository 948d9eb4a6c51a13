#!/usr/bin/env bash
# Builds the fuzz targets with clang under AddressSanitizer and UndefinedBehaviorSanitizer and runs
# them one after the other, each from its kept corpus in fuzz/corpus/:
#
#   scripts/fuzz.sh [SECONDS] [TARGET...]    60 seconds for each target unless told otherwise
#   FUZZ_RUNS=N scripts/fuzz.sh [SECONDS] [TARGET...]
#                                            N runs of each target, in as long as they take or SECONDS
#   scripts/fuzz.sh keep [TARGET...]         no run: makes the kept corpora anew, of the seeds and
#                                            of what runs found that reaches more code than they do
#
# FUZZ_SEED is the fuzzer's seed, which is otherwise a new one; it is printed either way. A broken
# property, a finding of a sanitizer, a leak and a run of over one second are failures. What fails
# stays as build/fuzz/findings/TARGET-*, which the target's program runs again when given as its
# argument.
set -euo pipefail
cd "$(dirname "$0")/.."
exec </dev/null

# Bytes of the longest input that is tried.
declare -A longest=(
    [core_text]=140 [field_division]=120 [form_body]=600 [integer_division]=140
    [integer_inverse]=70 [integer_modulo]=140 [json_body]=600 [key_attributes]=420
    [percent_decoding]=300 [project_file]=512 [request_base64]=200 [second_route]=69
    [signature_text]=200 [unsound_key]=140 [whole_request]=800
)
declare -A dictionary=(
    [form_body]=request [json_body]=request [percent_decoding]=request [whole_request]=request
)

usage() {
    echo "usage: [FUZZ_RUNS=N] scripts/fuzz.sh [SECONDS|keep] [TARGET...]" >&2
    exit 2
}

seconds=${FUZZ_RUNS:+0}
seconds=${seconds:-60}
keep=
case ${1:-} in
    keep)
        keep=yes
        shift
        ;;
    [0-9]*)
        [[ $1 =~ ^[1-9][0-9]*$ ]] || usage
        seconds=$1
        shift
        ;;
esac
[[ ${FUZZ_RUNS:-1} =~ ^[1-9][0-9]*$ ]] || usage
if [[ $# -gt 0 ]]; then
    targets=("$@")
else
    mapfile -t targets < <(printf '%s\n' "${!longest[@]}" | sort)
fi
for target in "${targets[@]}"; do
    [[ -n ${longest[$target]:-} ]] || usage
done

scripts/install-packages.sh build test clang
cmake --preset fuzz -DCMAKE_COMPILE_WARNING_AS_ERROR=ON >/dev/null
cmake --build --preset fuzz

# Makes the kept corpus of target $1 anew: the seeds, and what reaches code that they do not.
keep_corpus() {
    local kept=build/fuzz/kept/$1
    mkdir -p "build/fuzz/corpus/$1" "fuzz/corpus/$1"
    "build/fuzz/fuzz/$1" -merge=1 -use_counters=0 "$kept" "fuzz/corpus/$1" "build/fuzz/corpus/$1" \
        >"build/fuzz/logs/keep-$1.log" 2>&1
    rm -rf "fuzz/corpus/$1"
    cp -r "$kept" "fuzz/corpus/$1"
    echo "$1: $(find "fuzz/corpus/$1" -type f | wc -l) inputs kept"
}

# Runs target $1 and prints how often and how fast; false when it fails.
run_target() {
    local found=build/fuzz/corpus/$1 log=build/fuzz/logs/$1.log status=0 options=()
    mkdir -p "$found" "fuzz/corpus/$1"
    options=("-max_total_time=$seconds")
    [[ -z ${FUZZ_RUNS:-} ]] || options+=("-runs=$FUZZ_RUNS")
    [[ -z ${dictionary[$1]:-} ]] || options+=("-dict=fuzz/${dictionary[$1]}.dict")
    [[ -z ${FUZZ_SEED:-} ]] || options+=("-seed=$FUZZ_SEED")
    local start=$SECONDS
    "build/fuzz/fuzz/$1" -timeout=1 -detect_leaks=1 -print_final_stats=1 \
        -max_len="${longest[$1]}" -artifact_prefix="build/fuzz/findings/$1-" "${options[@]}" \
        "$found" "fuzz/corpus/$1" >"$log" 2>&1 || status=$?
    local runs slowest seed
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    slowest=$(sed -n 's/^stat::slowest_unit_time_sec: *//p' "$log")
    seed=$(sed -n 's/^INFO: Seed: *//p' "$log")
    echo "$1: ${runs:-?} runs in $((SECONDS - start)) s, slowest ${slowest:-?} s, seed ${seed:-?}"
    if [[ $status -ne 0 ]]; then
        grep -v '^#[0-9]' "$log" | tail -n 60 >&2
        echo "fuzz: $1 fails; the log is $log" >&2
        return 1
    fi
}

mkdir -p build/fuzz/logs build/fuzz/findings
if [[ -n $keep ]]; then
    rm -rf build/fuzz/kept
    /usr/bin/python3 fuzz/seeds.py build/fuzz/kept
fi
failed=0
for target in "${targets[@]}"; do
    if [[ -n $keep ]]; then
        keep_corpus "$target"
    else
        run_target "$target" || failed=$((failed + 1))
    fi
done
if [[ $failed -gt 0 ]]; then
    echo "fuzz: $failed of ${#targets[@]} targets fail" >&2
    exit 1
fi
