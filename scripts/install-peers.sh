#!/usr/bin/env bash
# Installs the tool servers that tests/peers/package.json pins, and the Node that they run on, from npm. Does
# nothing when they are there. Fails, and says so, where npm cannot be reached.
set -euo pipefail
cd "$(dirname "$0")/../tests/peers"

cmp -s package-lock.json node_modules/.installed && exit 0
if ! command -v npm >/dev/null; then
  as_root=()
  [ "$(id -u)" -eq 0 ] || as_root=(sudo)
  "${as_root[@]}" apt-get install -q -y --no-install-recommends npm
fi
echo "Installing the tool servers of others that the tests talk to"
npm ci --loglevel=error --fetch-retry-mintimeout=1000 --fetch-retry-maxtimeout=4000
cp package-lock.json node_modules/.installed
