#!/usr/bin/env bash
# try-update.sh [PORT]: makes two bundles of different builds as they are handed out, which look for updates at that port
# of this computer (41725 unless told), and has the older one replace itself by the newer one, with everything that can
# go wrong meanwhile: the end-to-end tests of updates, on real bundles and with every hostile image. As root, since small
# volumes are mounted. Wants a release build of the tests.
set -euo pipefail
cd "$(dirname "$0")/.."

origin=http://127.0.0.1:${1:-41725}
trial=build/trial
for each in "old 1" "new 2"; do
  read -r name build <<<"$each"
  packaging/make-bundle.sh "$trial/$name" --origin "$origin" --build "$build" >"$trial-$name.log"
  tail -n 3 "$trial-$name.log" | sed "s|$PWD/||"
done
MORVANE_UPDATE_TRIAL=$(realpath "$trial") build/release/bin/e2e_tests \
  --gtest_filter='UpdateTest.*:KilledUpdateTest.*'
