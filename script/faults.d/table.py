"""Runs the rows, each in a sandbox of its own, and writes the page from what they saw."""

import argparse
import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys
import time

import page
from row import load_groups
from sandbox import namespaces

HERE = pathlib.Path(__file__).resolve().parent
PROJECT = HERE.parents[1]
RESULTS = PROJECT / "build/faults"
GRACE = 10  # seconds that a row has to tell what it saw once its time is over


def run(row):
    began = time.monotonic()
    command = [*namespaces(), sys.executable, "-B", str(HERE / "sandbox.py"), row.name]
    with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as process:
        try:
            output, complaints = process.communicate(timeout=row.seconds + GRACE)
        except subprocess.TimeoutExpired:
            process.kill()  # and with it everything in its process table
            output, complaints = process.communicate()
    try:
        result = json.loads(output.splitlines()[-1])
    except (IndexError, ValueError):
        last = complaints.strip().splitlines()[-1:] or ["nothing"]
        result = {"verdict": "short", "seen": f"The row did not come to its end: {last[0]}"}
    result["seconds"] = round(time.monotonic() - began, 1)
    RESULTS.mkdir(parents=True, exist_ok=True)
    (RESULTS / f"{row.name}.json").write_text(json.dumps(result))
    return row, result


def chosen(rows, arguments):
    if arguments.rows:
        picked = [row for row in rows if any(row.file == name or row.name.startswith(name)
                                                 for name in arguments.rows)]
        if not picked:
            raise SystemExit(f"faults: no row and no group begins with {' or '.join(arguments.rows)}")
        return picked
    return [row for row in rows if row.quick] if arguments.quick else rows


def main():
    parser = argparse.ArgumentParser(prog="script/faults")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--first", action="store_true")
    parser.add_argument("--jobs", type=int, default=2 * (os.cpu_count() or 1))
    parser.add_argument("rows", nargs="*")
    arguments = parser.parse_args()
    rows = load_groups()
    if arguments.list:
        for row in rows:
            print(f"{row.name:<34} {row.group}: {row.done}")
        return 0
    # The long ones first, so that no core waits for one at the end.
    picked = sorted(chosen(rows, arguments), key=lambda row: -row.seconds)
    short = 0
    with concurrent.futures.ThreadPoolExecutor(arguments.jobs) as pool:
        for row, result in pool.map(run, picked):
            short += result["verdict"] == "short"
            word = {"holds": "holds", "short": "FALLS SHORT", "not here": "not here"}[result["verdict"]]
            print(f"{row.name:<34} {word:<12} {result['seconds']:6.1f} s  {result['seen']}", flush=True)
            if short and arguments.first:
                pool.shutdown(cancel_futures=True)
                return 1
    print(f"faults: {len(picked)} rows, {short} fall short")
    if not arguments.quick and not arguments.first:
        page.write(PROJECT / "docs/reliability.md", rows, RESULTS)
    return 1 if short else 0


sys.exit(main())
