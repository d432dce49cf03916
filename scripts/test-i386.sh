#!/usr/bin/env bash
# Builds the project and runs its test suite on 32-bit x86: in an i386 Debian 12 root made with
# debootstrap from the Debian mirror apt already uses, with the run, build and test packages.
# The root is kept in build-i386/root (NY_I386_ROOT) and reused while its package list holds.
# Usage: scripts/test-i386.sh [prepare|test|all]   (prepare: only make the root; default all)
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
step=${1:-all}
dir=${NY_I386_ROOT:-$root/build-i386/root}
suite=bookworm
tries=3

say() { echo "i386: $*"; }
die() {
    echo "i386: FAILED: $*" >&2
    exit 1
}

# Runs a command that reaches the mirror, up to $tries times.
retry() {
    local i
    for ((i = 1; i <= tries; i++)); do
        "$@" && return 0
        say "attempt $i of $tries failed: $*"
        sleep $((i * 5))
    done
    return 1
}

mirror() {
    local uri
    uri=$(apt-get indextargets --format '$(REPO_URI) $(CODENAME) $(TARGET_OF)' 2>/dev/null |
        awk -v s="$suite" '$2 == s && $3 == "deb" {print $1; exit}')
    [[ -n "$uri" ]] || die "apt has no $suite mirror configured (run apt-get update first)"
    echo "$uri"
}

mounted=()
unmount_all() {
    local i
    for ((i = ${#mounted[@]} - 1; i >= 0; i--)); do
        umount -l "${mounted[i]}" 2>/dev/null || true
    done
    mounted=()
}
trap unmount_all EXIT

mount_into_root() {
    local what=$1 where=$dir$2
    shift 2
    mkdir -p "$where"
    mount "$@" "$what" "$where"
    mounted+=("$where")
}

# /dev/shm is a private tmpfs: named objects of the suite in the root stay apart from the host's.
mount_all() {
    mount_into_root /proc /proc --bind
    mount_into_root /sys /sys --bind
    mount_into_root /dev /dev --bind
    mount_into_root tmpfs /dev/shm -t tmpfs -o mode=1777
    cp /etc/resolv.conf "$dir/etc/resolv.conf"
}

in_root() {
    chroot "$dir" /usr/bin/env -i HOME=/root LC_ALL=C.UTF-8 TERM=dumb \
        PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin "$@"
}

prepare() {
    [[ $(id -u) -eq 0 ]] || die "needs root (debootstrap, chroot, mount)"
    command -v debootstrap >/dev/null || die "debootstrap is not installed"
    local uri packages
    uri=$(mirror)
    packages=$("$root/scripts/install-deps.sh" --list run build test | tr '\n' ' ')
    if [[ -f "$dir/.ny-packages" && $(cat "$dir/.ny-packages") == "$packages" ]]; then
        say "root $dir is ready"
        return 0
    fi
    if [[ ! -f "$dir/.ny-base" ]]; then
        say "debootstrap $suite i386 from $uri into $dir"
        unmount_all
        rm -rf --one-file-system "$dir"
        mkdir -p "$dir"
        retry debootstrap --arch=i386 --variant=minbase "$suite" "$dir" "$uri" \
            >"$dir.debootstrap.log" 2>&1 || {
            tail -n 20 "$dir.debootstrap.log" >&2
            die "debootstrap from $uri"
        }
        echo "deb $uri $suite main" >"$dir/etc/apt/sources.list"
        # No service starts in the root.
        printf '#!/bin/sh\nexit 101\n' >"$dir/usr/sbin/policy-rc.d"
        chmod +x "$dir/usr/sbin/policy-rc.d"
        touch "$dir/.ny-base"
    fi
    mount_all
    say "installing $packages"
    retry in_root apt-get update -qq || die "apt-get update in the root"
    # shellcheck disable=SC2086
    retry in_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq \
        --no-install-recommends $packages >"$dir.apt.log" 2>&1 || {
        tail -n 20 "$dir.apt.log" >&2
        die "installing the packages in the root"
    }
    echo "$packages" >"$dir/.ny-packages"
    unmount_all
}

run_suite() {
    [[ -f "$dir/.ny-packages" ]] || die "no prepared root in $dir"
    # A copy of the sources (the root lives inside the work tree: no mount may loop back), built
    # afresh: the copy keeps the sources' times, so a build left from other sources could look
    # newer than them.
    rm -rf "$dir/src" "$dir/build"
    mkdir -p "$dir/src"
    tar -C "$root" --exclude='./build*' --exclude=./.git -c . | tar -C "$dir/src" -x
    mount_all
    say "building (benchmarks off) in $dir/build"
    in_root cmake -S /src -B /build -DNY_BUILD_BENCH=OFF >/dev/null || die "cmake configure"
    in_root cmake --build /build -j "$(nproc)" >"$dir.build.log" 2>&1 || {
        tail -n 40 "$dir.build.log" >&2
        die "build"
    }
    # Byte 4 of an ELF header is its class: 1 for 32-bit.
    [[ $(od -An -tx1 -j4 -N1 "$dir/build/bin/ukey-uiserver") == " 01" ]] ||
        die "the server is not a 32-bit program"
    say "running the suite"
    in_root bash /src/scripts/run-ctest.sh /build || die "test suite"
}

case "$step" in
    prepare) prepare ;;
    test) run_suite ;;
    all) prepare && run_suite ;;
    *) echo "usage: $0 [prepare|test|all]" >&2; exit 2 ;;
esac
