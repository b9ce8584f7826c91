"""One figure of bench/run, and what one process costs."""

import os
import subprocess
import sys
import time
from dataclasses import dataclass


@dataclass
class Figure:
    name: str
    value: float
    unit: str
    goal: str
    met: str

    @staticmethod
    def at_most(name, value, unit, limit):
        return Figure(name, round(value, 3), unit, f"<= {limit}", "met" if value <= limit else "short")

    @staticmethod
    def at_least(name, value, unit, limit):
        return Figure(name, round(value, 3), unit, f">= {limit}", "met" if value >= limit else "short")


@dataclass
class Usage:
    wall: float
    cpu: float
    peak_kib: int


def measure(command, environment):
    """Runs one whole process to its end; its own accounting comes from the operating system."""
    start = time.monotonic()
    process = subprocess.Popen(command, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
    words = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        sys.exit(f"{' '.join(map(str, command))} failed: {words.decode(errors='replace')}")
    return Usage(time.monotonic() - start, usage.ru_utime + usage.ru_stime, usage.ru_maxrss)
