#!/usr/bin/env bash
# Installs what is missing, builds, and starts Brezzario with its store at the default location.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/dependencies.sh build
[ -f build/build.ninja ] || cmake --preset default
cmake --build build --target brezzario
exec build/src/brezzario "$@"
