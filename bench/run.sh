#!/usr/bin/env bash
# Runs every benchmark area (bench/*/bench.sh) against the build in ./build and prints their tables, then
# one table of every goal line ("goal: …") the areas printed, with its figure and whether it is met.
# Figures are ratios against peers run in the same run wherever a peer exists: these machines are noisy.
# Usage: bench/run.sh [area ...]   (default: every area)
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --build build
areas=("$@")
[ ${#areas[@]} -gt 0 ] || areas=($(ls -d bench/*/ | xargs -n1 basename))
goals=$(mktemp)
trap 'rm -f "$goals"' EXIT
for area in "${areas[@]}"; do
    script="bench/$area/bench.sh"
    [ -x "$script" ] || continue
    echo "== $area =="
    BUILD_DIR="$PWD/build" "$script" | tee >(grep '^goal:' | sed "s|^goal: |$area\t|" >>"$goals") ||
        echo "($area ended with status $?)"
    echo
done
sleep 0.2 # the last tee's reader may still be writing
echo "== goals =="
printf '%-10s %s\n' "area" "goal, figure, verdict"
awk -F'\t' '{ printf "%-10s %s\n", $1, $2 }' "$goals"
