#!/usr/bin/env bash
# Installs the Debian packages of the given sections of scripts/packages.txt (run, build, test,
# bench, fuzz; all of them when none is given) that are not installed yet.
# scripts/install-deps.sh --list SECTION... prints the packages instead.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
list_only=0
if [[ ${1:-} == --list ]]; then
    list_only=1
    shift
fi
sections=("$@")
((${#sections[@]})) || sections=(run build test bench fuzz)

wanted=()
section=""
while read -r line; do
    [[ -z "$line" || "$line" == \#* ]] && continue
    if [[ "$line" =~ ^\[(.*)\]$ ]]; then
        section=${BASH_REMATCH[1]}
    elif [[ " ${sections[*]} " == *" $section "* ]]; then
        wanted+=("$line")
    fi
done <"$here/packages.txt"
if ((list_only)); then
    printf '%s\n' "${wanted[@]}"
    exit 0
fi

missing=()
for pkg in "${wanted[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$pkg")
    fi
done
if ((${#missing[@]} == 0)); then
    echo "install-deps: all packages present (${sections[*]})"
    exit 0
fi
echo "install-deps: installing ${missing[*]}"
sudo_cmd=()
[[ $(id -u) -ne 0 ]] && sudo_cmd=(sudo)
"${sudo_cmd[@]}" apt-get update -qq
DEBIAN_FRONTEND=noninteractive "${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
