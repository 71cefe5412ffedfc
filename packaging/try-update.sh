#!/usr/bin/env bash
# try-update.sh [PORT]: makes two bundles of different builds as they are handed out, which look for updates at that port
# of this computer (41725 unless told), and has the older one replace itself by the newer one, with everything that can
# go wrong meanwhile: the end-to-end tests of updates, on real bundles and with every hostile image. As root, since small
# volumes are mounted. Wants a release build of the tests.
set -euo pipefail
cd "$(dirname "$0")/.."

origin=http://127.0.0.1:${1:-41725}
trial=build/trial
make() {
  packaging/make-bundle.sh "$trial/$1" --origin "$origin" "${@:2}" >"$trial-$1.log"
  grep -P '^[\d.]+[KMG]\t' "$trial-$1.log" | sed "s|$PWD/||"
}
make old --build 1 --no-image
make new --build 2
MORVANE_UPDATE_TRIAL=$(realpath "$trial") build/release/bin/e2e_tests \
  --gtest_filter='*UpdateTest.*'
