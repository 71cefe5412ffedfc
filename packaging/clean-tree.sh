#!/usr/bin/env bash
# clean-tree.sh TREE [PACKAGE...]: makes TREE a Debian 12 with nothing but apt, what that needs, and these packages, from
# the mirror that this machine uses. As root. Wants mmdebstrap.
set -euo pipefail

tree=$1
shift
mapfile -t sources < <(find /etc/apt/sources.list /etc/apt/sources.list.d -name '*.list' -o -name '*.sources' 2>/dev/null | sort)
packages=$(IFS=,; echo "$*")
rm -rf "$tree"
mmdebstrap --quiet --mode=root --variant=apt --aptopt='Apt::Install-Recommends "false"' \
  ${packages:+"--include=$packages"} bookworm "$tree" "${sources[@]}"
# Most packages that are installed say what they are for, and nobody reads that here.
mkdir -p "$tree/etc/apt/sources.list.d"
echo "A clean Debian $(cat "$tree/etc/debian_version") with $(chroot "$tree" dpkg-query -W | wc -l) packages: $tree"
