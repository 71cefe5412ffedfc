#!/usr/bin/env python3
"""rules.py [ROOT]: the rules of the house that need no compiler, in about a second.

Arrows between folders (read from src/CMakeLists.txt, their only place), sizes of classes, and what clang-format does
not know of the style. Prints each violation as FILE:LINE: what and why, and ends with 1 when there is one.
"""

import re
import subprocess
import sys
from collections import namedtuple
from pathlib import Path

HEADER_LINES = 160
CLASS_LINES = 400

Violation = namedtuple("Violation", "file line text")
Folder = namedtuple("Folder", "depends libraries apart")
Include = namedtuple("Include", "line target quoted")

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')
WINDOW_HEADER = re.compile(
    r"^(QtWidgets|QtWebEngine|QWidget|QApplication|QLabel|QMainWindow|QAbstract.*View|QMenu|QPushButton|QDialog"
    r"|QAccessible|QScreen|QWindow|QPainter|QGuiApplication)"
)
KEYWORDS = {"MOC", "WINDOWS", "BATCHES", "ALONE", "DEPENDS", "LIBRARIES", "PRECOMPILE"}


def declared_folders(cmake_text):
    """The folders with their direct arrows and libraries, as morvane_folder() and morvane_apart() declare them."""
    text = re.sub(r"#[^\n]*", "", cmake_text)
    declared = {}
    for function, arguments in re.findall(r"\bmorvane_(folder|apart)\(([^)]*)\)", text):
        words = arguments.split()
        lists, keyword = {}, None
        for word in words[1:]:
            if word in KEYWORDS:
                keyword = word
            else:
                lists.setdefault(keyword, []).append(word)
        declared[words[0]] = (lists.get("DEPENDS", []), lists.get("LIBRARIES", []), function == "apart")
    by_target = {name.replace("/", "_"): name for name in declared}
    return {
        name: Folder([by_target.get(target, target) for target in depends], libraries, apart)
        for name, (depends, libraries, apart) in declared.items()
    }


def reachable(folders, name):
    """All folders that this one may include, itself among them."""
    if folders[name].apart:
        return {name, *folders[name].depends}
    seen, open_ends = set(), [name]
    while open_ends:
        current = open_ends.pop()
        if current not in seen:
            seen.add(current)
            open_ends += folders[current].depends if current in folders else []
    return seen


def folder_of(path, folders):
    """The declared folder that a path below src/ lies in, or None."""
    parts = Path(path).parts[:-1]
    for length in range(len(parts), 0, -1):
        if "/".join(parts[:length]) in folders:
            return "/".join(parts[:length])
    return None


def sources(root, *tops):
    """The house's own sources; what git ignores (packages that tests install) is none of them."""
    listed = subprocess.run(
        ["git", "ls-files", "--cached", "--others", "--exclude-standard", "-z", "--", *tops],
        cwd=root, capture_output=True, text=True,
    )
    if listed.returncode == 0:
        paths = [root / name for name in listed.stdout.split("\0") if name]
    else:
        paths = [path for top in tops for path in (root / top).rglob("*")]
    for path in sorted(paths):
        if path.suffix in (".h", ".cpp") and path.exists():
            yield path


def includes_of(path):
    for number, line in enumerate(path.read_text().splitlines(), 1):
        match = INCLUDE.match(line)
        if match:
            yield Include(number, match.group(2), match.group(1) == '"')


def arrow_violations(root):
    src = root / "src"
    folders = declared_folders((src / "CMakeLists.txt").read_text())
    below = {name: reachable(folders, name) for name in folders}
    windows = {
        name for name in folders if any("Qt6::Widgets" in folders[other].libraries for other in below[name] if other in folders)
    }
    for name, folder in folders.items():
        for target in folder.depends:
            if target not in folders:
                yield Violation("src/CMakeLists.txt", 1, f"{name} depends on {target}, which is no folder")
            elif name in below[target]:
                yield Violation("src/CMakeLists.txt", 1, f"{name} and {target} depend on each other")
    for path in sources(root, "src"):
        inside = path.relative_to(src).as_posix()
        if inside == "main.cpp":  # the composition root knows everything
            continue
        here = folder_of(inside, folders)
        shown = path.relative_to(root).as_posix()
        if here is None:
            yield Violation(shown, 1, "lies in no folder that src/CMakeLists.txt declares")
            continue
        for include in includes_of(path):
            target = folder_of(include.target, folders) if include.quoted else None
            if target and target not in below[here]:
                yield Violation(shown, include.line, f"{here} may not include {include.target}: no arrow leads to {target}")
            if include.quoted and not target and (src / include.target).exists():
                yield Violation(shown, include.line, f"{include.target} lies in no declared folder")
            if WINDOW_HEADER.match(include.target) and here not in windows and not here.startswith("platform/linux"):
                yield Violation(shown, include.line, f"{here} has no windows and may not include {include.target}")


