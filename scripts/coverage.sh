#!/usr/bin/env bash
# Runs the tests of the six folders on an instrumented build, prints which of their lines and branches
# ran, and fails unless all lines did, 95 per cent of the branches did, and docs/testing.md tells of
# each branch that did not.
set -euo pipefail
cd "$(dirname "$0")/.."
exec </dev/null

scripts/install-packages.sh build test coverage
tests=(unit_core unit_core_host unit_curve unit_random unit_project unit_engine unit_frontend
    program_tests)
cmake --preset coverage
cmake --build --preset coverage --target sign_cgi "${tests[@]}"

cd build/coverage
rm -rf profiles
for name in "${tests[@]}"; do
    "tests/$name" --gtest_brief=1
done
llvm-profdata-14 merge -sparse profiles/*.profraw -o profiles/all.profdata
llvm-cov-14 export sign.cgi "${tests[@]/#/-object=tests/}" -instr-profile=profiles/all.profdata \
    >coverage.json
/usr/bin/python3 ../../scripts/coverage_report.py coverage.json
