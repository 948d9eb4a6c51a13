#!/usr/bin/env bash
# Runs the tests of the program and of the tools on an instrumented build, prints which of the lines and
# branches of each folder ran, and fails unless all lines did, 95 per cent of the branches did, and
# docs/testing.md tells of each branch that did not.
set -euo pipefail
cd "$(dirname "$0")/.."
exec </dev/null

scripts/install-packages.sh build test suite coverage
mapfile -t tests < <(/usr/bin/python3 -B scripts/coverage_report.py --tests)
cmake --preset coverage
cmake --build --preset coverage --target sign_cgi projectctl "${tests[@]}"

cd build/coverage
rm -rf profiles
for name in "${tests[@]}"; do
    "tests/$name" --gtest_brief=1
done
llvm-profdata merge -sparse profiles/*.profraw -o profiles/all.profdata
llvm-cov export sign.cgi -object=projectctl "${tests[@]/#/-object=tests/}" \
    -instr-profile=profiles/all.profdata >coverage.json
/usr/bin/python3 -B ../../scripts/coverage_report.py coverage.json
