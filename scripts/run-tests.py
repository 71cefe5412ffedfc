#!/usr/bin/env python3
"""run-tests.py BUILD_FOLDER [FILTER]: runs the test programs that ctest knows and counts single tests.

A program whose ctest name or whose tests contain FILTER is run, in the second case with only those tests.
Programs that are no GoogleTest program (labelled "plain") or leave no report count as one test. The last line is "N passed, N failed".
"""

import json
import os
import subprocess
import sys
import tempfile
import time
import xml.etree.ElementTree as ElementTree


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
                "timeout": float(properties.get("TIMEOUT", 300)),
                "environment": dict(pair.split("=", 1) for pair in properties.get("ENVIRONMENT", [])),
            }
        )
    return entries


def selection(entry, wanted):
    """The GoogleTest filter for this program, or None when nothing of it is wanted."""
    if wanted.lower() in entry["name"].lower():
        return "*"
    if not entry["command"] or entry["plain"]:
        return None
    listing = subprocess.run(entry["command"] + ["--gtest_list_tests"], capture_output=True, text=True)
    suite, found = "", []
    for line in listing.stdout.splitlines():
        if not line.startswith(" "):
            suite = line.split("#")[0].strip()
        elif wanted.lower() in (suite + line.strip()).lower():
            found.append(suite + line.split("#")[0].strip())
    return ":".join(found) or None


def run(entry, gtest_filter):
    """Runs one program; returns (passed, names of what failed)."""
    if not entry["command"] or not os.path.exists(entry["command"][0]):
        return 0, [entry["name"] + " (not built)"]
    with tempfile.TemporaryDirectory() as folder:
        report = os.path.join(folder, "report.xml")
        command = entry["command"]
        if not entry["plain"]:
            command = command + [f"--gtest_filter={gtest_filter}", f"--gtest_output=xml:{report}"]
        environment = {**os.environ, **entry["environment"]}
        started = time.monotonic()
        with open(os.path.join(folder, "output"), "w+b") as output:
            try:
                code = subprocess.run(
                    command,
                    cwd=entry["folder"],
                    env=environment,
                    stdin=subprocess.DEVNULL,
                    stdout=output,
                    stderr=subprocess.STDOUT,
                    timeout=entry["timeout"],
                ).returncode
            except subprocess.TimeoutExpired:
                code = "timeout"
            output.seek(0)
            text = output.read().decode(errors="replace")
        passed, failed = 0, []
        if os.path.exists(report):
            for case in ElementTree.parse(report).iter("testcase"):
                name = f'{case.get("classname")}.{case.get("name")}'
                if case.find("failure") is not None or case.find("skipped") is not None:
                    failed.append(name)
                elif case.get("status") == "run":
                    passed += 1
        elif code == 0:
            passed = 1
        if code != 0 and not failed:
            failed.append(f'{entry["name"]} (ended with {code})')
        state = "ok" if not failed else "FAILED"
        print(f'{state:6} {entry["name"]}: {passed} passed, {time.monotonic() - started:.1f} s', flush=True)
        if failed:
            print(text[-20000:], flush=True)
        return passed, failed


def main():
    build, wanted = sys.argv[1], sys.argv[2] if len(sys.argv) > 2 else ""
    passed, failed = 0, []
    for entry in ctest_entries(build):
        gtest_filter = selection(entry, wanted)
        if gtest_filter:
            program_passed, program_failed = run(entry, gtest_filter)
            passed += program_passed
            failed += program_failed
    if passed == 0 and not failed:
        print(f'No test has "{wanted}" in its name.')
        failed.append("nothing was run")
    for name in failed:
        print(f"failed: {name}")
    print(f"{passed} passed, {len(failed)} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
