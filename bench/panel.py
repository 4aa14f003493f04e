#!/usr/bin/python3 -B
"""Measures the pearl and the panel: times to the icon and to the first frame, memory, frames, CPU.

Frames are those that Qt Quick itself reports; the clock of a click starts when it is sent.
Usage: bench/panel.py BUILD-DIRECTORY
"""

import contextlib
import json
import os
import pathlib
import re
import select
import signal
import statistics
import subprocess
import sys
import tempfile
import time

from Xlib import X, XK, display
from Xlib.ext import xtest

import programs

STARTS = 10
OPENINGS = 10
CLOSED_SECONDS = 125  # past the two minutes after which a closed panel has given back what it held
AGENTS = 200
FRAME = re.compile(rb"Frame rendered with '\w+' renderloop in (\d+)ms")
# The times are judged beside a bare program that does as little as can be done, in the same run: the
# machine on which 40 and 60 ms were set as targets took 19 and 30 ms for it.
TARGETS = {
    "exec to icon, of the bare icon's": 40 / 19, "first opening, of the bare window's": 60 / 30,
    "later openings, median ms": 30,
    "PSS MB, panel never opened": 1.3 * 26, "PSS MB, panel open": 1.4 * 58,
    "frames while closed": 0, "frames while nothing changes": 0, "agents tab at work, % of a core": 10,
    "200 agents, one changes: longest frame ms": 16,
}


class Screen:
    """An X server with a window manager and a tray host."""

    def __init__(self, stack):
        reading, writing = os.pipe()
        stack.enter_context(running(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x800x24",
                                     "-noreset"], pass_fds=[writing]))
        name = ":" + os.read(reading, 16).decode().strip()
        os.environ["DISPLAY"] = name
        self.display = display.Display(name)
        self.root = self.display.screen().root
        self.root.change_attributes(event_mask=X.SubstructureNotifyMask)
        stack.enter_context(running(["openbox"]))
        stack.enter_context(running(["trayer", "--edge", "top", "--align", "right", "--height", "24",
                                     "--widthtype", "request", "--SetDockType", "true"]))
        self.wait_for(lambda event: event.type == X.MapNotify)

    def wait_for(self, fits, seconds=20):
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            if not self.display.pending_events():
                select.select([self.display], [], [], 0.1)
                continue
            event = self.display.next_event()
            if fits(event):
                return event
        raise SystemExit("panel: waited in vain for a window")

    def forget_events(self):
        self.display.sync()
        while self.display.pending_events():
            self.display.next_event()

    def click(self, x, y):
        xtest.fake_input(self.display, X.MotionNotify, x=x, y=y)
        xtest.fake_input(self.display, X.ButtonPress, 1)
        xtest.fake_input(self.display, X.ButtonRelease, 1)
        self.display.flush()

    def press_escape(self):
        key = self.display.keysym_to_keycode(XK.XK_Escape)
        xtest.fake_input(self.display, X.KeyPress, key)
        xtest.fake_input(self.display, X.KeyRelease, key)
        self.display.flush()


class Program:
    """A program with a tray icon, and the frames that it draws."""

    def __init__(self, program, home, screen):
        screen.forget_events()
        began = time.perf_counter()
        self.process = subprocess.Popen(
            [program], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, env={
                "HOME": str(home), "XDG_RUNTIME_DIR": str(home / ".run"), "PATH": "/usr/bin:/bin",
                "LANG": "C.UTF-8", "DISPLAY": os.environ["DISPLAY"], "DBUS_SESSION_BUS_ADDRESS": "disabled:",
                "QT_LOGGING_RULES": "qt.scenegraph.time.renderloop.debug=true",
            })
        self.pid = self.process.pid
        os.set_blocking(self.process.stderr.fileno(), False)
        # The icon is there when the tray host has taken its window.
        event = screen.wait_for(lambda event: event.type == X.ReparentNotify and event.parent != screen.root)
        self.icon_ms = (time.perf_counter() - began) * 1000
        self.icon = event.window

    def frames(self, seconds, first=False):
        """The frames drawn within the time, in milliseconds each; or only until the first."""
        found = []
        end = time.monotonic() + seconds
        while (left := end - time.monotonic()) > 0:
            if not select.select([self.process.stderr], [], [], left)[0]:
                break
            output = self.process.stderr.read()
            if not output:
                raise SystemExit("panel: the program ended")
            found += [int(ms) for ms in FRAME.findall(output)]
            if first and found:
                break
        return found

    def end(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.communicate()


@contextlib.contextmanager
def running(command, **options):
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **options)
    try:
        yield process
    finally:
        process.terminate()
        process.wait()


def place_of(window, screen):
    corner = window.translate_coords(screen.root, 0, 0)
    size = window.get_geometry()
    return -corner.x + size.width // 2, -corner.y + size.height // 2


