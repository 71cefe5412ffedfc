#!/usr/bin/python3
"""fuzz.py BUILD_FOLDER MINUTES [FILTER]: searches for inputs that break the readers of outside input.

Every fuzz target whose name contains FILTER gets an equal share of MINUTES, as many at once as there are processors.
What reached new code is kept from run to run in $XDG_CACHE_HOME/morvane-fuzz/TARGET/corpus, cut down to what adds
something; what broke a target lies beside it in found/, made as small as it goes. Ends with 1 when something broke.
Who interrupts it (SIGINT, SIGTERM, SIGHUP) ends the targets too, and keeps what they have found by then.
"""

import concurrent.futures
import os
import re
import shutil
import signal
import subprocess
import sys
import threading
from pathlib import Path

import interruption

SEEDS = Path(__file__).resolve().parent.parent / "tests" / "fuzz" / "corpus"
MINIMISING_SECONDS = 60
# A slow input is one that the time limit ends: libFuzzer's own list of slow units is only a busy machine's.
LIMITS = ["-timeout=20", "-report_slow_units=3600", "-rss_limit_mb=2500", "-max_len=65536"]


class Interrupted(Exception):
    """Somebody wants no more: what a target says that was ended for this tells nothing."""


class Targets:
    """The targets that run, each a group of processes of its own, so that an interruption comes here only."""

    def __init__(self):
        self._lock = threading.Lock()
        self._running = set()
        self._ended = False

    def run(self, target, *arguments):
        """Runs the target; its exit code and what it printed."""
        with self._lock:
            if self._ended:
                raise Interrupted
            program = subprocess.Popen([str(target), *map(str, arguments)], stdin=subprocess.DEVNULL,
                                       stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)
            self._running.add(program)
        output = program.communicate()[0]
        with self._lock:
            self._running.discard(program)
            if self._ended:
                raise Interrupted
        return program.returncode, output.decode(errors="replace")

    def end(self):
        with self._lock:
            self._ended = True
            for program in self._running:
                os.killpg(program.pid, signal.SIGKILL)


def keep_what_adds(targets, target, corpus, seeds):
    """Cuts the kept corpus down to the inputs that reach code which the smaller ones and the seeds do not."""
    smaller, larger = corpus.with_name("corpus.new"), corpus.with_name("corpus.old")
    shutil.rmtree(smaller, ignore_errors=True)
    smaller.mkdir()
    code, _ = targets.run(target, "-merge=1", *LIMITS, smaller, *seeds, corpus)
    if code == 0:
        corpus.rename(larger)
        smaller.rename(corpus)
        shutil.rmtree(larger)
    else:
        shutil.rmtree(smaller)


def take_back(corpus):
    """What a run has left that was ended while it exchanged the corpus for a smaller one."""
    larger = corpus.with_name("corpus.old")
    if larger.is_dir() and not corpus.exists():
        larger.rename(corpus)
    shutil.rmtree(larger, ignore_errors=True)


def minimised(targets, target, artifact):
    """The smallest input found that still breaks the target; the artifact itself when none is smaller."""
    small = artifact.with_name("small-" + artifact.name)
    targets.run(target, "-minimize_crash=1", f"-max_total_time={MINIMISING_SECONDS}", *LIMITS,
              f"-exact_artifact_path={small}", artifact)
    return small if small.exists() else artifact


def fuzz(targets, target, seconds, cache):
    """Searches with one target; a line that tells how it went, and the inputs that broke it."""
    name = target.name.removesuffix("Fuzz")
    corpus, found = cache / name / "corpus", cache / name / "found"
    take_back(corpus)
    corpus.mkdir(parents=True, exist_ok=True)
    found.mkdir(parents=True, exist_ok=True)
    seeds = [SEEDS / name] if (SEEDS / name).is_dir() else []
    before, kept = set(found.iterdir()), len(list(corpus.iterdir()))
    code, output = targets.run(target, f"-max_total_time={seconds}", *LIMITS, f"-artifact_prefix={found}/",
                               "-print_final_stats=1", corpus, *seeds)
    artifacts = sorted(set(found.iterdir()) - before)
    broken = [minimised(targets, target, artifact) for artifact in artifacts]
    runs = re.search(r"number_of_executed_units:\s*(\d+)", output)
    if (code != 0 or not runs) and not artifacts: # without its figures it ended in the midst
        (found / "output.txt").write_text(output)
        broken = [found / "output.txt"]
    if not broken:
        keep_what_adds(targets, target, corpus, seeds)
    coverage = re.findall(r"cov: (\d+)", output)
    line = (f"{'ok' if not broken else 'BROKEN':6} {name}: {runs.group(1) if runs else '?'} inputs, "
            f"{coverage[-1] if coverage else '?'} edges, corpus {kept} -> {len(list(corpus.iterdir()))}")
    if broken:
        line += "\n" + output[-6000:]
    print(line, flush=True)
    return broken


def main():
    build, minutes = Path(sys.argv[1]), float(sys.argv[2])
    wanted = (sys.argv[3] if len(sys.argv) > 3 else "").lower()
    readers = sorted(path for path in (build / "bin").glob("*Fuzz") if wanted in path.name.lower())
    if not readers:
        print(f'No fuzz target has "{wanted}" in its name.')
        return 1
    cache = Path(os.environ.get("XDG_CACHE_HOME") or Path.home() / ".cache") / "morvane-fuzz"
    workers = os.cpu_count() or 1
    seconds = max(1, round(minutes * 60 * min(workers, len(readers)) / len(readers)))
    print(f"{len(readers)} targets, {seconds} s each; kept in {cache}", flush=True)
    targets = Targets()
    with concurrent.futures.ThreadPoolExecutor(workers) as pool:
        try:
            searches = pool.map(lambda reader: fuzz(targets, reader, seconds, cache), readers)
            broken = [path for paths in searches for path in paths]
        except KeyboardInterrupt:
            targets.end()
            raise
    for path in broken:
        print(f"broken by {path}: mend the reader and put the file into tests/fuzz/corpus.")
    return 1 if broken else 0


if __name__ == "__main__":
    interruption.exit_with(main, "interrupted; what was found by then is kept")
