#!/usr/bin/python3
"""assemble-bundle.py BUILD_FOLDER BUNDLE [--program FILE]: makes the bundle, such as Morvane.app, of what is built.

The bundle holds the installed tree and what the programs in it load: their libraries, the toolkit's plugins, the web
engine's process, and the data of libraries that have some. It takes these from this machine, which has to be a Debian
12, and runs on each one that has the libraries of HOST, from whatever folder it lies in. It holds folders and regular
files only. What is at BUNDLE is replaced. --program puts another build of the program in.
"""

import argparse
import os
import re
import shutil
import subprocess
import tempfile
from pathlib import Path

# What belongs to the system that the bundle runs on: the C library with the compiler's, since the system's own
# libraries want them at least as new as they are, and those that speak to its X server.
HOST = re.compile(
    r"(ld-linux.*|lib(c|m|dl|pthread|rt|resolv|gcc_s)|libstdc\+\+|libX11|libX11-xcb|libxcb|libXau|libXdmcp|libXcursor)\.so\.\d+"
)
# Nothing is drawn with OpenGL, so that no plugin for it is there.
PLUGINS = [
    "platforms/libqxcb.so", "platforms/libqwayland-generic.so", "platforms/libqoffscreen.so",
    "platforminputcontexts/libcomposeplatforminputcontextplugin.so",
    "platforminputcontexts/libibusplatforminputcontextplugin.so",
    "wayland-shell-integration/libxdg-shell.so", "wayland-decoration-client/libbradient.so",
    "imageformats/libqgif.so", "imageformats/libqico.so", "imageformats/libqjpeg.so", "imageformats/libqsvg.so",
    "imageformats/libqtiff.so", "imageformats/libqwebp.so", "iconengines/libqsvgicon.so",
]
# What the libraries read, by its place in the bundle.
DATA = {
    "share/morvane/tessdata/eng.traineddata": Path("/usr/share/tesseract-ocr/5/tessdata/eng.traineddata"),
    "share/morvane/poppler": Path("/usr/share/poppler"),
}
LIBRARIES = "lib/morvane"
HELPERS = "libexec/morvane"
QT = "share/morvane/qt"
ENGINE_PROCESS = f"{HELPERS}/QtWebEngineProcess"
# What the library for certificates loads by name: without it no site can prove what it is.
CERTIFICATE_MODULES = ["libsoftokn3.so", "libfreebl3.so", "libfreeblpriv3.so", "libnssckbi.so"]
LICENCES = Path("/usr/share/common-licenses")


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def copy(source, target):
    """A file, or all files of a folder, with no link among them and nobody's permissions."""
    if source.is_dir():
        for each in sorted(source.iterdir()):
            copy(each, target / each.name)
        return
    target.parent.mkdir(parents=True, exist_ok=True)
    shutil.copyfile(source, target)
    target.chmod(0o755 if os.access(source, os.X_OK) and target.suffix != ".so" and ".so." not in target.name else 0o644)


def toolkit(place):
    """A folder of the toolkit's."""
    return Path(output_of("qmake6", "-query", f"QT_INSTALL_{place}").strip())


def install(build, contents, program):
    """What is installed elsewhere, too, less what tells a desktop where it lies."""
    with tempfile.TemporaryDirectory() as folder:
        for component in ("program", "browser"):
            subprocess.run(
                ["cmake", "--install", build, "--prefix", folder, "--component", component, "--strip"],
                check=True, stdout=subprocess.DEVNULL,
            )
        installed = Path(folder)
        copy(program or installed / "bin/morvane", contents / "MacOS/Morvane")
        for part in ("libexec", "lib", "share/morvane", "share/icons", "share/doc/morvane"):
            copy(installed / part, contents / part)


def engine():
    """What the web engine starts, reads and loads by name, by its place in the bundle."""
    libraries = toolkit("LIBS")
    return {
        ENGINE_PROCESS: toolkit("LIBEXECS") / "QtWebEngineProcess",
        f"{QT}/resources": toolkit("DATA") / "resources",
        f"{QT}/translations/qtwebengine_locales": toolkit("TRANSLATIONS") / "qtwebengine_locales",
    } | {f"{LIBRARIES}/{name}": libraries / name for name in CERTIFICATE_MODULES}


def lead_to_libraries(program):
    """Has a program that others have built find its libraries as those of ours do, whatever the environment says."""
    up = "/".join([".."] * len(Path(HELPERS).parts))
    subprocess.run(["patchelf", "--force-rpath", "--set-rpath", f"$ORIGIN/{up}/{LIBRARIES}", program], check=True)


