#!/usr/bin/env bash
# make-bundle.sh OUT [--origin ORIGIN] [--build N] [--key KEY.pem] [--release] [--no-image]
# Builds Morvane and makes OUT/Morvane.app, which runs from every folder, OUT/Morvane-VERSION-buildN.tar.zst, the image
# of it that is handed out, and OUT/latest.json, the manifest of the update to it.
#   --origin ORIGIN  the build looks for updates there, and not where releases do
#   --build N        its build number, 1 unless told
#   --key KEY.pem    the Ed25519 key that signs the manifest; the build takes only updates that are signed with it
#   --release        refuses to make what is none: another origin, no key, no browser, changes that are not committed
#   --no-image       makes the bundle only: packing it takes minutes
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)

usage() { sed -n '2,10s/^# \{0,1\}//p' "$here/make-bundle.sh" >&2; exit 2; }
refuse() { echo "This is no release: $*." >&2; exit 1; }

[ $# -gt 0 ] || usage
mkdir -p "$1"
out=$(cd "$1" && pwd)
shift
origin=
build=1
key=
release=
image=yes
while [ $# -gt 0 ]; do
  case $1 in
    --origin) origin=${2:?} ;;
    --build) build=${2:?} ;;
    --key) key=$(realpath "${2:?}") ;;
    --release) release=yes; shift; continue ;;
    --no-image) image=; shift; continue ;;
    *) usage ;;
  esac
  shift 2
done
[[ $build =~ ^[0-9]+$ ]] || usage
if [ -n "$release" ]; then
  [ -z "$origin" ] || refuse "it looks for updates at $origin"
  [ -n "$key" ] || refuse "it has no key"
  [ -z "$(git -C "$here" status --porcelain)" ] || refuse "there are changes that are not committed"
fi

# What is not told is what CMake has for it, not what the last bundle had.
options=(-UMORVANE_UPDATE_ORIGIN -UMORVANE_UPDATE_PUBLIC_KEY)
[ -z "$origin" ] || options+=("-DMORVANE_UPDATE_ORIGIN=$origin")
# The last 32 bytes of the public key's usual form are the key itself.
[ -z "$key" ] || options+=("-DMORVANE_UPDATE_PUBLIC_KEY=$(openssl pkey -in "$key" -pubout -outform DER |
  tail -c 32 | od -An -v -tx1 | tr -d ' \n')")

cd "$here/.."
cmake --preset bundle --log-level=WARNING "${options[@]}" "-DMORVANE_BUILD_NUMBER=$build"
cmake --build --preset bundle --target morvane-program
constant() { sed -n "s/^$1:[A-Z]*=//p" build/bundle/CMakeCache.txt; }
name=Morvane-$(constant CMAKE_PROJECT_VERSION)-build$build.tar.zst

packaging/assemble-bundle.py build/bundle "$out/Morvane.app"
[ -z "$release" ] || [ -f "$out/Morvane.app/Contents/lib/morvane/libmorvane-browser.so" ] || refuse "it has no browser"
made=("$out/Morvane.app")
if [ -n "$image" ]; then
  packaging/make-image.sh "$out/Morvane.app" "$out/$name"
  packaging/make-manifest.py "$out/$name" "$(constant MORVANE_UPDATE_ORIGIN)/downloads/$name" "$build" >"$out/latest.json"
  [ -z "$key" ] || packaging/sign-update.sh "$key" "$out/latest.json"
  made+=("$out/$name")
fi
du -h --apparent-size --summarize "${made[@]}"
[ -n "$release" ] || echo "Made without --release: for trying out."
