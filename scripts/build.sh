#!/usr/bin/env bash
# build.sh PRESET [TARGET...]: configures where needed and builds. Configuring again is left to CMake itself,
# which knows when its files changed.
set -euo pipefail
cd "$(dirname "$0")/.."

preset=$1
shift
[ -f "build/$preset/build.ninja" ] || cmake --preset "$preset" "${MORVANE_CMAKE_OPTIONS[@]:---log-level=WARNING}"
targets=()
[ $# -gt 0 ] && targets=(--target "$@")
cmake --build --preset "$preset" "${targets[@]}"
