#!/usr/bin/env bash
# rehearse-in.sh TREE PROGRAM PICTURE [OPTION...]: plays the rehearsal with PROGRAM of the Debian in TREE, with the
# rehearsal's options. The program sees nothing but that tree and the desktop outside of it: display, session bus, the
# home folder of the test. It runs for a user without rights, as the web engine's sandbox wants it. As root.
set -euo pipefail
cd "$(dirname "$0")/.."

tree=$(realpath "$1")
program=$2
picture=$(realpath "$3")
shift 3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
# Stays the process that the rehearsal has started, in a mount namespace that ends with it. A chroot would not do: in one
# nobody makes namespaces. The tree has no umount.
cat >"$folder/program" <<END
#!/bin/bash
exec unshare --user --map-root-user --mount bash -c 'set -e
  mount --rbind "\$0" "\$0"
  for each in tmp proc dev; do mount --rbind "/\$each" "\$0/\$each"; done
  cd "\$0"
  pivot_root . mnt
  LD_LIBRARY_PATH=/mnt/usr/lib/x86_64-linux-gnu /mnt/usr/bin/umount --lazy /mnt
  exec unshare --user --map-user=1000 --map-group=1000 "\$1"' '$tree' '$program'
END
chmod 755 "$folder" "$folder/program"
touch "$picture"
chown 1000 "$picture"
setpriv --reuid=1000 --regid=1000 --clear-groups --inh-caps=-all \
  build/release/bin/morvane-rehearsal "$@" "$folder/program" "$picture"
