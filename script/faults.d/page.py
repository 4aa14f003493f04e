"""docs/reliability.md, from what the last run of each row saw."""

import itertools
import json

HEAD = """# What happens when things break

Each row of these tables is a fault, brought about while the real program runs: its gateway is the simulator, but the disks, buses, keyrings, X servers, sockets and processes are real, and so are the signals and failed system calls. `script/faults` runs the rows and writes this page; `script/faults NAME` runs one of them. What was seen is what the row itself has measured, on whatever machine it ran last.

"A moment" is a second and a half: a second that the program may take, and what a busy machine adds.
"""
KEPT = "## Endurance"  # bench/endurance.py writes what begins with that


def cell(text):
    return text.replace("|", "\\|").replace("\n", " ")


def seen(row, result):
    if result["verdict"] == "short":
        return "**Falls short.** " + cell(f"{result['seen']}. {row.cause}".strip())
    if result["verdict"] == "not here":
        return "Not shown here: " + cell(result["seen"])
    return cell(result["seen"])


def tables(rows, results):
    for group, members in itertools.groupby(rows, key=lambda row: row.group):
        yield f"\n## {group}\n\n| row | what was done | what must hold | what was seen |\n|---|---|---|---|\n"
        for row in members:
            yield f"| `{row.name}` | {cell(row.done)} | {cell(row.must)} | {seen(row, results[row.name])} |\n"


def write(page, rows, directory):
    """Leaves the page alone while a row has never been run."""
    results = {}
    for row in rows:
        file = directory / f"{row.name}.json"
        if not file.exists():
            print(f"faults: {page.name} stays as it is: {row.name} has never been run here")
            return
        results[row.name] = json.loads(file.read_text())
    count = {verdict: sum(result["verdict"] == verdict for result in results.values())
             for verdict in ("holds", "short", "not here")}
    summary = (f"\n{len(rows)} rows: {count['holds']} hold, {count['short']} fall short, "
               f"{count['not here']} could not be shown on that machine.\n")
    before = page.read_text() if page.exists() else ""
    kept = "\n" + before[before.index(KEPT):] if KEPT in before else ""
    page.write_text(HEAD + summary + "".join(tables(rows, results)) + kept)
