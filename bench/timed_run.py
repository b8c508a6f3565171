"""Runs programs in turn and keeps what each run cost."""

import os
import subprocess
import sys
import time


def median(values):
    ordered = sorted(values)
    middle = len(ordered) // 2
    return ordered[middle] if len(ordered) % 2 else (ordered[middle - 1] + ordered[middle]) / 2


class Program:
    """A program with its arguments, the files it makes, and what its runs cost."""

    def __init__(self, name, command, outputs):
        self.name, self.command, self.outputs = name, command, outputs
        self.wall, self.cpu, self.peak = [], [], []  # seconds, seconds, bytes

    def run(self, keep):
        # Nobody pays for giving back the pages of older outputs.
        for path in self.outputs:
            if os.path.exists(path):
                os.remove(path)
        start = time.perf_counter()
        child = subprocess.Popen(self.command, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)
        _, status, usage = os.wait4(child.pid, 0)
        wall = time.perf_counter() - start
        child.returncode = os.waitstatus_to_exitcode(status)
        if child.returncode != 0:
            fail(f"{' '.join(self.command)} ended with status {child.returncode}")
        for path in self.outputs:
            if not os.path.exists(path):
                fail(f"{self.name} did not write {path}")
        if keep:
            self.wall.append(wall)
            self.cpu.append(usage.ru_utime + usage.ru_stime)
            self.peak.append(usage.ru_maxrss * 1024)

    def ms(self):
        return median(self.wall) * 1e3

    def fastest_ms(self):
        return min(self.wall) * 1e3

    def cpu_ms(self):
        return median(self.cpu) * 1e3

    def mib(self):
        return median(self.peak) / 2**20


def fail(message):
    print(f"side_by_side: {message}", file=sys.stderr)
    sys.exit(2)


def interleave(programs, runs):
    """One round that does not count, then `runs` rounds of all programs."""
    for count in range(runs + 1):
        for program in programs:
            program.run(keep=count > 0)
