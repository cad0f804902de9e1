#!/usr/bin/env bash
# Installs what is missing, builds, and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/dependencies.sh test
[ -f build/build.ninja ] || cmake --preset default
cmake --build build
cd build
ctest --output-on-failure -j2 --timeout 900
