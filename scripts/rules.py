#!/usr/bin/python3
"""rules.py [ROOT]: the rules of the house that need no compiler, in about a second.

Arrows between folders (read from src/CMakeLists.txt, their only place), sizes of classes, state that nobody hands
out, what is logged, where tests stand, and what clang-format does not know of the style. Prints each violation as
FILE:LINE: what and why, and ends with 1 when there is one.
"""

import functools
import re
import subprocess
import sys
from collections import namedtuple
from pathlib import Path

HEADER_LINES = 160
CLASS_LINES = 400

Violation = namedtuple("Violation", "file line text")
Folder = namedtuple("Folder", "depends libraries apart moc")
Include = namedtuple("Include", "line target quoted")

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]')
WINDOW_HEADER = re.compile(
    r"^(QtWidgets|Qt?WebEngine|QWidget|QApplication|QLabel|QMainWindow|QAbstract.*View|QMenu|QPushButton|QDialog"
    r"|QAccessible|QScreen|QWindow|QPainter|QGuiApplication)"
)
OTHER_SUFFIXES = {".c", ".cc", ".cxx", ".hh", ".hpp", ".hxx", ".inc", ".ipp"}
# Variables that outlive every object, each with its reason beside it in the source.
STATE = {("src/attachments/reader/TrappedCalls.cpp", "dataFiles"), ("src/ui/theme/MorvaneStyle.cpp", "key"),
         ("src/ui/theme/MorvaneStyle.cpp", "colors")}
