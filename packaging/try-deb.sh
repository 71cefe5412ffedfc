#!/usr/bin/env bash
# try-deb.sh PACKAGE.deb...: installs the packages in a clean Debian 12, plays the rehearsal with what is installed, with a
# web page where morvane-browser is among them, removes them, and compares the tree with what it was. As root. Wants
# mmdebstrap and a release build of morvane-rehearsal.
set -euo pipefail
cd "$(dirname "$0")/.."

tree=$PWD/build/trees/deb
names=()
files=()
page=()
say() { printf '\n== %s\n' "$*"; }
inside() { chroot "$tree" env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"; }
install() { inside apt-get -q -o Dpkg::Use-Pty=0 install --no-install-recommends "$@"; }
files_of_tree() { (cd "$tree" && find . -path ./var/lib/apt -prune -o -path ./var/cache -prune -o -path ./var/log -prune -o \
  -path ./tmp -prune -o -path ./var/lib/dpkg -prune -o -print | sort); }

say "A clean tree"
packaging/clean-tree.sh "$tree" fonts-dejavu-core
for package in "$@"; do
  name=$(dpkg-deb --field "$package" Package)
  cp "$package" "$tree/tmp/$name.deb"
  names+=("$name")
  files+=("/tmp/$name.deb")
  [ "$name" != morvane-browser ] || page=(--browser)
done
say "What is needed besides"
inside apt-get -qq update
mapfile -t others < <(inside apt-get -s install --no-install-recommends "${files[@]}" |
  sed -n 's/^Inst \([^ ]*\) .*/\1/p' | grep -vxF -f <(printf '%s\n' "${names[@]}"))
install -qq "${others[@]}" >/dev/null
echo "$(inside dpkg-query -W | wc -l) packages now"
before=$(files_of_tree)
say "Installed"
install "${files[@]}"
inside sh -c 'command -v morvane'
say "Started"
packaging/rehearse-in.sh "$tree" /usr/bin/morvane build/trees/deb.png "${page[@]}"
say "Removed"
inside apt-get -q -o Dpkg::Use-Pty=0 purge -y "${names[@]}"
diff <(echo "$before") <(files_of_tree) && echo "Nothing is left."
