#!/usr/bin/env bash
# clean-tree.sh TREE [PACKAGE...]: makes TREE a Debian 12 with nothing but apt, what that needs, and these packages, from
# the mirror that this machine uses. What was fetched for a TREE is kept beside it as TREE.tar. As root. Wants mmdebstrap.
set -euo pipefail

tree=$1
shift
mkdir -p "$(dirname "$tree")"
rm -rf "$tree"
if [ ! -f "$tree.tar" ]; then
  mapfile -t sources < <(find /etc/apt/sources.list /etc/apt/sources.list.d -name '*.list' -o -name '*.sources' 2>/dev/null | sort)
  packages=$(IFS=,; echo "$*")
  mmdebstrap --quiet --mode=root --variant=apt --aptopt='Apt::Install-Recommends "false"' \
    ${packages:+"--include=$packages"} bookworm "$tree.tar" "${sources[@]}"
fi
mkdir "$tree"
tar --extract --directory "$tree" --file "$tree.tar"
echo "A clean Debian $(cat "$tree/etc/debian_version") with $(chroot "$tree" dpkg-query -W | wc -l) packages"
