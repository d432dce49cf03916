#!/usr/bin/env bash
# Configures and builds one build tree. Usage: scripts/build.sh [normal|asan]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
kind=${1:-normal}
case "$kind" in
    normal) dir="$root/build"; flags=() ;;
    asan) dir="$root/build-asan"; flags=(-DNY_SANITIZE=ON -DNY_BUILD_BENCH=OFF) ;;
    *) echo "usage: $0 [normal|asan]" >&2; exit 2 ;;
esac
cmake -S "$root" -B "$dir" "${flags[@]}" >/dev/null
cmake --build "$dir" -j "$(nproc)"
