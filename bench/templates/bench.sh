#!/usr/bin/env bash
# The templates screen with a 200 KB template holding pictures: opening to ready, keystroke to save, and
# the longest stall of the event loop while typing.
set -euo pipefail
BUILD_DIR=${BUILD_DIR:-$(cd "$(dirname "$0")/../.." && pwd)/build}
cmake --build "$BUILD_DIR" --target bench_templates >/dev/null
HOME=$(mktemp -d)
trap 'rm -rf "$HOME"' EXIT
export HOME XDG_CONFIG_HOME="$HOME/config" XDG_DATA_HOME="$HOME/data" XDG_CACHE_HOME="$HOME/cache"
export QT_QPA_PLATFORM=offscreen QTWEBENGINE_DISABLE_SANDBOX=1 XDG_RUNTIME_DIR="$HOME/run"
mkdir -m 700 "$XDG_RUNTIME_DIR"
"$BUILD_DIR/bench/templates/bench_templates" "${OPENINGS:-5}"
