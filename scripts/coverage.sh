#!/usr/bin/env bash
# Runs the tests on an instrumented build and prints the line and branch coverage of the six folders.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-packages.sh coverage
find build/coverage -name '*.gcda' -delete 2>/dev/null || true
scripts/test.sh coverage

# Branches that only an exception takes are the compiler's, not the code's.
gcovr --root . --exclude-throw-branches --print-summary \
    --filter '^(core|curve|random|project|engine|frontend)/' build/coverage
