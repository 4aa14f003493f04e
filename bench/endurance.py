"""Lets the real program live through days in minutes, and tells what it holds at the end more than at the beginning.

All its clocks go faster, so that its polls, passes and deadlines come as much sooner. Meanwhile the panel is opened and
closed, agents come and go, the gateway ends and returns, and the keyring is restarted.
"""

import json
import pathlib
import re
import statistics
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "script/faults.d"))

from faketime import Clock
from sandbox import PROJECT, furnish, namespaces
from session import Bus, Screen
from world import PREFERENCES, Gateway, Home, Program, install_tool, link_to, send_link

SPEED = 40  # beyond that the keyring's deadline of two seconds is shorter than a busy machine's answer
AGENTS_A_TURN = 2
TURNS_TO_A_FLAP, TURNS_TO_A_RESTART, TURNS_TO_A_LINE = 5, 50, 100
SIGNALS = 500
SECTION, SIGNALS_SECTION = "## Endurance", "## Endurance: changes in the keyring"
PAGE = PROJECT / "docs/reliability.md"


def listing(turn):
    """Fifty agents, of which two are new each turn."""
    first = turn * AGENTS_A_TURN
    return json.dumps({"sessions": [{"key": f"agent:a{i}:main", "agentId": f"a{i}", "model": "atlas"}
                                    for i in range(first, first + 50)]})


def sample(program):
    return {"MB": program.megabytes(), "descriptors": program.descriptors(), "threads": program.threads(),
            "children": len(program.children())}


def look_set_up(home):
    """Else the panel shows the setup in place of its tabs."""
    install_tool("node", "exit 1")
    home.write(".ostrelle/data/models/kokoro-v1.0.onnx", "")
    home.write(".ostrelle/venv/bin/python", "#!/bin/sh\n", 0o755)


def live(minutes):
    """The samples, one a turn, and what was done."""
    home = Home()
    home.configure()
    look_set_up(home)
    home.write(PREFERENCES, "[General]\nsetupWasShown=true\nprojectTrackingEnabled=true\n")
    home.write("listing", listing(0))
    install_tool("duskrell", 'case "$1" in sessions) cat "$HOME/listing" ;; cron) echo \'{"jobs":[]}\' ;; esac')
    home.play(record=True)
    gateway, bus, screen = Gateway(home), Bus(home), Screen(home)
    bus.start_keyring()
    screen.start_tray_host()
    clock = Clock(home)
    clock.hurry(SPEED)
    program = Program(home, DISPLAY=screen.name, DBUS_SESSION_BUS_ADDRESS=bus.address, **clock.hurried_variables()).listens()
    send_link(home, link_to("http://127.0.0.1:18789", "t0ken"), DBUS_SESSION_BUS_ADDRESS=bus.address)
    samples = []
    end = time.monotonic() + minutes * 60
    while time.monotonic() < end:
        turn = len(samples) + 1
        home.write("listing.new", listing(turn)).rename(home.file("listing"))
        screen.open_panel(f"in turn {turn}")
        samples.append(sample(program))  # before it is closed, since its contents go soon after
        screen.close_panel()
        if turn % TURNS_TO_A_FLAP == 0:
            gateway.stop()
            gateway.start()
        if turn % TURNS_TO_A_RESTART == 0:
            bus.stop_keyring()
            bus.start_keyring()
        if turn % TURNS_TO_A_LINE == 0:
            print(f"endurance: turn {turn}: {samples[-1]}", file=sys.stderr, flush=True)
    polls = gateway.asked()
    return {"samples": samples, "polls": polls, "end": program.end(within=5)}


def signals():
    """Kilobytes that stay for each change of the keyring that others make, of which the program is told."""
    home = Home()
    home.configure()
    bus = Bus(home)
    bus.start_keyring()
    program = Program(home, DBUS_SESSION_BUS_ADDRESS=bus.address).listens()
    send_link(home, link_to("http://127.0.0.1:18789", "t0ken"), DBUS_SESSION_BUS_ADDRESS=bus.address)
    program.rest()
    change_keyring(bus, SIGNALS)  # what is made once
    before = program.megabytes()
    change_keyring(bus, SIGNALS)
    program.rest()
    return {"kilobytes": (program.megabytes() - before) * 1024 / SIGNALS}


def change_keyring(bus, times):
    for number in range(times):
        subprocess.run(["secret-tool", "store", "--label", "other", "service", "elsewhere"], input=str(number), text=True,
                       env=bus.environment(), check=True)


def report(result, minutes):
    """The section of the page. Early and late are the second and the last fifth of the run."""
    samples = result["samples"]
    fifth = max(1, len(samples) // 5)
    early, late = samples[fifth:2 * fifth], samples[-fifth:]
    days = minutes * SPEED / 60 / 24
    flaps, restarts = len(samples) // TURNS_TO_A_FLAP, len(samples) // TURNS_TO_A_RESTART
    lines = [SECTION, "",
             f"`script/bench endurance` ran for {minutes:g} minutes with all clocks of the program {SPEED} times as fast, which is "
             f"{days * 24:.1f} hours of its life: {result['polls']} questions to the gateway, the panel opened and closed "
             f"{len(samples)} times, {len(samples) * AGENTS_A_TURN} agents come and {len(samples) * AGENTS_A_TURN} gone, "
             f"{flaps} ends of the gateway, {restarts} restarts of the keyring. Early is the second fifth of the run, late the last; "
             "the median of each, of children and descriptors the least.", "",
             "| what | early | late | change |", "|---|---|---|---|"]
    for name in ("MB", "descriptors", "threads", "children"):
        pick = statistics.median if name in ("MB", "threads") else min
        first, last = (pick(sample[name] for sample in part) for part in (early, late))
        change = (last / first - 1) * 100 if first else 0.0
        lines.append(f"| {'memory written to, MB' if name == 'MB' else name} | {first:.4g} | {last:.4g} | {change:+.1f} % |")
    return "\n".join([*lines, "", f"The program ended {result['end']:.1f} s after TERM.", ""])


def signals_report(result):
    return (f"{SIGNALS_SECTION}\n\nOf {SIGNALS} changes that another program made, which the keyring tells everybody on the bus, "
            f"each left {result['kilobytes']:.2f} KB in the program.\n")


def inside(what, *arguments):
    """What the function of that name returns in namespaces of its own."""
    command = [*namespaces(), sys.executable, "-B", __file__, what, *arguments]
    result = subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True).stdout
    return json.loads(result.splitlines()[-1])


def write(section, heading):
    """Puts the section into the page, in place of the one with that heading."""
    print(section, flush=True)
    page = PAGE.read_text() if PAGE.exists() else ""
    parts = [part for part in re.split(r"^(?=## )", page, flags=re.MULTILINE) if not part.startswith(heading + "\n")]
    PAGE.write_text("".join(parts).rstrip() + "\n\n" + section)


def main():
    what = sys.argv[1]
    if what in ("live", "signals"):
        furnish()
        print(json.dumps(live(float(sys.argv[2])) if what == "live" else signals()))
        return
    if float(what) > 0:
        write(report(inside("live", what), float(what)), SECTION)
    write(signals_report(inside("signals")), SIGNALS_SECTION)


main()
