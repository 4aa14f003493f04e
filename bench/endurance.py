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
from world import PREFERENCES, Bus, Gateway, Home, Program, Screen, install_tool, link_to, send_link

SPEED = 40  # beyond that the keyring's deadline of two seconds is shorter than a busy machine's answer
AGENTS_A_TURN = 2
TURNS_TO_A_FLAP, TURNS_TO_A_RESTART = 5, 50
SIGNALS = 500
SECTION = "## Endurance"
PAGE = PROJECT / "docs/reliability.md"


def listing(turn):
    """Fifty agents, of which two are new each turn."""
    first = turn * AGENTS_A_TURN
    return json.dumps({"sessions": [{"key": f"agent:a{i}:main", "agentId": f"a{i}", "model": "atlas"}
                                    for i in range(first, first + 50)]})


def sample(program):
    return {"MB": program.megabytes(), "descriptors": program.descriptors(), "threads": program.threads(),
            "children": len(program.children())}


def live(minutes):
    """The samples, one a turn, and what was done."""
    home = Home()
    home.configure()
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
        screen.close_panel()
        if turn % TURNS_TO_A_FLAP == 0:
            gateway.stop()
            gateway.start()
        if turn % TURNS_TO_A_RESTART == 0:
            bus.stop_keyring()
            bus.start_keyring()
        samples.append(sample(program))
    polls = gateway.asked()
    signals = signals_cost(bus, program)
    took = program.end(within=5)
    return {"samples": samples, "polls": polls, "signals": signals, "end": took}


def signals_cost(bus, program):
    """Kilobytes that stay for each change of a keyring item that others make."""
    time.sleep(2)
    before = program.megabytes()
    for number in range(SIGNALS):
        subprocess.run(["secret-tool", "store", "--label", "other", "service", "elsewhere"], input=str(number), text=True,
                       env=bus.environment(), check=True)
    time.sleep(2)
    return (program.megabytes() - before) * 1024 / SIGNALS


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
        lines.append(f"| {'private memory, MB' if name == 'MB' else name} | {first:.4g} | {last:.4g} | {change:+.1f} % |")
    lines += ["", f"Each of {SIGNALS} changes that another program made in the keyring left {result['signals']:.2f} KB. "
              f"The program ended {result['end']:.1f} s after TERM."]
    return "\n".join(lines) + "\n"


def main():
    minutes = float(sys.argv[1]) if len(sys.argv) > 1 else 60
    if "--inside" in sys.argv:
        furnish()
        print(json.dumps(live(minutes)))
        return
    command = [*namespaces(), sys.executable, "-B", __file__, str(minutes), "--inside"]
    result = subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True).stdout
    section = report(json.loads(result.splitlines()[-1]), minutes)
    print(section)
    page = PAGE.read_text() if PAGE.exists() else ""
    before = re.split(rf"^{SECTION}$", page, flags=re.MULTILINE)[0].rstrip()
    PAGE.write_text(f"{before}\n\n{section}")


main()
