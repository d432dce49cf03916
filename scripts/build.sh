#!/usr/bin/env bash
# Configures and builds one build tree.
# Usage: scripts/build.sh [normal|asan|demo]
#   normal  build/ with tests and benchmarks       asan  build-asan/ with the sanitizers, tests
#   demo    only what the demo runs (the server, ukey-uictl and the resources) in build/; a
#           build/ made here has no tests or benchmarks, so no test packages are needed
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
kind=${1:-normal}
targets=()
case "$kind" in
    normal) dir="$root/build"; flags=(-DNY_BUILD_TESTS=ON -DNY_BUILD_BENCH=ON) ;;
    asan) dir="$root/build-asan"; flags=(-DNY_SANITIZE=ON -DNY_BUILD_TESTS=ON -DNY_BUILD_BENCH=OFF) ;;
    demo)
        dir="$root/build"
        flags=(-DNY_BUILD_TESTS=OFF -DNY_BUILD_BENCH=OFF)
        # A tree configured before keeps its settings.
        [[ -f "$dir/CMakeCache.txt" ]] && flags=()
        targets=(--target ukey-uiserver ukey-uictl NyResources)
        ;;
    *) echo "usage: $0 [normal|asan|demo]" >&2; exit 2 ;;
esac
cmake -S "$root" -B "$dir" "${flags[@]}" >/dev/null
cmake --build "$dir" -j "$(nproc)" "${targets[@]}"
