#!/usr/bin/env bash
# Installs what is missing, builds the normal and the sanitizer trees and runs every test in both.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh"
status=0
for kind in normal asan; do
    "$root/scripts/build.sh" "$kind"
    dir="$root/build"; [[ $kind == asan ]] && dir="$root/build-asan"
    echo "== ctest ($kind) =="
    ctest --test-dir "$dir" --output-on-failure -j "$(nproc)" --timeout 600 || status=1
done
for script in "$root"/scripts/test-extra-*.sh; do
    [[ -e "$script" ]] || continue
    echo "== $(basename "$script") =="
    bash "$script" || status=1
done
exit $status
