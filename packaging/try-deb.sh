#!/usr/bin/env bash
# try-deb.sh PACKAGE.deb: installs the package in a clean Debian 12, plays the rehearsal with what is installed, removes
# it, and compares the tree with what it was. As root. Wants mmdebstrap and a release build of morvane-rehearsal.
set -euo pipefail
cd "$(dirname "$0")/.."

package=$(realpath "$1")
tree=$PWD/build/trees/deb
say() { printf '\n== %s\n' "$*"; }
inside() { chroot "$tree" env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 "$@"; }
files() { (cd "$tree" && find . -path ./var/lib/apt -prune -o -path ./var/cache -prune -o -path ./var/log -prune -o \
  -path ./tmp -prune -o -path ./var/lib/dpkg -prune -o -print | sort); }

say "A clean tree"
packaging/clean-tree.sh "$tree" fonts-dejavu-core
say "What the package needs besides itself"
cp "$package" "$tree/tmp/morvane.deb"
inside apt-get -qq update
inside apt-get -qq -o Dpkg::Use-Pty=0 install --no-install-recommends $(inside apt-get -s install --no-install-recommends /tmp/morvane.deb |
  sed -n 's/^Inst \([^ ]*\) .*/\1/p' | grep -vx morvane) >/dev/null
echo "$(inside dpkg-query -W | wc -l) packages now"
before=$(files)
say "Installed"
inside apt-get -q -o Dpkg::Use-Pty=0 install --no-install-recommends /tmp/morvane.deb
inside sh -c 'command -v morvane'
say "Started"
packaging/rehearse-in.sh "$tree" /usr/bin/morvane build/trees/deb.png
say "Removed"
inside apt-get -q -o Dpkg::Use-Pty=0 purge -y morvane
diff <(echo "$before") <(files) && echo "Nothing is left."
