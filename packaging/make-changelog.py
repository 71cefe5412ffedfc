#!/usr/bin/python3
"""make-changelog.py BUILD: prints the Debian changelog, of which BUILD is the newest release's build number."""

import datetime
import email.utils
import re
import sys
import textwrap
from pathlib import Path

from releases import releases

CONTROL = Path(__file__).resolve().parent / "debian/control"


def entry(release, version, maintainer):
    noon = datetime.datetime.fromisoformat(release.date + "T12:00:00+00:00")
    notes = [textwrap.fill(note, 79, initial_indent="  * ", subsequent_indent="    ") for note in release.notes]
    return f"morvane ({version}) bookworm; urgency=medium\n\n" + "\n".join(notes) + \
        f"\n\n -- {maintainer}  {email.utils.format_datetime(noon)}\n"


def main():
    maintainer = re.search(r"^Maintainer: (.*)$", CONTROL.read_text(), re.MULTILINE).group(1)
    newest, *older = releases()
    print(entry(newest, f"{newest.version}+build{int(sys.argv[1])}", maintainer))
    for release in older:
        print(entry(release, release.version, maintainer))


if __name__ == "__main__":
    main()
