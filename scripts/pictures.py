#!/usr/bin/python3
"""pictures.py [FOLDER]: pictures of the windows in every state, for a look at them by eye.

Without FOLDER it writes those of docs/images/windows, which docs/windows.md shows; with one it writes every state in
every size and both themes there, some two hundred pictures. Wants the programs of a release build, Xvfb, and
ImageMagick, which makes the pictures small (256 colours).
"""

import os
import subprocess
import sys
import tempfile
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
GALLERY = ROOT / "build/release/bin/window-gallery"
BROWSER_GALLERY = ROOT / "build/release/bin/browser-gallery"
BROWSER_PICTURE = ROOT / "build/release/bin/browser-picture"
PROGRAM = ROOT / "build/release/bin/morvane"
SHOWN = ROOT / "docs/images/windows"

STATES = {
    "welcome": ["--window", "welcome", "--conversations"],
    "welcome-local-model": ["--window", "welcome", "--provider", "ollama"],
    "onboarding": ["--window", "onboarding", "--provider", "ollama"],
    "conversation": ["--window", "conversation", "--conversations"],
    "streaming": ["--window", "streaming", "--conversations"],
    "subagent": ["--window", "subagent"],
    "activity-folded": ["--window", "folded"],
    "zoomed": ["--window", "zoomed", "--conversations"],
    "find": ["--window", "find", "--conversations"],
    "attachments": ["--window", "attachments", "--conversations"],
    "sent-pictures": ["--window", "pictures"],
    "picture": ["--window", "picture"],
    "approval": ["--window", "permission", "--conversations"],
    "approval-destructive": ["--window", "destructive", "--conversations"],
    "question": ["--window", "question", "--conversations"],
    "update": ["--window", "update", "--conversations"],
    "update-downloading": ["--window", "update-downloading", "--conversations"],
    "update-failed": ["--window", "update-failed", "--conversations"],
    "update-alert": ["--window", "update-alert", "--conversations"],
    "update-none": ["--window", "update-none", "--conversations"],
    "update-required": ["--window", "update-required", "--conversations"],
    "update-required-alert": ["--window", "update-required-alert", "--conversations"],
    "shortcuts": ["--window", "shortcuts"],
    "about": ["--window", "about"],
    "settings-general": ["--window", "settings"],
    "settings-general-end": ["--window", "settings", "--allowed", "--scroll", "100"],
    "settings-local-model": ["--window", "settings", "--provider", "ollama", "--scroll", "40"],
    "settings-permissions": ["--window", "permissions"],
    "settings-tool-servers": ["--window", "tool-servers", "--servers", "5"],
    "settings-tool-servers-none": ["--window", "tool-servers"],
    "settings-add-server": ["--window", "add-server"],
    "browser": ["--window", "browser"],
    "browser-many-tabs": ["--window", "find", "--tabs", "12"],
    "browser-panel": ["--window", "panel"],
    "browser-history": ["--window", "history"],
    "browser-download": ["--window", "download"],
}

# The real program with a page, on a display of its own.
REAL_STATES = {
    "browser-page": [],
    "browser-agent": ["--panel"],
}

# Name: logical width and height, points of the font, pixels for each logical one.
SIZES = {
    "800x600": (800, 600, 10, 1),
    "760x720": (760, 720, 10, 1),
    "large-type": (760, 720, 20, 1),
    "narrow": (360, 640, 10, 1),
    "2560x1440": (1280, 720, 10, 2),
    "1150x780": (1150, 780, 10, 1),
}

