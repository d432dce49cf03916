#!/usr/bin/env bash
# Installs what is missing and builds the server and its tools.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh" normal
echo "built: $(ls "$root/build/bin")"
