#!/usr/bin/env python3
"""fuzz.py BUILD_FOLDER MINUTES [FILTER]: searches for inputs that break the readers of outside input.

Every fuzz target whose name contains FILTER gets an equal share of MINUTES, as many at once as there are processors.
What reached new code is kept from run to run in $XDG_CACHE_HOME/morvane-fuzz/TARGET/corpus, cut down to what adds
something; what broke a target lies beside it in found/, made as small as it goes. Ends with 1 when something broke.
"""

import concurrent.futures
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

SEEDS = Path(__file__).resolve().parent.parent / "tests" / "fuzz" / "corpus"
MINIMISING_SECONDS = 60
# A slow input is one that the time limit ends: libFuzzer's own list of slow units is only a busy machine's.
LIMITS = ["-timeout=20", "-report_slow_units=3600", "-rss_limit_mb=2500", "-max_len=65536"]


def libfuzzer(target, *arguments):
    """Runs the target; its exit code and what it printed."""
    result = subprocess.run([str(target), *map(str, arguments)], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT)
    return result.returncode, result.stdout.decode(errors="replace")


def keep_what_adds(target, corpus, seeds):
    """Cuts the kept corpus down to the inputs that reach code which the smaller ones and the seeds do not."""
    smaller = corpus.with_name("corpus.new")
    shutil.rmtree(smaller, ignore_errors=True)
    smaller.mkdir()
    code, _ = libfuzzer(target, "-merge=1", *LIMITS, smaller, *seeds, corpus)
    if code == 0:
        shutil.rmtree(corpus)
        smaller.rename(corpus)
    else:
        shutil.rmtree(smaller)


def minimised(target, artifact):
    """The smallest input found that still breaks the target; the artifact itself when none is smaller."""
    small = artifact.with_name("small-" + artifact.name)
    libfuzzer(target, "-minimize_crash=1", f"-max_total_time={MINIMISING_SECONDS}", *LIMITS,
              f"-exact_artifact_path={small}", artifact)
    return small if small.exists() else artifact


def fuzz(target, seconds, cache):
    """Searches with one target; a line that tells how it went, and the inputs that broke it."""
    name = target.name.removesuffix("Fuzz")
    corpus, found = cache / name / "corpus", cache / name / "found"
    corpus.mkdir(parents=True, exist_ok=True)
    found.mkdir(parents=True, exist_ok=True)
    seeds = [SEEDS / name] if (SEEDS / name).is_dir() else []
    before, kept = set(found.iterdir()), len(list(corpus.iterdir()))
    code, output = libfuzzer(target, f"-max_total_time={seconds}", *LIMITS, f"-artifact_prefix={found}/",
                             "-print_final_stats=1", corpus, *seeds)
    artifacts = sorted(set(found.iterdir()) - before)
    broken = [minimised(target, artifact) for artifact in artifacts]
    runs = re.search(r"number_of_executed_units:\s*(\d+)", output)
    if (code != 0 or not runs) and not artifacts: # without its figures it ended in the midst
        (found / "output.txt").write_text(output)
        broken = [found / "output.txt"]
    if not broken:
        keep_what_adds(target, corpus, seeds)
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
    targets = sorted(path for path in (build / "bin").glob("*Fuzz") if wanted in path.name.lower())
    if not targets:
        print(f'No fuzz target has "{wanted}" in its name.')
        return 1
    cache = Path(os.environ.get("XDG_CACHE_HOME") or Path.home() / ".cache") / "morvane-fuzz"
    workers = os.cpu_count() or 1
    seconds = max(1, round(minutes * 60 * min(workers, len(targets)) / len(targets)))
    print(f"{len(targets)} targets, {seconds} s each; kept in {cache}", flush=True)
    with concurrent.futures.ThreadPoolExecutor(workers) as pool:
        broken = [path for paths in pool.map(lambda target: fuzz(target, seconds, cache), targets) for path in paths]
    for path in broken:
        print(f"broken by {path}: mend the reader and put the file into tests/fuzz/corpus.")
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