def owner_of(path):
    """The class that a source belongs to: that of its own header, or else of the header that it includes first."""
    if path.with_suffix(".h").exists():
        return path.stem
    first = next(includes_of(path), None)
    header = path.parent / Path(first.target).name if first and first.quoted else path
    if header.exists() and re.search(rf"\b(class|struct) {header.stem}\b", header.read_text()):
        return header.stem
    return path.stem


def size_violations(root):
    classes = {}
    for path in sources(root, "src"):
        lines = path.read_text().count("\n")
        if path.suffix == ".h":
            if lines > HEADER_LINES:
                yield Violation(path.relative_to(root).as_posix(), lines, f"a header has at most {HEADER_LINES} lines")
        else:
            classes.setdefault((path.parent, owner_of(path)), []).append((path, lines))
    for (_, name), files in classes.items():
        total = sum(lines for _, lines in files)
        if total > CLASS_LINES:
            listed = " + ".join(f"{path.name} {lines}" for path, lines in files)
            first = files[0][0].relative_to(root).as_posix()
            yield Violation(first, 1, f"{name} has {total} lines of source, at most {CLASS_LINES} over all its files ({listed})")


def without_texts(code):
    """The code with comments and literals blanked out, line for line."""
    blank = lambda match: re.sub(r"[^\n]", " ", match.group(0))
    pattern = r'//[^\n]*|/\*.*?\*/|R"(?P<d>[^()\s]*)\(.*?\)(?P=d)"|"(?:\\.|[^"\\\n])*"|(?<![0-9a-zA-Z])u?\'(?:\\.|[^\'\\\n])*\''
    return re.sub(pattern, blank, code, flags=re.DOTALL)


def style_violations(root):
    for path in sources(root, "src", "tests", "bench"):
        shown = path.relative_to(root).as_posix()
        text = path.read_text()
        code = without_texts(text)
        header = path.suffix == ".h"
        for number, (line, full) in enumerate(zip(code.splitlines(), text.splitlines()), 1):
            for match in re.finditer(r"\b(QStringLiteral|QLatin1String|QByteArrayLiteral|QLatin1Char)\(", line):
                if not header and full[match.end() : match.end() + 1] in ('"', "'"):
                    yield Violation(shown, number, match.group(1) + """: a source writes u"…"_s, "…"_L1 or u'x'""")
            if header and re.search(r"\busing\s+namespace\b", line):
                yield Violation(shown, number, "a header opens no namespace for those that include it")
        for match in re.finditer(r"\benum\s+(?:class\s+)?\w+[^{;]*\{(.*?)\}", code, re.DOTALL):
            for entry in match.group(1).split(","):
                word = re.match(r"\s*(\w+)", entry)
                if word and not re.match(r"[a-z][A-Za-z0-9]*$", word.group(1)):
                    number = code.count("\n", 0, match.start(1) + match.group(1).find(word.group(1))) + 1
                    yield Violation(shown, number, f"the enumerator {word.group(1)} begins small, lowerCamelCase")
        if header and "#pragma once" not in code:
            yield Violation(shown, 1, "a header begins with #pragma once")
        if path.suffix == ".cpp" and path.with_suffix(".h").exists():
            first = next(includes_of(path), None)
            if not first or Path(first.target).name != path.stem + ".h":
                yield Violation(shown, first.line if first else 1, "a source includes its own header first")


def violations(root):
    root = Path(root)
    for rule in (arrow_violations, size_violations, style_violations):
        yield from rule(root)


def main():
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent
    found = list(violations(root))
    for violation in found:
        print(f"{violation.file}:{violation.line}: {violation.text}")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
