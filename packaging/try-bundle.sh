#!/usr/bin/env bash
# try-bundle.sh BUNDLE: plays the rehearsal, with a web page, with a bundle in a clean Debian 12 that has the X libraries
# and a font only. As root. Wants mmdebstrap and a release build of morvane-rehearsal.
set -euo pipefail
cd "$(dirname "$0")/.."

bundle=$(realpath "$1")
tree=$PWD/build/trees/bundle
say() { printf '\n== %s\n' "$*"; }

say "A clean tree"
packaging/clean-tree.sh "$tree" libx11-xcb1 xkb-data fonts-dejavu-core
say "Unpacked in a folder with blanks"
mkdir -p "$tree/home/my programs"
cp -r "$bundle" "$tree/home/my programs/Morvane.app"
du --apparent-size -sh "$tree/home/my programs/Morvane.app" | cut -f1
say "Started"
packaging/rehearse-in.sh "$tree" "/home/my programs/Morvane.app/Contents/MacOS/Morvane" build/trees/bundle.png --browser
say "Its reader, with the language data and the encodings that it brings along"
reader="/home/my programs/Morvane.app/Contents/libexec/morvane/morvane-attachment-reader"
export OMP_THREAD_LIMIT=1 # as Morvane starts it
read_by_it() { unshare --mount bash -c 'mount -t proc proc "$0/proc"; exec chroot "$0" "$1" "$2"' "$tree" "$reader" "$1" | strings -e S -n 6; }
read_by_it recognition <docs/images/first-run-greeting.png | grep -o 'Welcome to Morvane'
read_by_it document <packaging/japanese.pdf | grep -o '日本語'
