#!/usr/bin/env bash
# Runs every test of one build tree with ctest. Fails when a test fails, and also when ctest
# skipped one or did not run it: a test that cannot run is a failure here.
# Usage: scripts/run-ctest.sh BUILD_DIR
set -euo pipefail
dir=${1:?usage: $0 BUILD_DIR}
log=$(mktemp)
trap 'rm -f "$log"' EXIT
status=0
ctest --test-dir "$dir" --output-on-failure --no-tests=error -j "$(nproc)" --timeout 600 \
    2>&1 | tee "$log" || status=1
if grep -qE '\(Skipped\)|\*\*\*Not Run|did not run' "$log"; then
    echo "run-ctest: tests were skipped or not run in $dir:" >&2
    grep -E '\(Skipped\)|Not Run' "$log" >&2 || true
    status=1
fi
exit $status
