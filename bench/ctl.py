#!/usr/bin/python3 -B
"""Measures 50 warm runs of ostrellectl, against as many of a bare program of Qt Core between them.

Usage: bench/ctl.py BUILD-DIRECTORY
"""

import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

import programs

RUNS = 50
MILLISECONDS = 15.0
RATIO = 1.5
COMMANDS = (["health"], ["status"], ["agents"])


def milliseconds_of(command, environment):
    began = time.perf_counter()
    subprocess.run(command, env=environment, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=False)
    return (time.perf_counter() - began) * 1000


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    with tempfile.TemporaryDirectory() as directory:
        home = programs.make_home(directory)
        environment = programs.environment(build, home)
        program, _ = programs.start(build, home)
        time.sleep(3)  # the first passes are over
        try:
            for arguments in COMMANDS:
                bare, ours = [], []
                for _ in range(RUNS):
                    bare.append(milliseconds_of([build / "bench-bare-core"], environment))
                    ours.append(milliseconds_of([build / "ostrellectl", *arguments], environment))
                median = statistics.median(ours)
                print(f"ostrellectl {' '.join(arguments)}, {RUNS} warm runs, the program idle")
                ratio = median / statistics.median(bare)
                print(f"  median ms            {median:6.2f}{programs.verdict(median, MILLISECONDS)}")
                print(f"  to bare Qt Core      {ratio:6.2f}{programs.verdict(ratio, RATIO)}")
        finally:
            programs.end(program)


main()
