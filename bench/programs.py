"""What the benchmarks that start the program share: its home directory, and what the kernel says of it."""

import json
import os
import pathlib
import socket


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


def proportional_set_size(pid):
    """In megabytes."""
    for line in pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines():
        if line.startswith("Pss:"):
            return int(line.split()[1]) / 1024
    raise SystemExit(f"no proportional set size of process {pid}")


def cpu_milliseconds(pid):
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) * 1000 / os.sysconf("SC_CLK_TCK")
