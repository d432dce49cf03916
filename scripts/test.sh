#!/usr/bin/env bash
# Installs what is missing, builds the normal and the sanitizer trees and runs every test in
# both (a test skipped or not run counts as a failure), then the extra test scripts
# (scripts/test-extra-*.sh: the fuzz targets).
set -euo pipefail
# The dialogs' texts are UTF-8 whatever the machine's locale (a fresh system has none set).
export LC_ALL=C.UTF-8
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh" run build test bench fuzz
status=0
for kind in normal asan; do
    "$root/scripts/build.sh" "$kind"
    dir="$root/build"; [[ $kind == asan ]] && dir="$root/build-asan"
    echo "== ctest ($kind) =="
    "$root/scripts/run-ctest.sh" "$dir" || status=1
done
for script in "$root"/scripts/test-extra-*.sh; do
    [[ -e "$script" ]] || continue
    echo "== $(basename "$script") =="
    bash "$script" || status=1
done
exit $status
