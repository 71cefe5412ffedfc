#!/usr/bin/env bash
# try-bundle.sh BUNDLE: plays the rehearsal with a bundle in a clean Debian 12 that has the X libraries and a font only.
# As root. Wants mmdebstrap and a release build of morvane-rehearsal.
set -euo pipefail
cd "$(dirname "$0")/.."

bundle=$(realpath "$1")
tree=$PWD/build/trees/bundle
say() { printf '\n== %s\n' "$*"; }

say "A clean tree"
packaging/clean-tree.sh "$tree" libx11-xcb1 fonts-dejavu-core
chroot "$tree" dpkg-query -W -f '${Package} ${Version}\n' '*x11*' '*xcb*' '*font*' '*qt*' '*stdc*' 2>/dev/null
say "Unpacked in a folder with blanks"
mkdir -p "$tree/home/my programs"
cp -r "$bundle" "$tree/home/my programs/Morvane.app"
du --apparent-size -sh "$tree/home/my programs/Morvane.app" | cut -f1
say "Started"
packaging/rehearse-in.sh "$tree" "/home/my programs/Morvane.app/Contents/MacOS/Morvane" build/trees/bundle.png
