"""Measures 50 warm runs of ostrellectl, against as many of a bare program of Qt Core between them."""

import pathlib
import signal
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


def verdict(value, target):
    return f"{value:6.2f}   target {target:g}: {'met' if value <= target else 'MISSED'}"


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    with tempfile.TemporaryDirectory() as directory:
        home = programs.make_home(directory)
        environment = {
            "HOME": str(home), "XDG_RUNTIME_DIR": str(home / ".run"),
            "PATH": f"{build}:/usr/local/bin:/usr/bin:/bin", "LANG": "C.UTF-8",
        }
        program = subprocess.Popen([build / "ostrelle"], env=environment, stdout=subprocess.PIPE)
        for line in program.stdout:
            if b"Listening" in line:
                break
        time.sleep(3)  # the first passes are over
        try:
            for arguments in COMMANDS:
                bare, ours = [], []
                for _ in range(RUNS):
                    bare.append(milliseconds_of([build / "bench-bare-core"], environment))
                    ours.append(milliseconds_of([build / "ostrellectl", *arguments], environment))
                median = statistics.median(ours)
                print(f"ostrellectl {' '.join(arguments)}, {RUNS} warm runs, the program idle")
                print(f"  median ms            {verdict(median, MILLISECONDS)}")
                print(f"  to bare Qt Core      {verdict(median / statistics.median(bare), RATIO)}")
        finally:
            program.send_signal(signal.SIGTERM)
            program.communicate()


main()
