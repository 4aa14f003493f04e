#!/usr/bin/python3 -B
"""Measures 20 warm starts of the program, and its memory and wake-ups while it idles.

Usage: bench/startup.py BUILD-DIRECTORY
"""

import pathlib
import statistics
import sys
import tempfile
import time

import programs

STARTS = 20
IDLE_SECONDS = 65  # two passes of the 30-second services lie in it
GATEWAY_CYCLE_SECONDS = 3
TARGETS = {
    "median ms": 30.0, "PSS MB": 24.0, "wake-ups a gateway cycle": 40,
    "CPU ms a minute, without children": 60,
}


def wakeups(pid):
    switches = 0
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        for line in (task / "status").read_text().splitlines():
            if line.startswith("voluntary_ctxt_switches"):
                switches += int(line.split()[1])
    return switches


def report(name, value, unit=""):
    print(f"{name:<34}{value:8.2f} {unit}{programs.verdict(value, TARGETS.get(name))}")


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    with tempfile.TemporaryDirectory() as directory:
        home = programs.make_home(directory)
        programs.end(programs.start(build, home)[0])  # warms the page cache, creates the files
        times = []
        for _ in range(STARTS):
            program, milliseconds = programs.start(build, home)
            times.append(milliseconds)
            programs.end(program)
        print(f'exec to "Listening", {STARTS} warm starts')
        report("median ms", statistics.median(times))
        report("slowest ms", max(times))

        program, _ = programs.start(build, home)
        time.sleep(3)  # the first passes are over
        before, cpu_before = wakeups(program.pid), programs.cpu_milliseconds(program.pid)
        time.sleep(IDLE_SECONDS)
        print(f"idle for {IDLE_SECONDS} s, headless, the gateway tool answering")
        cycles = IDLE_SECONDS / GATEWAY_CYCLE_SECONDS
        report("wake-ups a gateway cycle", (wakeups(program.pid) - before) / cycles)
        report("CPU ms a minute, without children", (programs.cpu_milliseconds(program.pid) - cpu_before) * 60 / IDLE_SECONDS)
        report("PSS MB", programs.proportional_set_size(program.pid))
        programs.end(program)


main()
