#!/usr/bin/env bash
# sign-update.sh KEY MANIFEST: writes the signature of an update into its manifest, latest.json. KEY is an Ed25519 key
# in a PEM file, which belongs nowhere near the repository:
#
#   openssl genpkey -algorithm ed25519 -out KEY
#
# A build takes signed updates only when it is told the key's public half:
#
#   cmake … -DMORVANE_UPDATE_PUBLIC_KEY=$(openssl pkey -in KEY -pubout -outform DER | tail -c 32 | od -An -v -tx1 | tr -d ' \n')
set -euo pipefail
if [ $# -ne 2 ]; then
  echo "usage: sign-update.sh KEY MANIFEST" >&2
  exit 2
fi
key=$1
manifest=$2
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT

# What is signed is told by signedText() in src/update/UpdateSignature.cpp.
/usr/bin/python3 - "$manifest" > "$place/text" <<'PYTHON'
import json, sys
update = json.load(open(sys.argv[1], encoding="utf-8"))
text = f"Morvane update\n{update['sha256'].lower()}\n{update['build']}\n{update['version']}"
sys.stdout.buffer.write(text.encode())
PYTHON
openssl pkeyutl -sign -rawin -inkey "$key" -in "$place/text" -out "$place/signature"
/usr/bin/python3 - "$manifest" "$place/signature" "$place/manifest" <<'PYTHON'
import json, sys
update = json.load(open(sys.argv[1], encoding="utf-8"))
update["signature"] = open(sys.argv[2], "rb").read().hex()
with open(sys.argv[3], "w", encoding="utf-8") as signed:
    json.dump(update, signed, indent=2, ensure_ascii=False)
    signed.write("\n")
PYTHON
cp "$place/manifest" "$manifest"