MAINS = {"src/main.cpp", "src/reminder/main.cpp"} # which have the event loop
# The web engine wants the answer to a page's question before its own function returns.
LOOPS = {"src/browser/engine/PageDialogs.cpp"}
FOLDERS_OF_NO_SOURCES = {"architecture", "support"}
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
        moc = "MOC" in words or function == "apart" # these are told in CMake where they are linked
        declared[words[0]] = (lists.get("DEPENDS", []), lists.get("LIBRARIES", []), function == "apart", moc)
    by_target = {name.replace("/", "_"): name for name in declared}
    return {
        name: Folder([by_target.get(target, target) for target in depends], libraries, apart, moc)
        for name, (depends, libraries, apart, moc) in declared.items()
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


def files(root, *tops):
    """The house's own files; what git ignores (packages that tests install) is none of them. All there are where git
    knows none, or is missing: unpacked from an archive, as it may be in a folder that another's git ignores."""
    listed = ""
    if any((folder / ".git").exists() for folder in (root, *root.resolve().parents)): # git takes longer to say no
        try:
            listed = subprocess.run(
                ["git", "ls-files", "--cached", "--others", "--exclude-standard", "-z", "--", *tops],
                cwd=root, capture_output=True, text=True,
            ).stdout
        except FileNotFoundError:
            pass
    paths = [root / name for name in listed.split("\0") if name]
    if not paths:
        paths = [path for top in tops for path in (root / top).rglob("*")]
    for path in sorted(set(paths)): # one of a merge in progress is listed several times
        if path.is_file():
            yield path


def sources(root, *tops):
    return (path for path in files(root, *tops) if path.suffix in (".h", ".cpp"))


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
            if include.quoted and (not target or ".." in Path(include.target).parts):
                yield Violation(shown, include.line, f"{include.target} is no header of a declared folder, written from src/ on")
            if not include.quoted and (src / include.target).is_file():
                yield Violation(shown, include.line, f"{include.target} is ours and stands in quotes, so that its arrow is seen")
            if WINDOW_HEADER.match(include.target) and here not in windows and not here.startswith("platform/linux"):
                yield Violation(shown, include.line, f"{here} has no windows and may not include {include.target}")


def owner_of(path):
    """The class that a source belongs to: that of its own header, or else of the first header of its folder that it
    includes before all others or whose class it has functions of."""
    if path.with_suffix(".h").exists():
        return path.stem
    for position, include in enumerate(includes_of(path)):
        header = path.parent / Path(include.target).name
        if not include.quoted or not header.exists():
            continue
        if re.search(rf"\b(class|struct) {header.stem}\b", header.read_text()):
            if position == 0 or re.search(rf"^[^\s/#].*\b{header.stem}::~?\w+\(", path.read_text(), re.MULTILINE):
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


CLASS = re.compile(r"^(?:template <.*>\s)?class (?:\w+_EXPORT )?(?P<name>\w+)(?P<part><.*>|::\w+)?(?: final)?(?:\s*:[^;{]*)?\s*\{",
                   re.MULTILINE)


def class_violations(root):
    """One class a header; records (struct), functions, and the part of a template that is none (…Base) may stand beside it."""
    for path in sources(root, "src"):
        if path.suffix != ".h":
            continue
        code = without_texts(path.read_text())
        classes = [match for match in CLASS.finditer(code) if not match.group("part") and not match.group("name").endswith("Base")]
        for match in classes[1:]:
            first = classes[0].group("name")
            yield Violation(path.relative_to(root).as_posix(), line_of(code, match),
                            f"{match.group('name')} stands beside {first}: one class a file")


@functools.cache  # most rules ask it of most files
def without_texts(code):
    """The code with comments and literals blanked out, line for line."""
    blank = lambda match: re.sub(r"[^\n]", " ", match.group(0))
    pattern = r'//[^\n]*|/\*.*?\*/|R"(?P<d>[^()\s]*)\(.*?\)(?P=d)"|"(?:\\.|[^"\\\n])*"|(?<![0-9a-zA-Z])u?\'(?:\\.|[^\'\\\n])*\''
    return re.sub(pattern, blank, code, flags=re.DOTALL)


OLD_LITERAL = re.compile(r"\b(QStringLiteral|QLatin1String|QByteArrayLiteral|QLatin1Char)\(\s*(?=u?R?[\"'])")
OLD_LITERAL_OF_SOURCES = re.compile(r"\b(QString|QString::from(?:Latin1|Utf8)|QLatin1StringView)\(\s*(?=u?R?\"[^;]*?\"\))")


def style_violations(root):
    for path in files(root, "src", "tests", "bench"):
        if path.suffix in OTHER_SUFFIXES:
            yield Violation(path.relative_to(root).as_posix(), 1, "sources are called .cpp and headers .h; no other is compiled or checked")
    for path in sources(root, "src", "tests", "bench"):
        shown = path.relative_to(root).as_posix()
        text = path.read_text()
        code = without_texts(text)
        header = path.suffix == ".h"
        for pattern in (OLD_LITERAL, OLD_LITERAL_OF_SOURCES):
            if header or pattern is OLD_LITERAL_OF_SOURCES and not shown.startswith("src/"):
                continue
            for match in pattern.finditer(text):
                if code[match.start()] != " ":
                    yield Violation(shown, line_of(text, match), match.group(1) + """: a source writes u"…"_s, "…"_L1 or u'x'""")
        for number, line in enumerate(code.splitlines(), 1):
            if header and re.search(r"\busing\s+namespace\b", line):
                yield Violation(shown, number, "a header opens no namespace for those that include it")
        for match in re.finditer(r"\benum\b[^{;()]*\{(.*?)\}", code, re.DOTALL):
            entries = re.sub(r"\([^()]*\)", lambda call: " " * len(call.group(0)), match.group(1))
            for entry in entries.split(","):
                word = re.match(r"\s*(\w+)", entry)
                if word and not re.match(r"[a-z][A-Za-z0-9]*$", word.group(1)):
                    number = code.count("\n", 0, match.start(1) + match.group(1).find(word.group(1))) + 1
                    yield Violation(shown, number, f"the enumerator {word.group(1)} begins small, lowerCamelCase")
        if header and "#pragma once" not in code:
            yield Violation(shown, 1, "a header begins with #pragma once")
        if "clang-format off" in text:
            yield Violation(shown, 1, "clang-format is not switched off")
        if path.suffix == ".cpp" and path.with_suffix(".h").exists():
            first = next(includes_of(path), None)
            if not first or Path(first.target).name != path.stem + ".h":
                yield Violation(shown, first.line if first else 1, "a source includes its own header first")


def line_of(text, match):
    return text.count("\n", 0, match.start()) + 1


# The layout is clang-format's: what begins a line stands in a namespace, what is indented in a class or a function.
STORAGE = r"(?:(?:static|inline|extern|thread_local)\s+)"
NO_VARIABLE = (r"(?!(?:static|inline|extern|thread_local|using|namespace|return|class|struct|enum|union|template|typedef"
               r"|friend|const|constexpr|constinit|public|private|protected|goto|case|co_return|else)\b)")
TYPE = r"(?:(?:unsigned|signed|long|short)\s+)*[A-Za-z_][\w:]*(?:<[^;=(){}]*>)?(?:::\w+)*"
END = r"(?P<name>[A-Za-z_]\w*(?:::(?!operator\b)\w+)*)\s*(?:\[[^\]]*\]\s*)*(?:;|=(?!=)|\{)"
VARIABLE = re.compile(rf"^{STORAGE}*{NO_VARIABLE}{TYPE}[\s*&]+{END}")
POINTER = re.compile(rf"^{STORAGE}*const\s+{TYPE}\s*\*\s*{END}")
KEPT = re.compile(rf"^\s+(?:inline\s+)?(?:static|thread_local)\s+{STORAGE}*{NO_VARIABLE}{TYPE}[\s*&]+{END}")


def state_violations(root):
    for path in sources(root, "src"):
        shown = path.relative_to(root).as_posix()
        for number, line in enumerate(without_texts(path.read_text()).splitlines(), 1):
            match = VARIABLE.match(line) or POINTER.match(line) or KEPT.match(line)
            if match and (shown, match.group("name")) not in STATE:
                yield Violation(shown, number, f"{match.group('name')} outlives every object: no mutable globals and no singletons")
            elif "Q_GLOBAL_STATIC" in line:
                yield Violation(shown, number, "Q_GLOBAL_STATIC: no mutable globals and no singletons")


MEMBER = re.compile(r"^\s+(?:mutable\s+)?" + NO_VARIABLE.replace("|const|", "|") + r"(?:const\s+)?" + TYPE.replace("=(){}", "={}") + rf"[\s*&]+{END}")
CLASS_HEAD = re.compile(r"\s*(?:template\s*<.*>\s*)?class\b[^()]*$")


def member_violations(root):
    """A class's own data, which stands between private: and the end of the class, outside all other brackets."""
    for path in sources(root, "src"):
        code = without_texts(path.read_text())
        scopes, head, round_brackets = [], "", 0
        for number, line in enumerate(code.splitlines(), 1):
            match = MEMBER.match(line) if scopes and scopes[-1] == "private" and round_brackets == 0 else None
            if match and match.group("name") != "operator" and not match.group("name").startswith("m_"):
                yield Violation(path.relative_to(root).as_posix(), number, f"{match.group('name')}: a private member is called m_…")
            access = re.match(r"\s*(public|protected|private|Q_SIGNALS)\b[^:;]*:(?!:)", line)
            if access and scopes and scopes[-1] != "other":
                scopes[-1] = access.group(1)
            for sign in line if not access and not line.startswith("#") else "":
                if sign == "{":
                    scopes.append("private" if CLASS_HEAD.match(head) else "other")
                elif sign == "}" and scopes:
                    scopes.pop()
                round_brackets += (sign == "(") - (sign == ")")
                head = "" if sign in "{};" else head + sign
            head += "\n"


SPOKEN = re.compile(r"std::c(?:err|out|log)\b|\bq(?:Debug|Info|Warning|Critical|Fatal)\(|\bv?f?printf\(|\bf?puts\(|\bperror\(")
LOOP = re.compile(r"\bQEventLoop\b|\bprocessEvents\(|(?:\.|->)exec\(")
WRITTEN = re.compile(r"\bQSaveFile\b|\bofstream\b|\b(?:QIODevice|QIODeviceBase|QFile)::(?:WriteOnly|Append|Truncate|NewOnly)\b")
LOGGED = re.compile(r"\bqC(?:Debug|Info|Warning|Critical)\((.*?);", re.DOTALL)
SPEAKING = re.compile(r"\bqC(?:Debug|Info|Warning|Critical)\((\w+)")
# Answers that tell nothing, and results that nobody looks at.
SWALLOWED = re.compile(r"\bcatch\s*\([^)]*\)\s*\{\s*(?:co_)?return\b(?:\s*(?:false|nullptr|std::nullopt|\{\s*\}|\w+\(\)))?\s*;\s*\}")
DROPPED = re.compile(r"\bstatic_cast<void>\(|\bstd::ignore\s*=|\(void\)\s*[\w:]")
SECRET = re.compile(r"\b\w*?(?:what|errorString|path|url|key|text|content|body|filename|message|title|environment|command)\b"
                    r"(?!\.error\(\))", re.IGNORECASE)


def behaviour_violations(root):
    for path in sources(root, "src"):
        shown = path.relative_to(root).as_posix()
        text = path.read_text()
        code = without_texts(text)
        for match in SPOKEN.finditer(code) if not path.name.lower().endswith("main.cpp") else ():
            yield Violation(shown, line_of(code, match), "standard error hears of the folder's category in Log.h only, when asked")
        for match in LOOP.finditer(code) if shown not in MAINS | LOOPS else ():
            yield Violation(shown, line_of(code, match), "no nested event loops")
        for match in WRITTEN.finditer(code):
            yield Violation(shown, line_of(code, match), "files are written with base/AtomicFile.h only")
        for match in LOGGED.finditer(code):
            secret = SECRET.search(match.group(1))
            if secret:
                yield Violation(shown, line_of(code, match), f"{secret.group(0)} may belong to the user: a log tells of the program only")
        for match in re.finditer(r"\bcatch\s*\([^)]*\)\s*\{\s*\}", code):
            yield Violation(shown, line_of(code, match), "an error that is passed over is told to the folder's category in Log.h")
        lines = text.splitlines()
        for pattern in (SWALLOWED, DROPPED):
            for match in pattern.finditer(code):
                first, last = line_of(code, match) - 1, code.count("\n", 0, match.end())
                tells = '"' in text[match.start() : match.end()] # the literal that it answers
                if not tells and not any("//" in line for line in lines[max(first - 2, 0) : last + 1]):
                    yield Violation(shown, first + 1, "what is passed over is told to the folder's category in Log.h, or it is said here why not")


CATEGORY = re.compile(r"inline const QLoggingCategory &(\w+)\(\)\s*\{\s*static const FolderLog log\(\"([^\"]*)\"\)")


def log_categories(root):
    """Of each folder's Log.h: the category's function, its name, and where it stands."""
    for path in sources(root, "src"):
        if path.name == "Log.h":
            text = path.read_text()
            for match in CATEGORY.finditer(text):
                yield match.group(1), match.group(2), path, line_of(text, match)


def log_violations(root):
    """A folder speaks in a category of its own name, or in that of a folder around it."""
    folder_of_category = {}
    for function, category, path, line in log_categories(root):
        folder_of_category[function] = path.parent
        name = ".".join(("morvane", *path.parent.relative_to(root / "src").parts))
        if category != name:
            yield Violation(path.relative_to(root).as_posix(), line, f"the category of this folder is {name}")
    for path in sources(root, "src"):
        code = without_texts(path.read_text())
        for match in SPEAKING.finditer(code) if path != root / "src" / "main.cpp" else ():
            folder = folder_of_category.get(match.group(1))
            if folder and folder not in path.parents:
                yield Violation(path.relative_to(root).as_posix(), line_of(code, match),
                                f"{match.group(1)} is the log of {folder.relative_to(root / 'src')}")


def moc_violations(root):
    folders = declared_folders((root / "src" / "CMakeLists.txt").read_text())
    used, filled = set(), set()
    for path in sources(root, "src"):
        here = folder_of(path.relative_to(root / "src").as_posix(), folders)
        filled.add(here)
        match = re.search(r"\bQ_(?:OBJECT|GADGET|NAMESPACE)\b", without_texts(path.read_text()))
        if match:
            used.add(here)
            if here and not folders[here].moc:
                yield Violation(path.relative_to(root).as_posix(), line_of(path.read_text(), match), f"{here} says no MOC in src/CMakeLists.txt")
    for name, folder in folders.items():
        if folder.moc and not folder.apart and name in filled - used:
            yield Violation("src/CMakeLists.txt", 1, f"{name} says MOC, and there is nothing to moc")


SLEEP = re.compile(r"(?<![.>])(?<!void )(?<!void FakeSequenceClock::)\b(?:sleep|usleep|nanosleep|msleep|sleep_for|sleep_until|qWait|qSleep)\s*\(")
SCRIPT_SLEEP = re.compile(r"\btime\.sleep\s*\(")  # of a program that a test holds as a text
# Looks again at what a child has printed, where no event loop runs yet.
SLEEPS = {"tests/support/PrivateDesktop.cpp"}
# Has no log of its own to be watched; the program's is looked through by MorvaneTest.
UNWATCHED = {"tests/e2e/E2EMain.cpp"}
OUTSIDE = re.compile(r"^(?:support/(?:Accessib|ClipboardOwner|TestProgram|ScreenReader|FakeNotificationDaemon|MorvaneSession|PrivateDesktop"
                     r"|RawHttp|ScriptedModel|TlsServer|XConnection)|Q(?:Process|Tcp|Udp|Local(?:Server|Socket)|Ssl|DBus))")


def test_violations(root):
    folders = declared_folders((root / "src" / "CMakeLists.txt").read_text())
    known = {part for name in folders for part in name.split("/")} | FOLDERS_OF_NO_SOURCES
    for path in sources(root, "tests/unit", "tests/integration", "tests/e2e", "tests/fuzz"):
        shown = path.relative_to(root).as_posix()
        code = without_texts(path.read_text())
        layer, *inside = path.relative_to(root / "tests").parts[:-1]
        if layer in ("unit", "integration"):
            if len(inside) != 1:
                yield Violation(shown, 1, f"not compiled: a test lies in tests/{layer}/FOLDER, no higher and no deeper")
            elif inside[0] not in known:
                yield Violation(shown, 1, f"{inside[0]} is the name of no folder of src/")
        for match in re.finditer(r"\bGTEST_SKIP\b|\bDISABLED_", code):
            yield Violation(shown, line_of(code, match), "no test is passed over")
        for include in includes_of(path) if layer == "unit" else ():
            if OUTSIDE.match(include.target):
                yield Violation(shown, include.line, f"{include.target}: a unit test touches memory and temporary files only")


def main_violations(root):
    for path in sources(root, "tests"):
        shown = path.relative_to(root).as_posix()
        code = without_texts(path.read_text())
        match = re.search(r"\bRUN_ALL_TESTS\(", code)
        if match and "watchTheLog()" not in code and shown not in UNWATCHED:
            yield Violation(shown, line_of(code, match), "the log is watched in every test program: watchTheLog()")


def sleep_violations(root):
    for path in sources(root, "tests"):
        shown = path.relative_to(root).as_posix()
        text = path.read_text()
        for pattern, code in ((SLEEP, without_texts(text)), (SCRIPT_SLEEP, text)):
            for match in pattern.finditer(code) if shown not in SLEEPS else ():
                yield Violation(shown, line_of(code, match), "a test and what it starts wait for a condition and never sleep")


def is_compiled(path, root):
    """Whether the CMake list that is nearest above a source names it, itself or by a pattern; true where none is."""
    for folder in path.relative_to(root).parents:
        cmake = root / folder / "CMakeLists.txt"
        if cmake.is_file():
            name = path.relative_to(cmake.parent)
            words = re.sub(r"#[^\n]*", "", cmake.read_text()).replace(")", " ").split()
            return any(word.count("/") == len(name.parts) - 1 and name.match(word) for word in words if word.endswith(".cpp"))
    return True


def list_violations(root):
    for path in sources(root, "tests", "bench"):
        shown = path.relative_to(root)
        if path.suffix == ".cpp" and shown.parts[:2] not in (("tests", "unit"), ("tests", "integration")):
            if not is_compiled(path, root):
                yield Violation(shown.as_posix(), 1, "not compiled: the CMakeLists.txt above it does not name it")


def violations(root):
    root = Path(root)
    for rule in (arrow_violations, size_violations, class_violations, style_violations, state_violations, member_violations,
                 behaviour_violations, log_violations, moc_violations, test_violations, main_violations, sleep_violations, list_violations):
        yield from rule(root)


def main():
    root = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).resolve().parent.parent
    found = list(violations(root))
    for violation in found:
        print(f"{violation.file}:{violation.line}: {violation.text}")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
