#!/usr/bin/python3
"""What a desktop and an update are told of Morvane is true and in the form that they read."""

import hashlib
import json
import re
import struct
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

HOUSE = Path(__file__).resolve().parents[3]
DESKTOP = HOUSE / "packaging/desktop"
sys.path.insert(0, str(HOUSE / "packaging"))
sys.dont_write_bytecode = True

from releases import METAINFO, releases


def judged(*command):
    result = subprocess.run(command, capture_output=True, text=True)
    return result.returncode, result.stdout + result.stderr


def version():
    return re.search(r"project\(Morvane VERSION (\S+)", (HOUSE / "CMakeLists.txt").read_text()).group(1)


class DesktopFiles(unittest.TestCase):
    def changed(self, name, before, after):
        """A copy of the file with something else in it."""
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        text = (DESKTOP / name).read_text()
        self.assertIn(before, text)
        path = Path(folder.name) / name
        path.write_text(text.replace(before, after))
        return path

    def test_the_menu_entry_is_one(self):
        self.assertEqual(judged("desktop-file-validate", DESKTOP / "morvane.desktop"), (0, ""))

    def test_a_wrong_menu_entry_would_be_noticed(self):
        wrong = self.changed("morvane.desktop", "Categories=Utility;", "Categories=Nonsense;")
        self.assertNotEqual(judged("desktop-file-validate", wrong)[0], 0)

    def test_the_metainfo_is_valid(self):
        code, answer = judged("appstreamcli", "validate", "--no-net", METAINFO)
        self.assertEqual(code, 0, answer)
        self.assertNotIn("W:", answer)

    def test_wrong_metainfo_would_be_noticed(self):
        wrong = self.changed(METAINFO.name, "<summary>An AI agent for one person on one computer</summary>", "")
        self.assertNotEqual(judged("appstreamcli", "validate", "--no-net", wrong)[0], 0)

    def test_the_metainfo_is_that_of_the_menu_entry(self):
        metainfo = METAINFO.read_text()
        for name, place in (("launchable", "morvane.desktop"), ("icon", "morvane"), ("binary", "morvane")):
            self.assertRegex(metainfo, rf"<{name}[^>]*>{place}</{name}>")
        entry = (DESKTOP / "morvane.desktop").read_text()
        self.assertIn("\nExec=morvane\nIcon=morvane\n", entry)

    def test_the_icons_have_the_sizes_that_they_are_installed_for(self):
        sizes = re.search(r"foreach\(side ([\d ]+)\)", (HOUSE / "packaging/CMakeLists.txt").read_text()).group(1).split()
        self.assertGreaterEqual(len(sizes), 8)
        for side in sizes:
            head = (DESKTOP / f"icons/morvane-{side}.png").read_bytes()[:24]
            self.assertEqual(head[:8], b"\x89PNG\r\n\x1a\n")
            self.assertEqual(struct.unpack(">II", head[16:]), (int(side), int(side)))


class Manifest(unittest.TestCase):
    def test_the_newest_release_is_this_version(self):
        self.assertEqual(releases()[0].version, version())

    def test_the_manifest_tells_the_image_and_the_release(self):
        with tempfile.NamedTemporaryFile() as image:
            image.write(b"an image")
            image.flush()
            code, answer = judged(HOUSE / "packaging/make-manifest.py", image.name, "https://host/image.tar.zst", "7")
        self.assertEqual(code, 0, answer)
        manifest = json.loads(answer)
        self.assertEqual(manifest["version"], version())
        self.assertEqual(manifest["build"], 7)
        self.assertEqual(manifest["dmg"], "https://host/image.tar.zst")
        self.assertEqual(manifest["sha256"], hashlib.sha256(b"an image").hexdigest())
        self.assertRegex(manifest["date"], r"^\d{4}-\d\d-\d\d$")
        self.assertTrue(manifest["notes"] and all(isinstance(line, str) and line for line in manifest["notes"]))


class Changelog(unittest.TestCase):
    def test_the_newest_entry_is_this_version_and_build(self):
        code, answer = judged(HOUSE / "packaging/make-changelog.py", "7")
        self.assertEqual(code, 0, answer)
        self.assertTrue(answer.startswith(f"morvane ({version()}+build7) bookworm; urgency=medium\n\n  * "), answer)
        self.assertRegex(answer, r"\n -- The Morvane founders <founders@morvane\.example>  \w{3}, \d\d \w{3} \d{4} ")


class MakeBundle(unittest.TestCase):
    def refused(self, *options):
        with tempfile.TemporaryDirectory() as out:
            code, answer = judged(HOUSE / "packaging/make-bundle.sh", out, *options)
        self.assertNotEqual(code, 0)
        return answer

    def test_what_is_no_release_is_not_called_one(self):
        self.assertIn("looks for updates at http://127.0.0.1:9", self.refused("--release", "--origin", "http://127.0.0.1:9"))
        self.assertIn("has no key", self.refused("--release"))

    def test_a_build_number_is_a_number(self):
        self.assertIn("make-bundle.sh OUT", self.refused("--build", "seven"))


if __name__ == "__main__":
    unittest.main()
