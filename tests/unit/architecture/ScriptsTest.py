#!/usr/bin/python3
"""What runs the tests and searches for breaking inputs never takes a failure for a success."""

import contextlib
import fcntl
import importlib
import io
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import unittest
import unittest.mock
from pathlib import Path

HOUSE = Path(__file__).resolve().parents[3]
sys.path.insert(0, str(HOUSE / "scripts"))
sys.dont_write_bytecode = True

fuzz = importlib.import_module("fuzz")
run_tests = importlib.import_module("run-tests")

# A program that takes GoogleTest's options; what it does with its report follows.
PROGRAM = """#!/usr/bin/python3
import os, signal, sys
if "--gtest_list_tests" in sys.argv:
    print("Reader.\\n  ReadsWhatIsThere")
    sys.exit(0)
def report(*cases):
    path = next(word for word in sys.argv if word.startswith("--gtest_output=xml:")).split(":", 1)[1]
    with open(path, "w") as file:
        file.write("<testsuites><testsuite>" + "".join(cases) + "</testsuite></testsuites>")
passed = '<testcase classname="Reader" name="ReadsWhatIsThere" status="run" time="0"/>'
"""


def is_running(process):
    """Whether there is such a process, and not only its exit code that nobody has asked for yet."""
    try:
        return Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()[0] != "Z"
    except OSError:
        return False


