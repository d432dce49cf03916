#!/usr/bin/env bash
# Builds every libFuzzer target (fuzz/*.cpp) with clang, ASan and UBSan in build-fuzz and runs
# each for a bounded time (NY_FUZZ_SECONDS, default 20) from its seeds. Fails when a target
# finds a crash, a leak or a failed check; the reproducer is left in build-fuzz/fuzz/findings.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
dir="$root/build-fuzz"
seconds=${NY_FUZZ_SECONDS:-20}

shopt -s nullglob
sources=("$root"/fuzz/*.cpp)
if ((${#sources[@]} == 0)); then
    echo "fuzz: no targets"
    exit 0
fi

CC=clang CXX=clang++ cmake -S "$root" -B "$dir" -DNY_BUILD_FUZZ=ON -DNY_SANITIZE=ON \
    -DNY_BUILD_TESTS=OFF -DNY_BUILD_BENCH=OFF >/dev/null
findings="$dir/fuzz/findings"
mkdir -p "$findings"
status=0
for src in "${sources[@]}"; do
    name=$(basename "$src" .cpp)
    target="fuzz_$name"
    if ! cmake --build "$dir" --target "$target" -j2 >"$dir/fuzz/$target.build.log" 2>&1; then
        echo "fuzz: $target does not build, see $dir/fuzz/$target.build.log"
        tail -n 30 "$dir/fuzz/$target.build.log"
        status=1
        continue
    fi
    corpus=$(mktemp -d)
    seeds="$dir/fuzz/seeds/$target"
    [[ -d "$seeds" ]] && cp -r "$seeds/." "$corpus/"
    options=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048
             -artifact_prefix="$findings/$name-" -print_final_stats=1)
    [[ -f "$root/fuzz/$name.dict" ]] && options+=(-dict="$root/fuzz/$name.dict")
    echo "fuzz: $target for ${seconds}s"
    if ! "$dir/bin/$target" "${options[@]}" "$corpus" >"$dir/fuzz/$target.log" 2>&1; then
        echo "fuzz: $target FAILED, see $dir/fuzz/$target.log"
        tail -n 30 "$dir/fuzz/$target.log"
        status=1
    else
        grep -E "^stat::number_of_executed_units|^stat::new_units_added" "$dir/fuzz/$target.log" || true
    fi
    rm -rf "$corpus"
done
exit $status
