#!/usr/bin/env bash
# The dashboard open on a simulation of 10,000 recipients at pace 0: the longest stall of the event loop.
set -euo pipefail
BUILD_DIR=${BUILD_DIR:-$(cd "$(dirname "$0")/../.." && pwd)/build}
cmake --build "$BUILD_DIR" --target bench_dashboard_stall >/dev/null
HOME=$(mktemp -d)
trap 'rm -rf "$HOME"' EXIT
export HOME XDG_CONFIG_HOME="$HOME/config" XDG_DATA_HOME="$HOME/data" XDG_CACHE_HOME="$HOME/cache"
export QT_QPA_PLATFORM=offscreen XDG_RUNTIME_DIR="$HOME/run"
mkdir -m 700 "$XDG_RUNTIME_DIR"
"$BUILD_DIR/bench/engine/bench_dashboard_stall" "${1:-10000}"
