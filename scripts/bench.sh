#!/usr/bin/env bash
# bench.sh [FILTER]: builds and runs the benchmark programs whose name contains FILTER; each prints JSON.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --preset release -DMORVANE_BENCH=ON --log-level=WARNING >/dev/null
cmake --build --preset release
found=
for program in build/release/bin/*Bench; do
  name=$(basename "$program")
  case $name in *"${1:-}"*) found=yes ;; *) continue ;; esac
  echo "== $name"
  "$program"
done
[ -n "$found" ] || { echo "No benchmark has \"${1:-}\" in its name." >&2; exit 1; }
