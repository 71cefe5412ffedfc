#!/usr/bin/env bash
# bench.sh [FILTER]: builds and runs the benchmark programs whose name contains FILTER; each prints JSON.
set -euo pipefail
cd "$(dirname "$0")/.."

programs=()
for source in bench/*.cpp; do
  name=$(basename "$source" .cpp)
  case $name in *"${1:-}"*) programs+=("$name") ;; esac
done
[ ${#programs[@]} -gt 0 ] || { echo "No benchmark has \"${1:-}\" in its name." >&2; exit 1; }

scripts/build.sh release "${programs[@]}"
for name in "${programs[@]}"; do
  echo "== $name"
  "build/release/bin/$name"
done
