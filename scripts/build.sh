#!/usr/bin/env bash
# build.sh PRESET [TARGET...]: configures where needed and builds. Configuring again is left to CMake itself,
# which knows when its files changed.
set -euo pipefail
cd "$(dirname "$0")/.."

# The compiler takes its memory in large pages where the system leaves that to programs: an eighth of its work is
# to ask for small ones and to find them again.
export GLIBC_TUNABLES=glibc.malloc.hugetlb=1${GLIBC_TUNABLES:+:$GLIBC_TUNABLES}

preset=$1
shift
# Its tests are linked once more (tests/CMakeLists.txt).
[ "$preset" != sanitize ] || scripts/build.sh release

# One at a time in each folder, also beside what .ci/run builds ahead.
mkdir -p build
exec {lock}> "build/$preset.lock"
flock "$lock"
[ -f "build/$preset/build.ninja" ] || cmake --preset "$preset" "${MORVANE_CMAKE_OPTIONS[@]:---log-level=WARNING}"
targets=()
[ $# -gt 0 ] && targets=(--target "$@")
cmake --build --preset "$preset" "${targets[@]}"
