"""The releases as the metainfo tells them, the only place where they are written down."""

import xml.etree.ElementTree as ElementTree
from collections import namedtuple
from pathlib import Path

METAINFO = Path(__file__).resolve().parent / "desktop/example.morvane.Morvane.metainfo.xml"

Release = namedtuple("Release", "version date notes")


def releases():
    """All releases, the newest first; a note is one line."""
    return [
        Release(each.get("version"), each.get("date"), [" ".join(item.text.split()) for item in each.iter("li")])
        for each in ElementTree.parse(METAINFO).findall("releases/release")
    ]