def needs_of(files):
    """The names of the libraries that these files say they need."""
    return set(re.findall(r"^ +NEEDED +(\S+)$", output_of("objdump", "-p", *map(str, files)), re.MULTILINE))


def places_of(files, libraries):
    """Where this machine has all that these files load, by name."""
    answer = output_of("env", f"LD_LIBRARY_PATH={libraries}", "ldd", *map(str, files))
    lost = re.findall(r"^\s+(\S+) => not found$", answer, re.MULTILINE)
    if lost:
        raise SystemExit(f"This machine lacks {', '.join(sorted(set(lost)))}.")
    return {name: Path(place) for name, place in re.findall(r"^\s+(\S+) => (/\S.*) \(0x", answer, re.MULTILINE)}


def add_libraries(contents):
    """Copies what the programs and plugins need, and what that needs; the originals of what was copied."""
    folder = contents / LIBRARIES
    own = {path.name for path in folder.iterdir()}
    files = [path for part in ("MacOS", "libexec", "lib", "plugins") for path in (contents / part).rglob("*")
             if path.is_file() and path.suffix != ".conf"]
    places, found, wanted = places_of(files, folder), {}, needs_of(files)
    while wanted:
        new = {name: places[name] for name in wanted if name not in found and name not in own and not HOST.fullmatch(name)}
        for name, place in new.items():
            copy(place, folder / name)
        found |= new
        wanted = needs_of(new.values()) if new else set()
    return set(found.values())


def packages_of(files):
    """The Debian packages that these files are from."""
    names = {str(path) for path in files} | {str(path.resolve()) for path in files}
    names |= {name.removeprefix("/usr") for name in names} | {"/usr" + name for name in names}
    answer = subprocess.run(["dpkg", "-S", *names], capture_output=True, text=True).stdout # 1: some have no package
    return sorted({package for line in answer.splitlines() for package in line.rsplit(": ", 1)[0].split(", ")})


def add_licences(contents, files):
    documents = contents / "share/doc"
    packages = packages_of(files)
    for package in packages:
        name = package.split(":")[0]
        copy(Path("/usr/share/doc") / name / "copyright", documents / name / "copyright")
    for licence in LICENCES.iterdir():
        copy(licence, documents / "licences" / licence.name)
    form = "${Package} ${Version}, from the source ${source:Package} ${source:Version}\n"
    (documents / "libraries.txt").write_text(
        "The libraries of this bundle are those of Debian 12, unchanged; the program QtWebEngineProcess is Debian's, too,\n"
        "and was told to find them here. Each folder here that is called like a package tells its authors and licences.\n"
        "Their sources are in Debian's archive under these names:\n\n"
        + output_of("dpkg-query", "-W", "-f", form, *packages)
    )


def assemble(build, bundle, program):
    contents = bundle / "Contents"
    install(build, contents, program)
    plugins = toolkit("PLUGINS")
    parts = {f"plugins/{plugin}": plugins / plugin for plugin in PLUGINS} | DATA
    if (contents / LIBRARIES / "libmorvane-browser.so").exists():
        parts |= engine()
    for place, source in parts.items():
        copy(source, contents / place)
    if ENGINE_PROCESS in parts:
        lead_to_libraries(contents / ENGINE_PROCESS)
    for folder, root in (("MacOS", ".."), (HELPERS, "../..")):
        (contents / folder / "qt.conf").write_text(
            f"[Paths]\nPrefix = {root}\nPlugins = plugins\nLibraryExecutables = {HELPERS}\nData = {QT}\n"
            f"Translations = {QT}/translations\n"
        )
    files = add_libraries(contents)
    files |= {next(path for path in (source, *source.rglob("*")) if path.is_file()) for source in parts.values()}
    add_licences(contents, files)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=Path)
    parser.add_argument("bundle", type=Path)
    parser.add_argument("--program", type=Path)
    options = parser.parse_args()
    # Beside its place, so that nothing half made ever stands there.
    options.bundle.parent.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory(dir=options.bundle.parent, prefix=".bundle-") as folder:
        made = Path(folder) / "bundle"
        assemble(options.build, made, options.program)
        made.chmod(0o755)
        if options.bundle.exists():
            shutil.rmtree(options.bundle)
        made.rename(options.bundle)


if __name__ == "__main__":
    main()
