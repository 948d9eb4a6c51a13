#!/usr/bin/env bash
# Builds the release programs and the benchmarks, takes every figure of docs/performance.md in one
# run and judges each that is bounded:
#
#   scripts/bench.sh [--write]    exits 0 only if every bound is kept; takes some five minutes
#
# With --write, the figures go into bench/figures.json and from there into the page and its chart.
# Let nothing else run meanwhile.
set -euo pipefail
cd "$(dirname "$0")/.."
exec </dev/null

case ${1:-} in
    '' | --write) ;;
    *)
        echo "usage: scripts/bench.sh [--write]" >&2
        exit 2
        ;;
esac
echo "Load of the machine when the bench begins: $(cat /proc/loadavg)"
scripts/install-packages.sh build test suite bench
cmake --preset release -B build/bench -DSIGN_BENCH=ON -DSIGN_TESTS=ON
cmake --build build/bench --target sign_cgi projectctl limited counted_request arithmetic_bench hash_bench \
    empty_process answering_stand_in
cmake --preset release -B build/bench-plain -DSIGN_BENCH=ON -DSIGN_PLAIN_ARITHMETIC=ON
cmake --build build/bench-plain --target arithmetic_bench
python3 bench/baseline.py build/bench-baseline
python3 bench/measure.py build/bench build/bench-plain build/bench-baseline build/bench/figures.json
python3 bench/report.py build/bench/figures.json "$@"