# What the page shows: each state once in usual type, and again where large type or a dense screen is the harder case.
PAGE = [
    ("welcome", "760x720", "light"), ("welcome", "large-type", "dark"),
    ("welcome-local-model", "800x600", "dark"), ("welcome-local-model", "large-type", "light"),
    ("onboarding", "760x720", "light"), ("onboarding", "large-type", "dark"),
    ("conversation", "760x720", "light"), ("conversation", "760x720", "dark"),
    ("conversation", "800x600", "light"), ("conversation", "large-type", "dark"),
    ("conversation", "2560x1440", "light"),
    ("streaming", "800x600", "light"), ("streaming", "large-type", "dark"),
    ("subagent", "800x600", "light"), ("subagent", "large-type", "dark"),
    ("activity-folded", "760x720", "light"), ("zoomed", "760x720", "dark"),
    ("find", "800x600", "light"), ("find", "large-type", "dark"),
    ("attachments", "760x720", "light"), ("attachments", "large-type", "dark"),
    ("sent-pictures", "800x600", "light"), ("sent-pictures", "large-type", "dark"), ("picture", "760x720", "light"),
    ("approval", "760x720", "light"), ("approval", "760x720", "dark"), ("approval", "large-type", "light"),
    ("approval-destructive", "800x600", "light"), ("approval-destructive", "large-type", "dark"),
    ("approval-destructive", "2560x1440", "dark"),
    ("question", "760x720", "light"), ("question", "large-type", "dark"),
    ("update", "760x720", "light"), ("update", "large-type", "dark"),
    ("update-downloading", "760x720", "light"), ("update-failed", "760x720", "dark"),
    ("update-failed", "large-type", "light"),
    ("update-alert", "760x720", "light"), ("update-alert", "large-type", "dark"),
    ("update-required", "760x720", "light"), ("update-required", "large-type", "dark"),
    ("shortcuts", "760x720", "light"), ("shortcuts", "large-type", "dark"),
    ("about", "760x720", "light"), ("about", "large-type", "dark"),
    ("settings-general", "760x720", "light"), ("settings-general", "large-type", "dark"),
    ("settings-general", "2560x1440", "dark"), ("settings-general-end", "800x600", "light"),
    ("settings-local-model", "760x720", "light"), ("settings-permissions", "760x720", "light"),
    ("settings-permissions", "large-type", "dark"),
    ("settings-tool-servers", "760x720", "light"), ("settings-tool-servers", "large-type", "dark"),
    ("settings-tool-servers", "narrow", "dark"),
    ("settings-tool-servers-none", "large-type", "light"), ("settings-add-server", "800x600", "light"),
    ("settings-add-server", "large-type", "dark"), ("settings-add-server", "narrow", "light"),
    ("browser-page", "1150x780", "light"), ("browser-page", "1150x780", "dark"), ("browser-page", "large-type", "light"),
    ("browser-agent", "1150x780", "light"), ("browser-agent", "1150x780", "dark"),
    ("browser", "1150x780", "light"), ("browser", "large-type", "dark"),
    ("browser-many-tabs", "1150x780", "dark"), ("browser-many-tabs", "large-type", "light"),
    ("browser-panel", "1150x780", "light"), ("browser-panel", "large-type", "dark"),
    ("browser-history", "1150x780", "light"), ("browser-history", "large-type", "dark"),
    ("browser-download", "narrow", "dark"), ("browser-download", "large-type", "light"),
]


def draw(folder, state, size, theme):
    """Draws one picture; gives its file."""
    width, height, font, scale = SIZES[size]
    picture = folder / f"{state}-{size}-{theme}.png"
    environment = dict(os.environ, QT_QPA_PLATFORM="offscreen", QT_SCALE_FACTOR=str(scale))
    look = ["--width", str(width), "--height", str(height), "--font", str(font)]
    if theme == "dark":
        look.append("--dark")
    with tempfile.TemporaryDirectory() as place:
        whole = Path(place) / "picture.png"
        if state in REAL_STATES:
            command = [BROWSER_PICTURE, *REAL_STATES[state], *look, PROGRAM, whole]
        else:
            gallery = BROWSER_GALLERY if state.startswith("browser") else GALLERY
            command = [gallery, *STATES[state], *look, "--picture", whole]
        subprocess.run(command, env=environment, check=True, stderr=subprocess.DEVNULL,
                       timeout=120)
        subprocess.run(["convert", whole, "-strip", "+dither", "-colors", "256", "-define",
                        "png:compression-level=9", f"PNG8:{picture}"], check=True)
    return picture


def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else SHOWN
    folder.mkdir(parents=True, exist_ok=True)
    if folder == SHOWN:
        wanted = PAGE
    else:
        wanted = [(state, size, theme) for state in [*STATES, *REAL_STATES] for size in SIZES for theme in ("light", "dark")]
    for state, size, theme in wanted:
        print(draw(folder, state, size, theme).name)


if __name__ == "__main__":
    main()
