#!/usr/bin/env bash
# The long run of what scripts/test.sh does in short, and what it leaves out; seven hours on two cores:
#
#   scripts/check-release.sh [--short] [CHECK...]    runs these checks, all of them unless told
#                                                    otherwise, and writes the figures of all
#   scripts/check-release.sh [--short] --write       writes the figures of checks that have run
#
# A check is one of scripts/release/checks.py; a name before a colon is all of its kind. The first
# that fails ends the run. Each leaves its output and a record in build/check-release, if one commit
# was checked out without a change from its beginning to its end. The records of all checks of one
# commit, run at once or in parts, become docs/release-figures.md.
#
# A short run takes the smaller samples, in 75 minutes. SIGN_TEST_SEED is the seed of all checks,
# which is otherwise a new one.
set -euo pipefail
cd "$(dirname "$0")/.."
exec </dev/null

exec /usr/bin/python3 -B scripts/record_figures.py "$@"
