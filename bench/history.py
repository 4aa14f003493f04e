#!/usr/bin/python3 -B
"""Times the digest of session logs of several sizes, warm, beside what it cannot do without.

Usage: bench/history.py BUILD-DIRECTORY
"""

import json
import pathlib
import subprocess
import sys
import tempfile
import time

MEGABYTE = 1024 * 1024
JQ_FILTER = ('select(.type == "message") | .message | select(.role == "user" or .role == "assistant")'
             ' | {role, content}')


def lines_that_count(size):
    """About `size` bytes of a chat, with the tool output that makes up most of a real log."""
    block, number = [], 0
    while sum(map(len, block)) < MEGABYTE:
        number += 1
        text = f"message {number}: " + "wörter und mehr Wörter, " * (number % 40)
        role = "user" if number % 2 else "assistant"
        for entry in ({"role": role, "content": [{"type": "text", "text": text}]},
                      {"role": "toolResult", "content": "0123456789abcdef " * 60}):
            block.append((json.dumps(
                {"type": "message", "timestamp": "2026-01-01T00:00:00Z", "message": entry},
                ensure_ascii=False) + "\n").encode())
    data = b"".join(block)
    return lambda file: [file.write(data) for _ in range(max(1, size // len(data)))]


def chatter(size):
    line = b'{"type":"message","message":{"role":"assistant","content":"HEARTBEAT_OK"}}\n'
    return lambda file: file.write(line * (size // len(line)))


def make_log(path, *parts):
    with open(path, "wb") as file:
        for part in parts:
            part(file)


def timed(build, way, path):
    answer = subprocess.run([build / "bench-history", way, path], check=True, capture_output=True,
                            text=True).stdout
    return {name: float(value) for name, value in (pair.split("=") for pair in answer.split())}


def time_jq(path):
    began = time.perf_counter()
    subprocess.run(f"jq -c '{JQ_FILTER}' '{path}' | tail -n 50", shell=True, check=True,
                   stdout=subprocess.DEVNULL)
    return (time.perf_counter() - began) * 1000


def report(build, name, path, with_jq):
    timed(build, "read", path)  # warms the page cache
    read, digest = timed(build, "read", path), timed(build, "digest", path)
    jq = time_jq(path) if with_jq else None
    print(f"{name:<30}{digest['best_ms']:>12.2f}{read['best_ms']:>12.2f}"
          f"{digest['best_ms'] / read['best_ms']:>8.2f}{digest['private_kb'] / 1024:>12.1f}"
          + (f"{jq:>12.0f}{jq / digest['best_ms']:>9.0f}" if jq else f"{'-':>12}{'-':>9}"))


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    print(f"{'log':<30}{'digest ms':>12}{'read ms':>12}{'ratio':>8}{'private MB':>12}"
          f"{'jq ms':>12}{'jq/ours':>9}")
    with tempfile.TemporaryDirectory() as scratch:
        path = pathlib.Path(scratch) / "log.jsonl"
        for name, size in (("1 MB", MEGABYTE), ("100 MB", 100 * MEGABYTE),
                           ("1 GB", 1024 * MEGABYTE)):
            make_log(path, lines_that_count(size))
            report(build, name, path, with_jq=True)
        make_log(path, lines_that_count(90 * MEGABYTE), chatter(10 * MEGABYTE))
        report(build, "100 MB, last 10 MB not counting", path, with_jq=False)
    print("targets: 1 MB at most 1 ms; 1 GB at most 1.2 times the read, at most 16 MB, at least 30 "
          "times faster than jq")


main()