class RunTests(unittest.TestCase):
    """scripts/run-tests.py, with a folder that ctest takes for a build and programs of our own in it."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.build = Path(folder.name)

    def program(self, name, body, mode=0o755):
        path = self.build / name
        path.write_text(body)
        path.chmod(mode)
        with open(self.build / "CTestTestfile.cmake", "a") as tests:
            tests.write(f'add_test("{name}" "{path}")\n'
                        f'set_tests_properties("{name}" PROPERTIES LABELS "unit" TIMEOUT "2")\n')
        return path

    def run_tests(self, *words):
        result = subprocess.run([HOUSE / "scripts" / "run-tests.py", self.build, *words], capture_output=True, text=True)
        lines = result.stdout.splitlines()
        return result.returncode, lines[-1] if lines else "", result.stdout + result.stderr

    def assert_fails(self, counts, words, *arguments):
        code, last, output = self.run_tests(*arguments)
        self.assertEqual((code, last), (1, counts), output)
        self.assertIn(words, output)

    def test_what_passes_is_counted(self):
        self.program("unit.good", PROGRAM + "report(passed, passed)\n")
        self.assertEqual(self.run_tests()[:2], (0, "2 passed, 0 failed"))
        self.assertEqual(self.run_tests("whatisthere")[:2], (0, "2 passed, 0 failed"))
        self.assertEqual(self.run_tests("GOOD")[:2], (0, "2 passed, 0 failed"))

    def test_a_program_that_is_no_googletest_program_counts_as_one(self):
        for code, counts in ((0, "1 passed, 0 failed"), (1, "0 passed, 1 failed")):
            self.setUp()
            self.program("unit.plain", f"#!/bin/sh\n[ $# = 0 ] && exit {code}\nexit 2\n")
            with open(self.build / "CTestTestfile.cmake", "a") as tests:
                tests.write('set_tests_properties("unit.plain" PROPERTIES LABELS "unit;plain")\n')
            self.assertEqual(self.run_tests()[:2], (code, counts))
            self.assertEqual(self.run_tests("plain")[:2], (code, counts))
            self.assert_fails("0 passed, 1 failed", 'No test has "whatisthere" in its name.', "whatisthere")

    def test_what_it_leaves_in_the_folder_for_temporary_files_goes(self):
        note = self.build / "note"
        self.program("unit.untidy", PROGRAM + f"open({str(note)!r}, 'w').write(os.environ['TMPDIR'])\n"
                     "os.mkdir(os.environ['TMPDIR'] + '/left')\nreport(passed)\n")
        with open(self.build / "CTestTestfile.cmake", "a") as tests:
            tests.write('set_tests_properties("unit.untidy" PROPERTIES ENVIRONMENT "OTHER=1")\n')
        self.assertEqual(self.run_tests()[0], 0)
        self.assertTrue(note.read_text())
        self.assertFalse(Path(note.read_text()).exists())

    def test_who_gives_up_roots_rights_still_gets_to_its_files(self):
        note = self.build / "note"
        self.program("unit.other", PROGRAM + f"open({str(note)!r}, 'w').write('%o' % (os.stat(os.environ['TMPDIR']).st_mode & 0o777))\n"
                     "report(passed)\n")
        self.assertEqual(self.run_tests()[0], 0)
        self.assertEqual(note.read_text(), "711")

    def test_a_program_gets_the_environment_that_its_list_names(self):
        self.program("unit.shard", PROGRAM + "os.environ.get('PART') == 'a=b' and report(passed)\n")
        with open(self.build / "CTestTestfile.cmake", "a") as tests:
            tests.write('set_tests_properties("unit.shard" PROPERTIES ENVIRONMENT "PART=a=b")\n')
        self.assertEqual(self.run_tests()[:2], (0, "1 passed, 0 failed"))

    def test_one_that_takes_long_is_named(self):
        self.program("unit.long", PROGRAM + "report(passed, passed.replace('time=\"0\"', 'time=\"7.25\"').replace('Reads', 'Hears'))\n")
        output = self.run_tests()[2]
        self.assertIn("Reader.HearsWhatIsThere alone took 7.2 s", output)
        self.assertNotIn("Reader.ReadsWhatIsThere alone", output)

    def test_of_failures_that_printed_nothing_by_themselves_all_is_shown(self):
        self.program("unit.bad", PROGRAM + "print('why it ended', flush=True)\nprint('what it said', file=sys.stderr)\n"
                     "report(passed.replace('/>', '><failure/></testcase>'))\nsys.exit(1)\n")
        output = self.run_tests()[2]
        self.assertIn("why it ended", output)
        self.assertIn("what it said", output)

    def test_what_wants_to_be_alone_runs_after_all_others(self):
        for name in ("unit.alone", "unit.beside"):
            self.program(name, PROGRAM + "report(passed)\n")
        with open(self.build / "CTestTestfile.cmake", "a") as tests:
            tests.write('set_tests_properties("unit.alone" PROPERTIES RUN_SERIAL TRUE)\n')
        rounds = []

        def run_all(shared, single, running):
            rounds.append([entry["name"] for queue in shared + single for entry, _ in queue])
            return [(1, [])]

        with unittest.mock.patch.object(run_tests, "run_all", run_all), contextlib.redirect_stdout(io.StringIO()), \
                unittest.mock.patch.object(sys, "argv", ["run-tests.py", str(self.build)]):
            self.assertEqual(run_tests.main(), 0)
        self.assertEqual(rounds, [["unit.beside"], ["unit.alone"]])

    def test_a_failure_is_one(self):
        self.program("unit.bad", PROGRAM + "report(passed, passed.replace('/>', '><failure/></testcase>'))\nsys.exit(1)\n")
        self.assert_fails("1 passed, 1 failed", "failed: Reader.ReadsWhatIsThere")

    def test_of_a_program_with_a_failure_only_that_test_is_shown(self):
        printed = ("[ RUN      ] Reader.ReadsNothing\n" + "no matter\n" * 5000 + "[       OK ] Reader.ReadsNothing (0 ms)\n"
                   "[ RUN      ] Reader.ReadsWhatIsThere\nwhy it failed\n[  FAILED  ] Reader.ReadsWhatIsThere (1 ms)\n"
                   "no matter\n")
        failed = "report(passed.replace('/>', '><failure/></testcase>'))\nsys.exit(1)\n"
        self.program("unit.bad", PROGRAM + f"print({printed!r}, flush=True)\n" + failed)
        _, last, output = self.run_tests()
        self.assertEqual(last, "0 passed, 1 failed")
        self.assertIn("why it failed", output)
        self.assertNotIn("no matter", output)
        self.assertLess(output.index("failed: Reader.ReadsWhatIsThere"), output.index("why it failed"))

    def test_a_crash_is_one_before_and_after_the_report(self):
        self.program("unit.early", PROGRAM + "os.kill(os.getpid(), 11)\n")
        self.program("unit.late", PROGRAM + "report(passed)\nos.kill(os.getpid(), 11)\n")
        self.assert_fails("1 passed, 2 failed", "unit.early (ended with -11)")

    def test_an_end_without_a_whole_report_is_one(self):
        for body in ("", "report('<testcase')\n", "report()\n"):
            self.setUp()
            self.program("unit.silent", PROGRAM + body)
            self.assert_fails("0 passed, 1 failed", "ended without having run a test")

    def test_a_report_that_is_no_report_is_a_failure_of_its_program_alone(self):
        self.program("unit.good", PROGRAM + "report(passed)\n")
        for body in ("os.mkfifo", "os.mkdir"):
            self.program(f"unit.{body}", PROGRAM + f"path = sys.argv[-1].split(':', 1)[1]\n{body}(path)\n")
        self.program("unit.odd", PROGRAM + "report(passed.replace('\"0\"', '\"soon\"'))\n")
        self.assert_fails("1 passed, 3 failed", "failed: unit.odd (ValueError")

    def test_what_is_skipped_or_switched_off_is_one(self):
        self.program("unit.part", PROGRAM + "report(passed, passed.replace('/>', '><skipped/></testcase>'), "
                     "passed.replace('\"run\"', '\"notrun\"'))\n")
        self.assert_fails("1 passed, 2 failed", "(not run)")

    def test_no_end_in_time_is_one(self):
        note = self.build / "note"
        self.program("unit.slow", PROGRAM + f"open({str(note)!r}, 'w').write(str(os.getpid()))\nsignal.pause()\n")
        self.assert_fails("0 passed, 1 failed", "unit.slow (ended with timeout)")
        with self.assertRaises(ProcessLookupError):
            os.kill(int(note.read_text()), 0)

    def test_output_without_end_is_one(self):
        self.program("unit.loud", PROGRAM + "while True: print('loud ' * 1000)\n")
        [entry] = run_tests.ctest_entries(self.build)
        with (unittest.mock.patch.object(run_tests, "MOST_OUTPUT", 100_000), unittest.mock.patch.object(run_tests, "READ", 1000),
              contextlib.redirect_stdout(io.StringIO()) as output):
            result = run_tests.run({**entry, "timeout": 60}, "*", run_tests.RunningPrograms())
        self.assertEqual(result, (0, ["unit.loud (ended with too much output)"]))
        self.assertLess(len(output.getvalue()), 2000)

    def test_what_a_program_leaves_running_is_ended(self):
        left = self.build / "left"
        self.program("unit.parent", PROGRAM + "import subprocess\nchild = subprocess.Popen(['sleep', '60'], "
                     f"start_new_session=True)\nopen({str(left)!r}, 'w').write(str(child.pid))\nreport(passed)\n")
        self.assertEqual(self.run_tests()[:2], (0, "1 passed, 0 failed"))
        self.assertFalse(is_running(left.read_text()))

    def test_what_cannot_be_started_is_one(self):
        self.program("unit.good", PROGRAM + "report(passed)\n")
        self.program("unit.gone", "").unlink()
        self.program("unit.forbidden", PROGRAM, 0o644)
        self.program("unit.broken", "#!/bin/sh\nexit 127\n") # as the linker ends it without a library
        for words in ((), ("whatisthere",)):
            self.assert_fails("1 passed, 3 failed", "unit.broken (ended with 127)", *words)

    def test_of_those_that_share_something_one_runs_at_a_time_and_others_beside_it(self):
        for name in ("unit.beside", "unit.first", "unit.second"):
            self.program(name, PROGRAM + "report(passed)\n")
        with open(self.build / "CTestTestfile.cmake", "a") as tests:
            for name in ("unit.first", "unit.second"):
                tests.write(f'set_tests_properties("{name}" PROPERTIES RESOURCE_LOCK "desktop")\n')
        shared, single = run_tests.queues((entry, "*") for entry in run_tests.ctest_entries(self.build))
        self.assertEqual([[entry["name"] for entry, _ in queue] for queue in shared], [["unit.first", "unit.second"]])
        self.assertEqual([[entry["name"] for entry, _ in queue] for queue in single], [["unit.beside"]])
        self.assertEqual(self.run_tests()[:2], (0, "3 passed, 0 failed"))

    def test_what_takes_longest_begins_first(self):
        for name in ("unit.long", "unit.longest", "unit.other", "unit.short"):
            self.program(name, PROGRAM + "report(passed)\n")
        with open(self.build / "CTestTestfile.cmake", "a") as tests:
            for name, cost in (("unit.long", 9), ("unit.longest", 30), ("unit.short", 1)):
                tests.write(f'set_tests_properties("{name}" PROPERTIES COST "{cost}")\n')
        _, single = run_tests.queues((entry, "*") for entry in run_tests.ctest_entries(self.build))
        self.assertEqual([entry["name"] for queue in single for entry, _ in queue],
                         ["unit.longest", "unit.long", "unit.short", "unit.other"])

    def test_programs_run_beside_each_other(self):
        meeting = self.build / "meeting"
        os.mkfifo(meeting)
        for name, mode in (("unit.first", "w"), ("unit.second", "r")): # an end waits for the other to be opened
            self.program(name, PROGRAM + f"open({str(meeting)!r}, '{mode}').close()\nreport(passed)\n")
        with open(self.build / "CTestTestfile.cmake", "a") as tests:
            tests.write('set_tests_properties("unit.first" PROPERTIES RESOURCE_LOCK "desktop")\n')
        self.assertEqual(self.run_tests()[:2], (0, "2 passed, 0 failed"))

    def test_a_part_of_a_program_may_have_none_of_what_is_wanted(self):
        for part in range(2):
            self.program(f"unit.half{part}", PROGRAM + f"report(passed, passed)\nos.environ['GTEST_SHARD_INDEX'] == '{part}'"
                         " or sys.exit(1)\n")
            with open(self.build / "CTestTestfile.cmake", "a") as tests:
                tests.write(f'set_tests_properties("unit.half{part}" PROPERTIES ENVIRONMENT "GTEST_SHARD_INDEX={part}")\n')
        self.assertEqual(self.run_tests("whatisthere")[:2], (0, "2 passed, 0 failed"))
        self.assertEqual(self.run_tests("half")[:2], (0, "4 passed, 0 failed"))

    def test_an_interruption_ends_what_runs(self):
        for alone in (False, True):
            for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
                self.setUp()
                started = self.build / "started"
                os.mkfifo(started)
                self.program("unit.long", PROGRAM + f"with open({str(started)!r}, 'w') as pipe:\n"
                                    "    pipe.write(str(os.getpid()))\nsignal.pause()\n")
                with open(self.build / "CTestTestfile.cmake", "a") as tests:
                    tests.write(f'set_tests_properties("unit.long" PROPERTIES TIMEOUT "60" RUN_SERIAL "{alone}")\n')
                runner = subprocess.Popen([HOUSE / "scripts" / "run-tests.py", self.build], stdout=subprocess.PIPE, text=True,
                                          stderr=subprocess.STDOUT)
                pid = int(started.read_text()) # comes when the program has begun
                runner.send_signal(number)
                output = runner.communicate(timeout=20)[0]
                self.assertEqual((runner.returncode, output.splitlines()[-1]), (-signal.SIGINT, "interrupted"), output)
                self.assertNotIn("Traceback", output)
                with self.assertRaises(ProcessLookupError):
                    os.kill(pid, 0)

    def test_what_begins_at_the_moment_of_an_interruption_is_ended_too(self):
        running = run_tests.RunningPrograms()
        with subprocess.Popen(["cat"], stdin=subprocess.PIPE) as early, subprocess.Popen(["cat"], stdin=subprocess.PIPE) as late:
            running.add(early)
            running.end()
            running.add(late)
            self.assertEqual((early.wait(), late.wait()), (-signal.SIGKILL, -signal.SIGKILL))

    def test_a_name_that_nothing_has_is_one(self):
        self.program("unit.good", PROGRAM + "report(passed)\n")
        self.assert_fails("0 passed, 1 failed", 'No test has "nowhere" in its name.', "nowhere")


class Commands(unittest.TestCase):
    """./run and ./test, from wherever they are called."""

    def test_what_they_do_not_know_is_told_from_anywhere(self):
        with tempfile.TemporaryDirectory() as folder:
            for name, words in (("run", ["somewhere"]), ("test", ["--somehow"]), ("test", ["one", "two"])):
                link = Path(folder) / f"{name} {len(words)}"
                link.symlink_to(HOUSE / name)
                for command in (HOUSE / name, link, os.path.relpath(HOUSE / name, folder)):
                    result = subprocess.run([command, *words], cwd=folder, capture_output=True, text=True)
                    self.assertEqual((result.returncode, result.stdout), (2, ""), command)
                    self.assertTrue(result.stderr.startswith(f"./{name} "), result.stderr)

    def test_an_unknown_number_of_minutes_is_told(self):
        for words in (["--fuzz"], ["--fuzz", "soon"], ["--fuzz", "-1"]):
            result = subprocess.run([HOUSE / "test", *words], capture_output=True, text=True)
            self.assertEqual((result.returncode, result.stderr), (2, "--fuzz wants a number of minutes.\n"))

    def test_a_name_that_no_source_has_is_told(self):
        result = subprocess.run([HOUSE / "scripts" / "check.py", "--all", "nowhere"], capture_output=True, text=True)
        self.assertEqual(result.returncode, 1, result.stdout)
        self.assertIn('No source has "nowhere" in its path.\n', result.stdout)

    def test_what_builds_ahead_ends_with_an_interruption(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with tempfile.TemporaryDirectory() as folder:
                house = Path(folder)
                (house / ".ci").mkdir()
                (house / "scripts").mkdir()
                os.mkfifo(house / "ahead")
                scripts = {".ci/run": (HOUSE / ".ci" / "run").read_text(), "scripts/install-packages.sh": "#!/bin/sh\n",
                           "scripts/check.py": "#!/bin/sh\n", "test": "#!/bin/sh\nexec sleep 60\n",
                           "scripts/build.sh": "#!/bin/sh\n[ $1 = sanitize ] || exit 0\necho $$ > ahead\nexec sleep 60\n"}
                for name, text in scripts.items():
                    (house / name).write_text(text)
                    (house / name).chmod(0o755)
                ci = subprocess.Popen([house / ".ci" / "run"], start_new_session=True)
                ahead = (house / "ahead").read_text().strip()
                os.killpg(ci.pid, number)
                self.assertEqual(ci.wait(20), -number)
                deadline = time.monotonic() + 20
                while is_running(ahead):
                    self.assertLess(time.monotonic(), deadline)


class Chain(unittest.TestCase):
    """What the commands at the top call, in a house whose scripts only note that they were called."""

    SCRIPTS = ("install-packages.sh", "install-peers.sh", "build.sh", "check.py", "run-tests.py", "bench.sh", "fuzz.py")

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.house = Path(folder.name)
        self.notes = self.house / "notes"
        for name in ("test", "run", ".ci/run"):
            (self.house / name).parent.mkdir(exist_ok=True)
            shutil.copy(HOUSE / name, self.house / name)
        (self.house / "scripts").mkdir()
        (self.house / "build/release/bin").mkdir(parents=True)
        for name in (*(f"scripts/{name}" for name in self.SCRIPTS), "build/release/bin/morvane", "build/release/bin/morvane-rehearsal"):
            script = self.house / name
            script.write_text(f'#!/bin/sh\necho "{script.name} $*" >> {self.notes}\n'
                              f'case " $FAILING " in *" {script.name} "*|*" {script.name}:$1 "*) exit 3;; esac\n')
            script.chmod(0o755)

    def call(self, *words, failing="", **environment):
        self.notes.write_text("")
        result = subprocess.run([self.house / words[0], *words[1:]], capture_output=True, text=True,
                                env={**os.environ, "FAILING": failing, **environment})
        return result.returncode, self.notes.read_text().replace(" \n", "\n").splitlines(), result.stdout

    def test_the_tests_are_built_and_run(self):
        before = ["install-packages.sh", "install-peers.sh"]
        self.assertEqual(self.call("test")[:2], (0, [*before, "build.sh release", "run-tests.py build/release"]))
        self.assertEqual(self.call("test", "store")[:2], (0, [*before, "build.sh release", "run-tests.py build/release store"]))
        self.assertEqual(self.call("test", "--sanitize", "store")[:2],
                         (0, [*before, "build.sh sanitize", "run-tests.py build/sanitize store"]))

    def test_a_test_a_build_or_packages_that_fail_are_told(self):
        self.assertEqual(self.call("test", failing="run-tests.py")[0], 3)
        code, called, output = self.call("test", failing="build.sh")
        self.assertEqual((code, called[-1], output.splitlines()[-1]), (1, "build.sh release", "0 passed, 1 failed"))
        self.assertEqual(self.call("test", failing="install-packages.sh")[:2], (1, ["install-packages.sh"]))
        code, called, output = self.call("test", failing="install-peers.sh")
        self.assertEqual((code, called[-1]), (0, "run-tests.py build/release"))
        self.assertIn("real tool servers will fail", output)

    def test_what_stands_in_the_place_of_the_tests_is_called(self):
        for words, last in ((("--lint",), "check.py --all"), (("--lint", "store"), "check.py --all store"),
                            (("--bench",), "bench.sh"), (("--bench", "Net"), "bench.sh Net"),
                            (("--fuzz", "1.5", "Json"), "fuzz.py build/fuzz 1.5 Json")):
            code, called, _ = self.call("test", *words)
            self.assertEqual((code, called[-1]), (0, last))
            self.assertEqual(self.call("test", *words, failing=last.split()[0])[0], 3)
            self.assertNotIn("run-tests.py", str(called))
        self.assertEqual(self.call("test", "--fuzz", "1")[1][1], "build.sh fuzz morvane-fuzz-targets")
        self.assertEqual(self.call("test", "--fuzz", "1", failing="build.sh")[0], 1)

    def test_the_program_is_built_and_started(self):
        build = ["install-packages.sh", "build.sh release morvane-program"]
        self.assertEqual(self.call("run", DISPLAY=":0")[:2], (0, [*build, "morvane"]))
        self.assertEqual(self.call("run", DISPLAY="", WAYLAND_DISPLAY="wayland-0")[:2], (0, [*build, "morvane"]))
        self.assertEqual(self.call("run", "build", DISPLAY="", WAYLAND_DISPLAY="")[:2], (0, build))
        rehearsal = ["install-packages.sh", "build.sh release morvane-program morvane-rehearsal",
                     "morvane-rehearsal build/release/bin/morvane build/rehearsal.png"]
        self.assertEqual(self.call("run", "rehearsal", DISPLAY=":0")[:2], (0, rehearsal))
        self.assertEqual(self.call("run", DISPLAY="", WAYLAND_DISPLAY="")[:2], (0, rehearsal))
        for failing in ("install-packages.sh", "build.sh", "morvane"):
            code, called, _ = self.call("run", DISPLAY=":0", failing=failing)
            self.assertEqual((code, called[-1].split()[0]), (3, failing))

    def test_before_a_change_lands_all_is_called_and_each_failure_told(self):
        script = self.house / "test"
        script.write_text((self.house / "scripts" / "bench.sh").read_text().replace("bench.sh", "test"))
        code, called, _ = self.call(".ci/run")
        self.assertEqual((code, called[:3]), (0, ["install-packages.sh", "check.py", "build.sh release"]))
        self.assertEqual(sorted(called[3:]), ["build.sh sanitize", "test", "test --sanitize"])
        self.assertEqual(called[-1], "test --sanitize")
        for failing in ("check.py", "test:", "test:--sanitize"):
            code, all_the_same, _ = self.call(".ci/run", failing=failing)
            self.assertEqual((code, sorted(all_the_same)), (1, sorted(called)), failing)
        self.assertEqual(self.call(".ci/run", failing="install-packages.sh")[:2], (1, ["install-packages.sh"]))
        self.assertEqual(self.call(".ci/run", failing="build.sh")[0], 0) # which ./test tells
        self.assertNotIn("build.sh sanitize", self.call(".ci/run", failing="build.sh")[1])


class Build(unittest.TestCase):
    """scripts/build.sh with a cmake that only notes what it is asked, and which folders others may build in meanwhile."""

    CMAKE = """#!/bin/sh
        echo "$*" | sed 's/ --log-level=WARNING//' >> notes
        for lock in build/*.lock; do
            flock --nonblock $lock true && echo $lock >> free
        done
        case " $FAILING " in *" $3 "*) exit 3;; esac
        """

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.house = Path(folder.name)
        for path, text in (("scripts/build.sh", (HOUSE / "scripts/build.sh").read_text()), ("bin/cmake", self.CMAKE)):
            (self.house / path).parent.mkdir()
            (self.house / path).write_text(text)
            (self.house / path).chmod(0o755)

    def start(self, *words, folder=".", script="scripts/build.sh", failing=""):
        path = f"{self.house / 'bin'}:{os.environ['PATH']}"
        return subprocess.Popen([script, *words], cwd=self.house / folder, env={**os.environ, "PATH": path, "FAILING": failing})

    def notes(self):
        return (self.house / "notes").read_text().splitlines()

    def test_it_configures_and_builds(self):
        self.assertEqual(self.start("debug").wait(), 0)
        self.assertEqual(self.notes(), ["--preset debug", "--build --preset debug"])

    def test_what_is_configured_is_only_built_and_no_more_than_asked_for(self):
        (self.house / "build/debug").mkdir(parents=True)
        (self.house / "build/debug/build.ninja").touch()
        self.assertEqual(self.start("debug", "a", "b").wait(), 0)
        self.assertEqual(self.notes(), ["--build --preset debug --target a b"])

    def test_whose_tests_the_sanitizers_watch_is_built_before(self):
        built = ["--preset release", "--build --preset release", "--preset sanitize", "--build --preset sanitize"]
        self.assertEqual(self.start("sanitize", folder="scripts", script="./build.sh").wait(), 0)
        self.assertEqual(self.notes(), built)
        (self.house / "notes").unlink()
        self.assertNotEqual(self.start("sanitize", failing="release").wait(), 0)
        self.assertEqual(self.notes(), built[:2])

    def test_nobody_else_builds_in_the_folder_meanwhile(self):
        self.assertEqual(self.start("sanitize").wait(), 0)
        self.assertEqual((self.house / "free").read_text().split(), ["build/release.lock"] * 2)  # while sanitize is built
        with open(self.house / "build/debug.lock", "w") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            waiting = self.start("debug")
            place = f":{os.fstat(lock.fileno()).st_ino} "
            while not any("->" in line and place in line for line in Path("/proc/locks").read_text().splitlines()):
                self.assertIsNone(waiting.poll())
            self.assertEqual(len(self.notes()), 4)
        self.assertEqual(waiting.wait(), 0)
        self.assertEqual(len(self.notes()), 6)


class Packages(unittest.TestCase):
    """scripts/install-packages.sh on a machine that has what the test says."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.house = Path(folder.name)
        self.notes = self.house / "notes"
        for name in ("scripts/install-packages.sh", "packaging/debian-packages.txt"):
            (self.house / name).parent.mkdir()
            shutil.copy(HOUSE / name, self.house / name)
        (self.house / "packaging/debian-packages.txt").write_text("# Two, and a blank line\n\nlibone\nlibone-dev\n  # more\n")
        (self.house / "bin").mkdir()

    def command(self, name, body):
        path = self.house / "bin" / name
        path.write_text(f"#!/bin/sh\n{body}\n")
        path.chmod(0o755)

    def install(self, installed, user=0, sudo=True, apt=0):
        self.notes.write_text("")
        self.command("dpkg-query", "printf '" + "".join(f"{name}\\n" for name in installed) + "'")
        self.command("id", f"echo {user}")
        self.command("apt-get", f'echo "apt-get $*" >> {self.notes}; exit {apt}')
        self.command("sudo", f'echo sudo >> {self.notes}; exec "$@"')
        if not sudo:
            (self.house / "bin/sudo").unlink()
        for name in ("bash", "grep", "awk", "dirname", "env"): # and nothing else of this machine
            if not (self.house / "bin" / name).exists():
                (self.house / "bin" / name).symlink_to(shutil.which(name))
        result = subprocess.run([self.house / "scripts/install-packages.sh"], capture_output=True, text=True,
                                env={"PATH": str(self.house / "bin")})
        return result.returncode, self.notes.read_text().splitlines(), result.stderr

    def test_nothing_is_asked_for_where_all_is_there(self):
        self.assertEqual(self.install(["libone installed", "libone-dev installed", "other installed"]), (0, [], ""))

    def test_what_is_missing_is_installed_and_no_more(self):
        update, install = "apt-get update -q", "apt-get install -q -y --no-install-recommends "
        self.assertEqual(self.install(["libone-dev installed"])[:2], (0, [update, install + "libone"]))
        self.assertEqual(self.install(["libone installed", "libone-dev config-files"])[:2], (0, [update, install + "libone-dev"]))
        self.assertEqual(self.install([], user=1000)[:2], (0, ["sudo", update, "sudo", install + "libone libone-dev"]))

    def test_what_cannot_be_installed_is_told(self):
        self.assertEqual(self.install([], apt=100)[:2], (100, ["apt-get update -q"]))
        code, called, told = self.install(["libone installed"], user=1000, sudo=False)
        self.assertEqual((code, called), (1, []))
        self.assertIn("missing, and sudo is not there to install them: libone-dev", told)


class Fuzzing(unittest.TestCase):
    """scripts/fuzz.py, with targets of our own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.build = Path(folder.name)
        (self.build / "bin").mkdir()
        self.cache = self.build / "cache"
        environment = unittest.mock.patch.dict(os.environ, XDG_CACHE_HOME=str(self.cache))
        environment.start()
        self.addCleanup(environment.stop)
        self.addCleanup(setattr, fuzz, "MINIMISING_SECONDS", fuzz.MINIMISING_SECONDS)
        fuzz.MINIMISING_SECONDS = 2

    def target(self, name, body):
        source = self.build / "target.cpp"
        source.write_text("#include <cstddef>\n#include <cstdint>\n#include <cstdlib>\n"
                          f'extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {{ {body} return 0; }}\n')
        subprocess.run(["clang++-19", "-fsanitize=fuzzer", source, "-o", self.build / "bin" / f"{name}Fuzz"], check=True)

    def search(self, seconds=2):
        words, sys.argv = sys.argv, ["fuzz.py", str(self.build), str(seconds / 60)]
        try:
            with contextlib.redirect_stdout(io.StringIO()) as output:
                return fuzz.main(), output.getvalue()
        finally:
            sys.argv = words

    def test_a_crash_is_found_made_small_and_told(self):
        self.target("Crash", "if (size > 1 && data[0] == 'B' && data[1] == 'D') abort();")
        code, output = self.search()
        small = list((self.cache / "morvane-fuzz" / "Crash" / "found").glob("small-crash-*"))
        self.assertEqual((code, [path.read_bytes() for path in small]), (1, [b"BD"]), output)
        self.assertIn(f"broken by {small[0]}", output)

    def test_what_reaches_new_code_is_kept_outside_of_the_house_and_cut(self):
        self.target("Fine", "if (size > 0 && data[0] == 'x') return size > 1 && data[1] == 'y' ? -1 : 0;")
        corpus = self.cache / "morvane-fuzz" / "Fine" / "corpus"
        corpus.mkdir(parents=True)
        for number in range(50):
            (corpus / str(number)).write_bytes(b"zz%d" % number)
        code, output = self.search()
        self.assertEqual(code, 0, output)
        self.assertTrue(1 < len(list(corpus.iterdir())) < 10, output)

    def test_those_of_a_name_share_the_minutes_and_a_name_that_none_has_is_told(self):
        for name in ("JsonFuzz", "IniFuzz", "TextFuzz", "Other"):
            (self.build / "bin" / name).touch()
        for wanted, names, seconds in (("", ["IniFuzz", "JsonFuzz", "TextFuzz"], 80), ("json", ["JsonFuzz"], 120), ("x", ["TextFuzz"], 120)):
            searched = []
            with unittest.mock.patch.object(fuzz, "fuzz", lambda _, target, share, cache: searched.append((target.name, share)) or []), \
                    unittest.mock.patch.object(os, "cpu_count", lambda: 2), contextlib.redirect_stdout(io.StringIO()), \
                    unittest.mock.patch.object(sys, "argv", ["fuzz.py", str(self.build), "2", wanted]):
                self.assertEqual(fuzz.main(), 0)
            self.assertEqual(sorted(searched), [(name, seconds) for name in names])
        with contextlib.redirect_stdout(io.StringIO()), unittest.mock.patch.object(sys, "argv", ["fuzz.py", str(self.build), "2", "nowhere"]):
            self.assertEqual(fuzz.main(), 1)

    def test_an_interruption_ends_the_search_and_keeps_what_was_found(self):
        self.target("Fine", "if (size > 0 && data[0] == 'x') return size > 1 && data[1] == 'y' ? -1 : 0;")
        kept = self.cache / "morvane-fuzz" / "Fine"
        (kept / "corpus").mkdir(parents=True)
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            (kept / "corpus" / "early").write_bytes(b"zz")
            search = subprocess.Popen([HOUSE / "scripts" / "fuzz.py", self.build, "9"], stdout=subprocess.PIPE, text=True,
                                      stderr=subprocess.STDOUT)
            while search.poll() is None and len(list((kept / "corpus").iterdir())) < 2:
                pass # until the target has kept something
            search.send_signal(number)
            output = search.communicate(timeout=20)[0]
            self.assertEqual((search.returncode, output.splitlines()[-1]),
                             (-signal.SIGINT, "interrupted; what was found by then is kept"), output)
            self.assertNotIn("Traceback", output)
            self.assertTrue((kept / "corpus" / "early").is_file())
            self.assertEqual(list((kept / "found").iterdir()), [])
            for file in (kept / "corpus").iterdir():
                file.unlink()

    def test_an_interruption_ends_the_target_too(self):
        target = self.build / "bin" / "SlowFuzz"
        target.write_text(f"#!/bin/sh\nsleep 60 &\necho $$ $! > {self.build}/pid\nwait\n")
        target.chmod(0o755)
        os.mkfifo(self.build / "pid")
        search = subprocess.Popen([HOUSE / "scripts" / "fuzz.py", self.build, "9"], stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT)
        started = (self.build / "pid").read_text().split()
        self.assertEqual([is_running(process) for process in started], [True, True])
        search.send_signal(signal.SIGTERM)
        search.communicate(timeout=20)
        deadline = time.monotonic() + 20
        while any(map(is_running, started)):
            self.assertLess(time.monotonic(), deadline)

    def test_a_corpus_that_an_end_left_in_the_midst_of_its_exchange_is_taken_back(self):
        kept = self.cache / "morvane-fuzz" / "Fine"
        for folder in ("corpus.old", "corpus.new"):
            (kept / folder).mkdir(parents=True)
            (kept / folder / "one").write_text(folder)
        fuzz.take_back(kept / "corpus")
        self.assertEqual((kept / "corpus" / "one").read_text(), "corpus.old")
        (kept / "corpus.old").mkdir()
        fuzz.take_back(kept / "corpus")
        self.assertEqual((kept / "corpus" / "one").read_text(), "corpus.old")
        self.assertFalse((kept / "corpus.old").exists())

    def test_a_reader_that_ends_the_search_is_told(self):
        self.target("Exit", "if (size > 0 && data[0] == 'E') _Exit(0);")
        self.assertEqual(self.search()[0], 1)


if __name__ == "__main__":
    # A shell lets what it starts in the background ignore interruptions, nohup hangups, and that is inherited.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    signal.signal(signal.SIGHUP, signal.SIG_DFL)
    unittest.main()
