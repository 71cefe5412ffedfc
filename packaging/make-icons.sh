#!/usr/bin/env bash
# Draws the icon anew in all sizes that desktops ask for, beside its drawing. Wants rsvg-convert (librsvg2-bin).
set -euo pipefail
cd "$(dirname "$0")/desktop/icons"

for side in 16 22 24 32 48 64 128 256 512; do
  rsvg-convert --width "$side" --height "$side" morvane.svg --output "morvane-$side.png"
done
