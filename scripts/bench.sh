#!/usr/bin/env bash
# Builds the release programs and the benchmarks, takes every figure of docs/performance.md in one
# run and judges each:
#
#   scripts/bench.sh      exits 0 only if every bound is kept; takes some five minutes
#
# Let nothing else run meanwhile.
set -euo pipefail
cd "$(dirname "$0")/.."
exec </dev/null

scripts/install-packages.sh build test bench
cmake --preset release -B build/bench -DSIGN_BENCH=ON -DSIGN_TESTS=ON
cmake --build build/bench --target sign_cgi projectctl arithmetic_bench hash_bench empty_process \
    answering_stand_in
/usr/bin/python3 bench/report.py build/bench
