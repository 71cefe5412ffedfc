#!/usr/bin/python3
"""run-tests.py BUILD_FOLDER [FILTER]: runs the test programs that ctest knows and counts single tests.

A program whose ctest name or whose tests contain FILTER is run, in the second case with only those tests. As many
run at once as there are processors; beside them those that share something (RESOURCE_LOCK), which wait most of the
time, one after the other; and those that ctest is told to run alone (RUN_SERIAL) follow one by one. Of those
that share nothing, what takes longest (COST) begins first, or it would end long after all others.
Programs that are no GoogleTest program (labelled "plain") count as one test. Any other that cannot be started or
listed, ends without a whole report, or has nothing to run, has failed, and so has a test that was skipped or switched
off. Single tests that take longer than SLOW seconds are named. The last line is "N passed, N failed". Who interrupts
it (SIGINT, SIGTERM, SIGHUP) ends the programs that run. What a program has started ends with it.
"""

import concurrent.futures
import json
import os
import signal
import subprocess
import sys
import tempfile
import threading
import time
import xml.etree.ElementTree as ElementTree

import interruption

SLOW = 5
OUTPUT = 20000  # characters that are shown of a program, the last ones; of a single test a fifth
READ = 16_000_000  # bytes of its output in which they are looked for, the last ones
MOST_OUTPUT = 256_000_000  # bytes; a program that prints more is ended
LISTING_SECONDS = 60


def ctest_entries(build):
    listing = subprocess.run(
        ["ctest", "--test-dir", build, "--show-only=json-v1"], capture_output=True, text=True, check=True
    )
    entries = []
    for test in json.loads(listing.stdout)["tests"]:
        properties = {entry["name"]: entry["value"] for entry in test.get("properties", [])}
        entries.append(
            {
                "name": test["name"],
                "command": test.get("command"),
                "folder": properties.get("WORKING_DIRECTORY", build),
                "plain": "plain" in properties.get("LABELS", []),
                "alone": properties.get("RUN_SERIAL", False),
                "shared": tuple(properties.get("RESOURCE_LOCK", ())),
                "cost": float(properties.get("COST", 0)),
                "timeout": float(properties.get("TIMEOUT", 300)),
                "environment": dict(pair.split("=", 1) for pair in properties.get("ENVIRONMENT", [])),
            }
        )
    return entries


def selection(entry, wanted):
    """The GoogleTest filter for this program, or None when nothing of it is wanted. All of a program that cannot tell
    what it has, so that it is run and fails."""
    if wanted.lower() in entry["name"].lower():
        return "*"
    if entry["plain"]:
        return None
    if not entry["command"]:
        return "*"
    try:
        listing = subprocess.run(
            entry["command"] + ["--gtest_list_tests"], capture_output=True, text=True, timeout=LISTING_SECONDS
        )
    except (OSError, subprocess.TimeoutExpired):
        return "*"
    if listing.returncode != 0:
        return "*"
    suite, found = "", []
    for line in listing.stdout.splitlines():
        if not line.startswith(" "):
            suite = line.split("#")[0].strip()
        elif wanted.lower() in (suite + line.strip()).lower():
            found.append(suite + line.split("#")[0].strip())
    # Of few tests a part of a program may have none.
    part = int(entry["environment"].get("GTEST_SHARD_INDEX", 0))
    return ":".join(found) if len(found) > part else None


def cases_of(report):
    """The single tests that GoogleTest's report tells of; none when it was not written to its end."""
    try:
        return list(ElementTree.parse(report).iter("testcase")) if os.path.isfile(report) else []
    except (OSError, ElementTree.ParseError):
        return []


