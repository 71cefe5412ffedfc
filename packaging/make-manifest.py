#!/usr/bin/python3
"""make-manifest.py IMAGE ADDRESS BUILD: prints the manifest latest.json of an update to the newest release.

ADDRESS is where the image will lie.
"""

import hashlib
import json
import sys

from releases import releases


def main():
    image, address, build = sys.argv[1:]
    release = releases()[0]
    with open(image, "rb") as file:
        digest = hashlib.file_digest(file, "sha256").hexdigest()
    manifest = {
        "version": release.version,
        "build": int(build),
        "date": release.date,
        "dmg": address,
        "sha256": digest,
        "notes": release.notes,
    }
    print(json.dumps(manifest, indent=2, ensure_ascii=False))


if __name__ == "__main__":
    main()
