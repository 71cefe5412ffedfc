#!/usr/bin/env bash
# make-deb.sh [OUT] [--build N]: builds the Debian packages into OUT, build/deb unless told, and has lintian judge them.
# N is the build number, 1 unless told. Wants debhelper and lintian beside what ./run installs.
set -euo pipefail
cd "$(dirname "$0")/.."

out=build/deb
build=1
while [ $# -gt 0 ]; do
  case $1 in
    --build) build=${2:?}; shift ;;
    -*) sed -n '2,3s/^# //p' packaging/make-deb.sh >&2; exit 2 ;;
    *) out=$1 ;;
  esac
  shift
done
for package in debhelper lintian; do
  dpkg-query -W "$package" >/dev/null || exit 1
done

# The same folder each time, so that the compiler's cache knows the sources again.
source=$PWD/build/deb/source
rm -rf "$source"
mkdir -p "$source" "$out"
out=$(cd "$out" && pwd)
git ls-files -z --cached --others --exclude-standard | tar --create --null --files-from=- | tar --extract --directory "$source"
cp -r packaging/debian "$source/debian"
packaging/make-changelog.py "$build" >"$source/debian/changelog"

export CCACHE_BASEDIR=$source CCACHE_SLOPPINESS=pch_defines,time_macros
export CCACHE_DIR=${CCACHE_DIR:-$HOME/.cache/ccache} # debhelper gives the build another home
export MORVANE_BUILD_NUMBER=$build
(cd "$source" && dpkg-buildpackage --build=binary --no-sign --no-check-builddeps >"$out/build.log" 2>&1) ||
  { tail -n 60 "$out/build.log" >&2; exit 1; }
mv "$source"/../morvane*.deb "$source"/../morvane*.changes "$source"/../morvane*.buildinfo "$out" 2>/dev/null || true
rm -rf "$source"

lintian --allow-root --fail-on error --tag-display-limit 0 "$out"/morvane_*.changes
ls -l "$out"/*.deb