def output_of(failed, text):
    """What the tests that failed have printed, each by itself; all of the program's where it does not tell."""
    parts = []
    for name in failed:
        start = text.find(f"[ RUN      ] {name}\n")
        end = text.find(f"[  FAILED  ] {name}", start)
        if start >= 0 and end >= 0:
            parts.append(text[start:end][-OUTPUT // 5 :].rstrip())
    return parts if len(parts) == len(failed) else [text[-OUTPUT:]]


def end_what_is_left(folder):
    """Ends what a program has started and left: whatever has the program's own temporary folder in its environment."""
    marker, rounds = os.fsencode(folder), 0
    left = True
    while left and rounds < 100: # each may have started another meanwhile
        left = False
        for entry in os.scandir("/proc"):
            if not entry.name.isdecimal():
                continue
            try:
                with open(f"/proc/{entry.name}/environ", "rb") as environment:
                    if marker in environment.read():
                        left = True
                        os.kill(int(entry.name), signal.SIGKILL)
            except OSError:
                continue # ended meanwhile, or another user's
        rounds += 1


class RunningPrograms:
    """Ends all programs when told to, also those that begin at that moment."""

    def __init__(self):
        self._lock = threading.Lock()
        self._programs = set()
        self._ended = False

    def add(self, program):
        with self._lock:
            self._programs.add(program)
            if self._ended:
                program.kill()

    def discard(self, program):
        with self._lock:
            self._programs.discard(program)

    def end(self):
        with self._lock:
            self._ended = True
            for program in self._programs:
                program.kill()


def end_of(program, timeout, output, running):
    """Waits for the program among those that run; its exit code, "timeout" or "too much output"."""
    running.add(program)
    deadline = time.monotonic() + timeout
    try:
        while True:
            try:
                return program.wait(max(0, min(1, deadline - time.monotonic())))
            except subprocess.TimeoutExpired:
                if os.fstat(output.fileno()).st_size > MOST_OUTPUT:
                    return "too much output"
                if time.monotonic() >= deadline:
                    return "timeout"
    finally:
        program.kill()
        program.wait()
        running.discard(program)


def run(entry, gtest_filter, running):
    """Runs one program; returns (passed, names of what failed)."""
    if not entry["command"] or not os.path.exists(entry["command"][0]):
        return 0, [entry["name"] + " (not built)"]
    # What a program leaves behind that was killed goes with the folder.
    with tempfile.TemporaryDirectory(prefix="test-", ignore_cleanup_errors=True) as folder:
        os.chmod(folder, 0o711)  # some tests give up root's rights, and still have to get to their files
        report = os.path.join(folder, "report.xml")
        command = entry["command"]
        if not entry["plain"]:
            command = command + [f"--gtest_filter={gtest_filter}", f"--gtest_output=xml:{report}"]
        environment = {**os.environ, "TMPDIR": folder, **entry["environment"]}
        started = time.monotonic()
        with open(os.path.join(folder, "output"), "w+b") as output:
            try:
                program = subprocess.Popen(
                    command,
                    cwd=entry["folder"],
                    env=environment,
                    stdin=subprocess.DEVNULL,
                    stdout=output,
                    stderr=subprocess.STDOUT,
                )
                code = end_of(program, entry["timeout"], output, running)
            except OSError as error:
                code = error.strerror
            end_what_is_left(folder)
            output.seek(max(0, os.fstat(output.fileno()).st_size - READ))
            text = output.read().decode(errors="replace")
        passed, failed, slow = 0, [], []
        if not entry["plain"]:
            for case in cases_of(report):
                name = f'{case.get("classname")}.{case.get("name")}'
                if case.find("failure") is not None:
                    failed.append(name)
                elif case.find("skipped") is not None or case.get("status") != "run":
                    failed.append(name + " (not run)")
                else:
                    passed += 1
                if float(case.get("time", 0)) > SLOW:
                    slow.append(f'       {name} alone took {float(case.get("time")):.1f} s')
        elif code == 0:
            passed = 1
        if code != 0 and not failed:
            failed.append(f'{entry["name"]} (ended with {code})')
        if passed == 0 and not failed:
            failed.append(f'{entry["name"]} (ended without having run a test)')
        state = "ok" if not failed else "FAILED"
        summary = f'{state:6} {entry["name"]}: {passed} passed, {time.monotonic() - started:.1f} s'
        # In one piece, since another program may end at the same moment.
        named = [f"       failed: {name}" for name in failed]
        print("\n".join([summary, *named, *slow] + (output_of(failed, text) if failed else [])), flush=True)
        return passed, failed


def run_whatever_happens(entry, gtest_filter, running):
    """As `run`; what it did not expect of a program is a failure of that program alone."""
    try:
        return run(entry, gtest_filter, running)
    except Exception as error:
        print(f'FAILED {entry["name"]}: {error!r}', flush=True)
        return 0, [f'{entry["name"]} ({error!r})']


def queues(entries):
    """Which programs run one after the other: those that share something, and each of the rest by itself."""
    shared = {}
    for each in entries:
        shared.setdefault(each[0]["shared"], []).append(each)
    single = sorted(shared.pop((), []), key=lambda each: -each[0]["cost"])
    return [*shared.values()], [[each] for each in single]


def run_all(shared, single, running):
    """Runs the programs in threads, which an interruption does not reach: it comes between no start and its note."""
    queues = shared + single
    with concurrent.futures.ThreadPoolExecutor(len(shared) + os.cpu_count()) as pool:
        try:
            ended = pool.map(lambda queue: [run_whatever_happens(*each, running) for each in queue], queues)
            return [result for results in ended for result in results]
        except KeyboardInterrupt:
            pool.shutdown(wait=False, cancel_futures=True)
            running.end()
            raise


def main():
    build, wanted = sys.argv[1], sys.argv[2] if len(sys.argv) > 2 else ""
    wanted_entries = [(entry, selection(entry, wanted)) for entry in ctest_entries(build)]
    wanted_entries = [(entry, gtest_filter) for entry, gtest_filter in wanted_entries if gtest_filter]
    running = RunningPrograms()
    together = queues(each for each in wanted_entries if not each[0]["alone"])
    alone = [each for each in wanted_entries if each[0]["alone"]]
    results = run_all(*together, running) + run_all([alone], [], running)
    passed = sum(program_passed for program_passed, _ in results)
    failed = [name for _, program_failed in results for name in program_failed]
    if passed == 0 and not failed:
        print(f'No test has "{wanted}" in its name.')
        failed.append("nothing was run")
    for name in failed:
        print(f"failed: {name}")
    print(f"{passed} passed, {len(failed)} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    interruption.exit_with(main, "interrupted")
