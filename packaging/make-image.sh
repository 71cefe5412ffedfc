#!/usr/bin/env bash
# make-image.sh BUNDLE IMAGE [LEVEL]: packs the bundle as the image by which it is handed out, a tar with Zstandard.
# The same bundle gives the same bytes. LEVEL is Zstandard's, 19 unless told.
set -euo pipefail

bundle=$1
image=$2
level=${3:-19}
date=$(git -C "$(dirname "$0")" log -1 --format=%ct 2>/dev/null || echo 0)
tar --create --directory "$(dirname "$bundle")" --sort=name --format=ustar --mtime="@$date" \
  --owner=0 --group=0 --numeric-owner "$(basename "$bundle")" |
  zstd --quiet --force -T0 "-$level" -o "$image"
