#!/usr/bin/python3
"""check.py [--all [NAME]] [--fix]: what can be told of the sources without building them.

The rules of scripts/rules.py and the layout (clang-format) for every file; clang-tidy for sources in src/ that changed
since the last commit on main, the compiler for those of tests and benchmarks (some seconds each), with --all for every
source or those with NAME in their path, with --quick for none. --fix writes the layout instead of complaining about it.
Ends with 1 when something is found.
"""

import argparse
import concurrent.futures
import json
import os
import re
import shlex
import subprocess
import sys
from pathlib import Path

import rules

# The only place that says which versions judge this code.
FORMAT = "clang-format-19"
TIDY = "clang-tidy-19"

ROOT = Path(__file__).resolve().parent.parent
TOPS = ("src", "tests", "bench")


def git(*arguments):
    """What git answers, or None when it fails or is not there."""
    try:
        result = subprocess.run(["git", *arguments], cwd=ROOT, capture_output=True, text=True)
    except FileNotFoundError:
        return None
    return result.stdout.strip() if result.returncode == 0 else None


def base_commit():
    """The last commit on main that this work is built on: where it left main, or on main itself the commit before."""
    head = git("rev-parse", "HEAD")
    for main in ("origin/main", "origin/HEAD", "main"):
        fork = git("merge-base", "HEAD", main)
        if fork and fork != head:
            return fork
    if git("status", "--porcelain"):
        return head
    return git("rev-parse", "--verify", "--quiet", "HEAD~1")


def changed_files():
    """Files that differ from the base, and new ones; None when the history does not reach that far, or is another's, in
    whose folder this one was unpacked."""
    top = git("rev-parse", "--show-toplevel")
    base = base_commit() if top and Path(top).resolve() == ROOT.resolve() else None
    if base is None:
        return None
    differing = git("diff", "--name-only", "--diff-filter=d", base)
    untracked = git("ls-files", "--others", "--exclude-standard")
    return {ROOT / name for name in (differing + "\n" + untracked).split("\n") if name}


def concerned(sources, changed):
    """The sources to be read again: those that changed, those of a class whose header changed, and for a header without
    sources of its own one that includes it."""
    headers = sorted(path for path in changed if path.suffix == ".h")
    classes = {(path.parent, path.stem) for path in headers}
    own = {(path.parent, rules.owner_of(path)) for path in sources}
    wanted = {path for path in sources if path in changed or (path.parent, rules.owner_of(path)) in classes}
    for header in headers:
        if (header.parent, header.stem) not in own:
            name = re.sub(rf".*/({'|'.join(TOPS)})/", "", header.as_posix())
            includes = (f'#include "{name}"', f'#include "{header.name}"')
            readers = [path for path in sources if any(include in path.read_text() for include in includes)]
            if readers and wanted.isdisjoint(readers):
                wanted.add(readers[0])
    return [path for path in sources if path in wanted]


def run_parallel(commands):
    """Runs the commands, as many at once as there are processors; the outputs of those that fail."""
    def run(command):
        result = subprocess.run(command, cwd=ROOT, capture_output=True, text=True)
        return "" if result.returncode == 0 else result.stdout + result.stderr

    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        return [output for output in pool.map(run, commands) if output]


def check_layout(files, fix):
    names = [str(path) for path in files]
    mode = ["-i"] if fix else ["--dry-run", "-Werror"]
    return run_parallel([FORMAT, *mode, *names[start : start + 40]] for start in range(0, len(names), 40))


def configure():
    """Writes the list of commands anew, which knows only the sources of its last configuring; what went wrong."""
    configured = subprocess.run(
        ["cmake", "--preset", "debug", "--log-level=WARNING"], cwd=ROOT, capture_output=True, text=True
    )
    return [] if configured.returncode == 0 else [configured.stdout + configured.stderr]


def check_tidy(files):
    """clang-tidy reads the debug preset's commands, where each source stands alone without precompiled headers."""
    commands = ROOT / "build" / "debug"
    return run_parallel(
        ["nice", TIDY, "--quiet", "-warnings-as-errors=*", "-p", str(commands), str(path)] for path in files
    )


def check_alone(files):
    """The compiler reads each by itself, as the debug preset would build it: elsewhere tests are compiled in batches, where
    one source includes what another forgot."""
    commands = ROOT / "build" / "debug" / "compile_commands.json"
    if not commands.exists():
        return []  # why it is missing was told by configure()
    entries = {entry["file"]: entry for entry in json.loads(commands.read_text())}
    known = [entries[str(path)] for path in files if str(path) in entries]  # those for fuzzing are not among them
    return run_parallel(["nice", *shlex.split(entry["command"]), "-fsyntax-only"] for entry in known)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--all", nargs="?", const="", metavar="NAME", help="every source is read, or those with NAME in their path")
    parser.add_argument("--quick", action="store_true", help="no source is read")
    parser.add_argument("--fix", action="store_true", help="write the layout")
    options = parser.parse_args()

    sources = [path for path in rules.sources(ROOT, "src") if path.suffix == ".cpp"]
    tests = [path for path in rules.sources(ROOT, "tests", "bench") if path.suffix == ".cpp"]
    if options.all is not None:
        sources = [path for path in sources if options.all in path.relative_to(ROOT).as_posix()]
        tests = [path for path in tests if options.all in path.relative_to(ROOT).as_posix()]
        if not sources and not tests:
            print(f'No source has "{options.all}" in its path.')
            return 1

    problems = 0
    for violation in rules.violations(ROOT):
        print(f"{violation.file}:{violation.line}: {violation.text}")
        problems += 1
    for output in check_layout(list(rules.sources(ROOT, *TOPS)), options.fix):
        print(output)
        problems += 1

    if options.quick:
        sources, tests = [], []
    elif options.all is None:
        changed = changed_files()
        if changed is None:
            print("The commit before this one is not known here, so no source is read; ./test --lint reads all.")
        of_program = {path for path in changed or () if (ROOT / "src") in path.parents}
        sources, tests = concerned(sources, of_program), concerned(tests, (changed or set()) - of_program)
    for output in (configure() if sources or tests else []) + check_tidy(sources) + check_alone(tests):
        print(output)
        problems += 1
    print(f"Checked the rules and the layout of all files, {len(sources)} sources with clang-tidy, {len(tests)} of "
          "tests each by itself: "
          + ("nothing to complain about." if problems == 0 else f"{problems} complaints."))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