def opening_ms(program, screen, icon):
    program.frames(0.3)
    began = time.perf_counter()
    screen.click(*icon)
    if not program.frames(10, first=True):
        raise SystemExit("panel: it draws nothing")
    elapsed = (time.perf_counter() - began) * 1000
    time.sleep(0.6)  # slower than a double click
    return elapsed


def close(program, screen):
    screen.press_escape()
    program.frames(0.5)


def furnish(home):
    """Makes the machine look set up, so that the panel opens without its setup sheet."""
    tools = [home / "bin/node", home / ".npm-global/bin/duskrell", home / ".ostrelle/data/models/kokoro-v1.0.onnx"]
    for tool in tools:
        tool.parent.mkdir(parents=True, exist_ok=True)
        tool.write_text("#!/bin/sh\nexit 1\n")
        tool.chmod(0o755)
    python = home / ".ostrelle/venv/bin/python"
    python.parent.mkdir(parents=True)
    python.symlink_to("/usr/bin/python3")
    (home / ".bash_profile").write_text('PATH="$HOME/bin:$PATH"\n')


def write_agents(home, count, status, changed=None):
    agents = {f"agent-{i}": {"status": status, "activity": f"step {i}", "model": "m-1", "progress": i % 100}
              for i in range(count)}
    if changed is not None:
        agents["agent-1"]["activity"] = f"changed {changed}"
    (home / ".ostrelle/ostrelle-agent-tracker.json").write_text(json.dumps({"agents": agents}))


def report(name, value):
    print(f"{name:<46}{value:8.1f}{programs.verdict(value, TARGETS.get(name))}", flush=True)


def measure_times(build, home, screen):
    ours, bare_tray, bare_panel = (build / name for name in ("ostrelle", "bench-bare-tray", "bench-bare-panel"))
    icons = {ours: [], bare_tray: []}
    openings = {ours: [], bare_panel: []}
    for round_ in range(STARTS + 1):  # the first warms the page cache and creates the files
        for path in (ours, bare_tray, bare_panel):
            program = Program(path, home, screen)
            program.frames(1)
            if round_ and path in icons:
                icons[path].append(program.icon_ms)
            if path in openings:
                opening = opening_ms(program, screen, place_of(program.icon, screen))
                openings[path] += [opening] if round_ else []
            program.end()
    for what, times, bare in (("exec to icon", icons, bare_tray), ("first opening", openings, bare_panel)):
        own, floor = statistics.median(times[ours]), statistics.median(times[bare])
        report(f"{what}, median ms", own)
        report(f"  of a bare {'icon' if bare == bare_tray else 'window'}", floor)
        report(f"{what}, of the bare {'icon' if bare == bare_tray else 'window'}'s", own / floor)


def measure_panel(build, home, screen):
    program = Program(build / "ostrelle", home, screen)
    program.frames(3)
    icon = place_of(program.icon, screen)
    unopened = programs.proportional_set_size(program.pid)
    report("PSS MB, panel never opened", unopened)
    opening_ms(program, screen, icon)
    close(program, screen)
    later = []
    for _ in range(OPENINGS):
        later.append(opening_ms(program, screen, icon))
        close(program, screen)
    report("later openings, median ms", statistics.median(later))
    opening_ms(program, screen, icon)
    program.frames(4)
    report("PSS MB, panel open", programs.proportional_set_size(program.pid))
    report("frames while nothing changes", len(program.frames(20)))

    write_agents(home, 6, "active")
    x, y = panel_corner(screen)
    screen.click(x + 38 + 2 * 74, y + 35)
    program.frames(6)
    before = programs.cpu_milliseconds(program.pid)
    frames = program.frames(20)
    if not frames:
        raise SystemExit("panel: working agents do not move; is something in front of them?")
    report("agents tab at work, % of a core", (programs.cpu_milliseconds(program.pid) - before) / 200)
    report("  frames a second", len(frames) / 20)
    write_agents(home, AGENTS, "idle")
    program.frames(6)
    longest = 0
    for change in range(4):
        write_agents(home, AGENTS, "idle", change)
        longest = max([longest, *program.frames(6)])
    report("200 agents, one changes: longest frame ms", longest)

    close(program, screen)
    report("frames while closed", len(program.frames(CLOSED_SECONDS)))
    closed = programs.proportional_set_size(program.pid)
    report("PSS MB, two minutes after closing", closed)
    report("  above the level before opening, %", (closed / unopened - 1) * 100)
    program.end()


def panel_corner(screen):
    for window in screen.root.query_tree().children:
        size = window.get_geometry()
        if (size.width, size.height) == (380, 700):
            return size.x, size.y
    raise SystemExit("panel: it is not there")


def main():
    build = pathlib.Path(sys.argv[1]).resolve()
    with tempfile.TemporaryDirectory() as directory, contextlib.ExitStack() as stack:
        home = programs.make_home(directory)
        furnish(home)
        screen = Screen(stack)
        measure_times(build, home, screen)
        measure_panel(build, home, screen)


main()
