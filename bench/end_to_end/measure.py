"""Runs commands and says what they cost, by the operating system's own account of each finished process. Commands that
are compared run in turn, and the median counts, so that a machine that slows down does so for all."""

import functools
import os
import resource
import statistics
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path

from end_to_end.inputs import CACHE, debian_package


@dataclass(frozen=True)
class COST:
    """Of one run, with everything that it started and waited for; memory is that of its largest process."""

    wall: float
    processor: float
    peak_bytes: int


class FAILED(Exception):
    pass


@functools.cache
def gnu_time():
    CACHE.mkdir(parents=True, exist_ok=True)
    installed = Path("/usr/bin/time")
    return installed if installed.exists() else debian_package("time") / "usr/bin/time"


def run(command, cwd=None):
    """The cost of a command. FAILED, with the end of what it said, if it ends with another status than 0."""
    read, write = os.pipe()
    # The system counts what a process took before it became the command: of one that Python starts, Python's memory. GNU
    # time is small enough to start it in between.
    told = CACHE / f"memory-{os.getpid()}"
    timed = [gnu_time(), "-q", "-f", "%M", "-o", told, *command]
    start = time.monotonic()
    process = subprocess.Popen(
        [str(c) for c in timed], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=write, cwd=cwd
    )
    os.close(write)
    said = b""
    with os.fdopen(read, "rb") as pipe:
        while part := pipe.read1(65536):
            said = (said + part)[-2000:]
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.monotonic() - start
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        told.unlink(missing_ok=True)
        raise FAILED(f"{command[0]} ended with {process.returncode}: {said.decode(errors='replace').strip()[-400:]}")
    peak_bytes = int(told.read_text()) * 1024
    told.unlink()
    return COST(wall, usage.ru_utime + usage.ru_stime, peak_bytes)


def median(costs):
    """Figure by figure."""
    return COST(*(statistics.median(getattr(c, figure) for c in costs) for figure in ("wall", "processor", "peak_bytes")))


def interleaved(tasks, runs):
    """Runs each task of `tasks` (name → a function that gives a COST) `runs` times, in turn; name → all its costs. A
    task that fails is named on standard error and left out from then on."""
    costs = {name: [] for name in tasks}
    for turn in range(runs):
        for name, task in tasks.items():
            if len(costs[name]) < turn:
                continue
            try:
                costs[name].append(task())
            except FAILED as failure:
                print(f"left out: {name}: {failure}", file=sys.stderr)
    return {name: of_task for name, of_task in costs.items() if of_task}


class OTHERS:
    """How much of the machine other programs took between making and asking, as a share of all its processors."""

    def __init__(self):
        self.start = self._now()

    @staticmethod
    def _now():
        with open("/proc/stat") as file:
            fields = [int(field) for field in file.readline().split()[1:9]]
        busy = (sum(fields) - fields[3] - fields[4]) / os.sysconf("SC_CLK_TCK")
        own = sum(usage.ru_utime + usage.ru_stime for usage in map(resource.getrusage,
                  (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN)))
        return time.monotonic(), busy, own

    def share(self):
        (then, busy_then, own_then), (now, busy, own) = self.start, self._now()
        return max(0.0, (busy - busy_then) - (own - own_then)) / ((now - then) * os.cpu_count())


def measured(runs, others):
    """How the figures of one table came about, in a sentence."""
    times = "One run" if runs == 1 else f"Medians of {runs} runs in turn"
    return f"{times}; other programs took {others.share() * 100:.0f} % of the machine."


def machine():
    """The machine in one line."""
    model = "unknown processor"
    with open("/proc/cpuinfo") as file:
        for line in file:
            if line.startswith("model name"):
                model = line.split(":", 1)[1].strip()
                break
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30
    system = next((line.split("=", 1)[1].strip().strip('"') for line in open("/etc/os-release")
                   if line.startswith("PRETTY_NAME=")), os.uname().sysname)
    return f"{model}, {os.cpu_count()} processors, {memory:.0f} GiB, {system}"
