#!/usr/bin/env bash
# Runs every test of one build tree with ctest and prints what did not pass and the summary.
# Fails when a test fails, and also when ctest skipped one or did not run it: a test that
# cannot run is a failure here.
# Usage: scripts/run-ctest.sh BUILD_DIR
set -euo pipefail
dir=${1:?usage: $0 BUILD_DIR}
log=$(mktemp)
trap 'rm -f "$log"' EXIT
status=0
ctest --test-dir "$dir" --output-on-failure --no-tests=error -j "$(nproc)" --timeout 600 \
    >"$log" 2>&1 || status=1
grep -vE '^ +Start +[0-9]+:|Test +#[0-9]+: .* Passed ' "$log" || true
if grep -qE '\(Skipped\)|\*\*\*Not Run|did not run' "$log"; then
    echo "run-ctest: tests were skipped or not run in $dir" >&2
    status=1
fi
exit $status
