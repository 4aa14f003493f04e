"""What the benchmarks share: the program and its home directory, what the kernel says of it, and the verdicts."""

import json
import os
import pathlib
import signal
import socket
import subprocess
import time


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def make_home(directory):
    home = pathlib.Path(directory)
    (home / ".ostrelle").mkdir()
    (home / ".run").mkdir(mode=0o700)
    (home / ".ostrelle/config.json").write_text(json.dumps({
        "gateway": {"url": "http://127.0.0.1:18789"},
        "ports": {"status": free_port(), "voiceAgent": free_port()},
        "voice": {"enabled": False, "venvPath": "~/.ostrelle/venv"},
        "paths": {
            "statusFile": "~/.ostrelle/ostrelle-agent-tracker.json",
            "trackerFile": "~/.ostrelle/ostrelle-project-tracker.json",
            "cronFile": "~/.ostrelle/ostrelle-cron-tracker.json",
        },
    }))
    return home


def environment(build, home):
    return {
        "HOME": str(home), "XDG_RUNTIME_DIR": str(home / ".run"),
        "PATH": f"{build}:/usr/local/bin:/usr/bin:/bin", "LANG": "C.UTF-8",
    }


def start(build, home):
    """The program, and how many milliseconds it took until it listened."""
    began = time.perf_counter()
    program = subprocess.Popen([build / "ostrelle"], env=environment(build, home), stdout=subprocess.PIPE)
    for line in program.stdout:
        if b"Listening" in line:
            return program, (time.perf_counter() - began) * 1000
    raise SystemExit("the program ended before it listened")


def end(program):
    program.send_signal(signal.SIGTERM)
    program.communicate()


def verdict(value, target):
    return "" if target is None else f"   target {target:g}: {'met' if value <= target else 'MISSED'}"


def proportional_set_size(pid):
    """In megabytes."""
    for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines():
        if line.startswith("Pss:"):
            return int(line.split()[1]) / 1024
    raise SystemExit(f"no proportional set size of process {pid}")


def cpu_milliseconds(pid):
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) * 1000 / os.sysconf("SC_CLK_TCK")
