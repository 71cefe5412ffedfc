#!/usr/bin/env bash
# rehearse-in.sh TREE PROGRAM PICTURE: plays the rehearsal with PROGRAM of the Debian in TREE. The program sees nothing
# but that tree and the desktop outside of it: display, session bus, the home folder of the test. As root.
set -euo pipefail
cd "$(dirname "$0")/.."

tree=$(realpath "$1")
program=$2
picture=$(realpath "$3")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# Stays the process that the rehearsal has started, in a mount namespace that ends with it.
cat >"$folder/program" <<END
#!/bin/bash
exec unshare --mount bash -c 'mount --bind /tmp "\$0/tmp"; mount -t proc proc "\$0/proc"; mount --rbind /dev "\$0/dev"
  exec chroot "\$0" "\$1"' '$tree' '$program'
END
chmod +x "$folder/program"
build/release/bin/morvane-rehearsal "$folder/program" "$picture"
