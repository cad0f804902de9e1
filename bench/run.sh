#!/usr/bin/env bash
# Runs every benchmark area (bench/*/bench.sh) against the build in ./build and prints their tables.
# Figures are ratios against peers run in the same run wherever a peer exists: these machines are noisy.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --build build
for script in bench/*/bench.sh; do
    [ -x "$script" ] || continue
    echo "== $(basename "$(dirname "$script")") =="
    BUILD_DIR="$PWD/build" "$script"
    echo
done
