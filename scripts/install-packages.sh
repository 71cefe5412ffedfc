#!/usr/bin/env bash
# Installs what packaging/debian-packages.txt names and this machine lacks. Does nothing, and asks for no
# rights, when all is there.
set -euo pipefail
cd "$(dirname "$0")/.."

mapfile -t wanted < <(grep -v '^\s*#' packaging/debian-packages.txt | grep -v '^\s*$')
installed=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' 2>/dev/null | awk '$2 == "installed" {print $1}')
missing=()
for package in "${wanted[@]}"; do
  grep -qxF "$package" <<<"$installed" || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "These packages are missing, and sudo is not there to install them: ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
echo "Installing ${#missing[@]} packages: ${missing[*]}"
"${as_root[@]}" apt-get update -q
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}"
