"""The desktop"""

import json
import re
import socket
import subprocess
import threading
import time

from row import require, row
from session import Bus, Screen
from world import (DOCUMENTS, MOMENT, PREFERENCES, Home, Program, ctl, document, freeze, get, install_agent, install_tool,
                   is_alive, link_to, must_serve, numbers, send_link, sessions, thaw, wait_for)

GATEWAY = "http://127.0.0.9:1"


def desk(tray=True, bus=True):
    home = Home()
    home.configure()
    home.write(PREFERENCES, "[General]\nsetupWasShown=true\nprojectTrackingEnabled=true\n")
    screen = Screen(home)
    if tray:
        screen.start_tray_host()
    return home, screen, Bus(home) if bus else None


def start(home, screen, bus):
    address = bus.address if bus else "disabled:"
    return Program(home, DISPLAY=screen.name, DBUS_SESSION_BUS_ADDRESS=address).listens()


@row(seconds=60, quick=True)
def tray_host_restarts():
    """The tray host ends and is started again, five times.

    The icon is back each time, and a click opens the panel.
    """
    home, screen, bus = desk()
    program = start(home, screen, bus)
    screen.wait_for_icon("at the start")
    for turn in range(5):
        screen.end_tray_host()
        require(wait_for(lambda: not screen.icon(), 5, 0.2), "The icon stays without a host")
        screen.start_tray_host()
        screen.wait_for_icon(f"after restart {turn + 1}")
    screen.open_panel("after five restarts")
    return f"The icon was back five times; it ended in {program.end():.1f} s."


@row(seconds=60, quick=True)
def tray_host_comes_late():
    """There is no tray host at the start; it comes 5 s later.

    The panel is open as a window at first; then there is an icon.
    """
    home, screen, bus = desk(tray=False)
    program = start(home, screen, bus)
    require(wait_for(screen.panel, 20, 0.3), "No panel without a tray")
    time.sleep(5)
    screen.start_tray_host()
    screen.wait_for_icon("after the host came")
    return f"The panel, then the icon; it ended in {program.end():.1f} s."


@row(seconds=60)
def panel_many_times():
    """The panel is opened and closed 20 times.

    Of descriptors, threads and children there are at most two more than after the second time; memory grows by 10 MB at most.
    """
    home, screen, bus = desk()
    program = start(home, screen, bus)
    for _ in range(2):
        screen.open_panel("at first")
        screen.close_panel()
    program.rest()
    calm, memory = program.open_things(), program.megabytes()
    for turn in range(20):
        screen.open_panel(f"for the {turn + 1}th time")
        screen.close_panel()
    told = program.must_come_back(calm)
    grown = program.megabytes() - memory
    require(grown < 10, f"{grown:+.1f} MB")
    return f"{told}; {grown:+.1f} MB. It ended in {program.end():.1f} s."


@row(seconds=60, quick=True)
def frozen_bus_at_the_start():
    """The session bus is stopped (STOP) before the program starts on a desktop.

    It listens and serves; TERM ends it within a moment.
    """
    home, screen, bus = desk()
    freeze(bus.process)
    program = start(home, screen, bus)
    time.sleep(3)
    must_serve("with a frozen bus")
    send_link(home, link_to(GATEWAY), DBUS_SESSION_BUS_ADDRESS=bus.address)
    require(wait_for(lambda: home.config()["gateway"]["url"] == GATEWAY, 15), "A link is not taken")
    return f"It served and took a link; it ended in {program.end():.1f} s."


@row(seconds=80)
def frozen_bus_and_the_panel():
    """The session bus is stopped while the program runs; then the icon is clicked for the first time.

    The main thread goes on: a link is taken meanwhile, and TERM ends the program within a moment.
    """
    home, screen, bus = desk()
    program = start(home, screen, bus)
    screen.wait_for_icon("at the start")
    freeze(bus.process)
    screen.click_icon()
    time.sleep(3)
    send_link(home, link_to(GATEWAY), DBUS_SESSION_BUS_ADDRESS=bus.address)
    require(wait_for(lambda: home.config()["gateway"]["url"] == GATEWAY, 10), "The main thread does not take a link")
    opened = screen.panel() is not None
    took = program.end()
    return f"A link was taken; the panel was {'open' if opened else 'waiting for the bus'}; it ended in {took:.1f} s."


@row(seconds=80)
def bus_thaws():
    """The session bus is stopped, the icon is clicked, and the bus goes on after 10 s.

    The panel is open within 10 s of that.
    """
    home, screen, bus = desk()
    program = start(home, screen, bus)
    screen.wait_for_icon("at the start")
    freeze(bus.process)
    screen.click_icon()
    time.sleep(10)
    thaw(bus.process)
    began = time.monotonic()
    require(wait_for(screen.panel, 10, 0.2), "The panel does not open")
    took = time.monotonic() - began
    return f"Open {took:.1f} s after the bus went on; it ended in {program.end():.1f} s."


@row(seconds=90)
def bus_dies_and_returns():
    """The session bus is killed with everything on it; after 5 s there is a new one at the same address, with a keyring.

    The program goes on; a token that comes then is in the new keyring within half a minute, and the icon is there.
    """
    home, screen, bus = desk()
    bus.start_keyring()
    program = start(home, screen, bus)
    send_link(home, link_to(GATEWAY, "before"), DBUS_SESSION_BUS_ADDRESS=bus.address)
    require(wait_for(lambda: bus.token(GATEWAY) == "before"), "The keyring does not have the first token")
    askers = [threading.Thread(target=get, args=("/history",)) for _ in range(12)]  # all at once, for the token
    for asker in askers:
        asker.start()
    for asker in askers:
        asker.join()
    bus.stop()
    bus.keyring.kill()
    bus.keyring.wait()
    time.sleep(5)
    program.must_run("after the bus died")
    must_serve("without a bus")
    bus.start()
    bus.start_keyring()
    send_link(home, link_to(GATEWAY, "after"), DBUS_SESSION_BUS_ADDRESS=bus.address)
    began = time.monotonic()
    require(wait_for(lambda: bus.token(GATEWAY) == "after", 30, 0.3), "The new keyring does not get the token")
    took = time.monotonic() - began
    screen.wait_for_icon("after the bus came back", 10)
    return f"In the new keyring after {took:.1f} s, the icon was there; it ended in {program.end():.1f} s."


@row(seconds=90)
def bus_returns_as_another():
    """The same with an address that names the bus's identity, as many sessions have it, and with a tray host on the bus: the
    new bus at the same place is another one.

    A token that comes then is in the new keyring within half a minute, and the icon is with the new tray host.
    """
    home, screen, bus = desk(tray=False)
    icons = bus.start_tray_host()
    bus.start_keyring()
    address = bus.full_address
    program = Program(home, DISPLAY=screen.name, DBUS_SESSION_BUS_ADDRESS=address).listens()
    require(wait_for(icons.read_text), "No icon at the start")
    send_link(home, link_to(GATEWAY, "before"), DBUS_SESSION_BUS_ADDRESS=address)
    require(wait_for(lambda: bus.token(GATEWAY) == "before"), "The keyring does not have the first token")
    bus.stop()
    time.sleep(5)
    bus.start()
    require(bus.full_address != address, "It is the same bus")
    bus.start_keyring()
    icons = bus.start_tray_host()
    send_link(home, link_to(GATEWAY, "after"), DBUS_SESSION_BUS_ADDRESS=address)
    began = time.monotonic()
    require(wait_for(lambda: bus.token(GATEWAY) == "after", 30, 0.3), "The new keyring does not get the token")
    require(wait_for(icons.read_text, 30, 0.3), "The icon does not come back")
    require("(22, 22, " in bus.icon_has(icons, "IconPixmap"), "The icon has no picture")
    took = time.monotonic() - began
    return f"Both were there after {took:.1f} s; it ended in {program.end():.1f} s."


@row(seconds=40, quick=True)
def bus_that_says_nothing():
    """At the bus's address somebody listens who takes connections and says nothing.

    It listens and serves; TERM ends it within a moment.
    """
    home, screen, _ = desk(bus=False)
    path = home.runtime / "mute"
    mute = socket.socket(socket.AF_UNIX)
    mute.bind(str(path))
    mute.listen(64)
    program = Program(home, DISPLAY=screen.name, DBUS_SESSION_BUS_ADDRESS=f"unix:path={path}")
    program.listens()
    must_serve("with a mute bus")
    time.sleep(2)
    return f"It served; it ended in {program.end():.1f} s."


@row(seconds=40)
def no_bus_of_ours():
    """There is a screen and no bus address, and a library would start a bus of its own.

    No dbus-launch and no dbus-daemon is started by the program; the panel opens all the same.
    """
    home, screen, _ = desk(bus=False)
    log = home.runtime / "executed"
    program = Program(home, under=["strace", "-D", "-f", "-qq", "-o", str(log), "-e", "trace=execve"], DISPLAY=screen.name,
                      DBUS_SESSION_BUS_ADDRESS=None)
    program.listens()
    screen.open_panel("without a bus")
    time.sleep(2)
    started = [line for line in log.read_text(errors="replace").splitlines() if "dbus-" in line]
    require(not started, f"Started: {(started or [''])[0]}")
    program.end(within=5)
    return "Nothing of the kind was started; the panel opened."


@row(seconds=60)
def display_goes():
    """The X server is killed while the panel is open and a voice agent runs.

    The program ends, whatever it has started ends with it, and the next start comes up and says that there is no display.
    """
    home, screen, bus = desk()
    config = home.config()
    home.configure(voice=True)
    home.write(PREFERENCES, "[General]\nsetupWasShown=true\nprojectTrackingEnabled=true\nautoStartVoice=true\n")
    install_agent(home, "exec sleep 1000")
    program = start(home, screen, bus)
    screen.open_panel("before the display goes")
    agent = wait_for(lambda: numbers(home))[0]
    screen.server.kill()
    began = time.monotonic()
    require(wait_for(lambda: not program.is_running(), 10), "The program goes on without its display")
    took = time.monotonic() - began
    require(wait_for(lambda: not is_alive(agent), 4), "The voice agent lives on")
    require(config is not None and home.config() is not None, "config.json is torn")
    program = Program(home, DISPLAY=screen.name).listens()
    status, told = ctl(home, "panel")
    require(status != 0 and "without a display" in told, f"Asked for the panel, the next start said: {told}")
    program.end()
    return f"It ended {took:.1f} s after the display, and its voice agent; the next start came up."


@row(seconds=60)
def frozen_display():
    """The X server is stopped (STOP) while the panel is open, and TERM comes.

    The status server answers meanwhile; the program is gone within a moment of TERM.
    """
    home, screen, bus = desk()
    program = start(home, screen, bus)
    screen.open_panel("at first")
    freeze(screen.server)
    time.sleep(2)
    must_serve("with a frozen display")
    return f"Gone after {program.end():.1f} s."


@row(seconds=60)
def tray_host_without_a_place():
    """A tray host on the bus does not say where the icon is, as most do not. It is clicked at the screen's edge, and clicked
    twice; later, with the pointer elsewhere, a terminal asks for the panel. Then the menu opens at another place of the edge
    and, as some hosts have it, with the pointer anywhere, and "Open Ostrelle" is chosen.

    The icon has a picture and says the state in words. The panel opens each time, below where the icon was seen last.
    """
    home, screen, bus = desk(tray=False)
    icons = bus.start_tray_host()
    program = start(home, screen, bus)
    require(wait_for(icons.read_text), "No icon is registered")
    for name, part in (("ToolTip", "Gateway offline, voice: Offline"), ("IconPixmap", "(22, 22, ")):
        require(part in bus.icon_has(icons, name), f"{name}: {bus.icon_has(icons, name)[:100]}")

    def click(x, times=1):
        screen.run("xdotool", "mousemove", str(x), "2")
        clicks = [bus.asks(icons, "/StatusNotifierItem", "org.kde.StatusNotifierItem.Activate", str(x), "2")
                  for _ in range(times)]
        require([each.wait() for each in clicks] == [0] * times, "A click fails")

    def menu(method, *arguments):
        return bus.asks(icons, "/MenuBar", "com.canonical.dbusmenu." + method, *arguments).communicate(timeout=10)[0]

    def opened():
        place = wait_for(screen.panel, 10, 0.2)
        require(place, "No panel")
        screen.close_panel()
        return place

    click(700)
    places = [opened()]
    click(700, times=2)
    places.append(opened())
    screen.run("xdotool", "mousemove", "300", "600")
    ctl(home, "panel")
    places.append(opened())
    require(places == [(510, places[0][1], 380, 700)] * 3 and places[0][1] < 60, f"At {places}")
    for place in (("400", "2"), ("300", "600")):
        screen.run("xdotool", "mousemove", *place)
        menu("AboutToShow", "0")
    first = re.search(r"\((\d+), \{[^{}]*'Open Ostrelle'", menu("GetLayout", "0", "--", "-1", "[]"))
    menu("Event", first[1], "clicked", "<0>", "0")
    chosen = opened()
    require(chosen[:2] == (210, places[0][1]), f"At {chosen} where the menu was")
    program.end()
    return f"At {places[0][0]}, {places[0][1]} three times, and at {chosen[0]} where the menu was."


@row(seconds=90)
def tray_host_hangs_at_the_start():
    """A tray host on the bus is stopped (STOP) before the program starts, for longer than the bus waits for an answer, and
    goes on.

    The program serves meanwhile; the icon is there within 15 s.
    """
    home, screen, bus = desk(tray=False)
    icons = bus.start_tray_host()
    freeze(bus.host)
    program = start(home, screen, bus)
    time.sleep(27)
    must_serve("with a hung tray host")
    thaw(bus.host)
    began = time.monotonic()
    require(wait_for(icons.read_text, 15, 0.3), "No icon is registered")
    return f"Registered {time.monotonic() - began:.0f} s after it went on; it ended in {program.end():.1f} s."


@row(seconds=60)
def tray_of_plasma_stays_away():
    """The session is Plasma's, which begins with an X11 tray before the one on the bus comes; here that one never comes.

    For the first seconds there is neither an icon nor a panel; then the icon is in the X11 tray.
    """
    home, screen, bus = desk()
    program = Program(home, DISPLAY=screen.name, DBUS_SESSION_BUS_ADDRESS=bus.address, XDG_CURRENT_DESKTOP="KDE").listens()
    require(not wait_for(lambda: screen.icon() or screen.panel(), 5, 0.3), "It did not wait")
    screen.wait_for_icon("at last")
    require(not screen.panel(), "The panel is open")
    return f"The icon came; it ended in {program.end():.1f} s."


@row(seconds=60)
def very_first_start():
    """The program starts for the first time, without a configuration, beside a tray; it is ended and started again.

    The first time the panel opens by itself, with the setup; the second time there is only the icon.
    """
    home = Home()
    screen = Screen(home)
    screen.start_tray_host()
    program = start(home, screen, None)
    require(wait_for(screen.panel, 20, 0.3), "No panel at the very first start")
    program.end()
    home.file(".ostrelle/config.json").unlink(missing_ok=True)
    program = start(home, screen, None)
    screen.wait_for_icon("at the second start")
    require(not wait_for(screen.panel, 4, 0.3), "It opens again")
    return f"It opened once; it ended in {program.end():.1f} s."


@row(seconds=60)
def frozen_tray_host():
    """The tray host is stopped (STOP); a link comes, and TERM.

    The program serves, takes the link, and is gone within a moment.
    """
    home, screen, bus = desk()
    program = start(home, screen, bus)
    screen.wait_for_icon("at the start")
    freeze(screen.host)
    send_link(home, link_to(GATEWAY), DBUS_SESSION_BUS_ADDRESS=bus.address)
    require(wait_for(lambda: home.config()["gateway"]["url"] == GATEWAY, 10), "The link is not taken")
    must_serve("with a frozen tray host")
    return f"The link was taken; it ended in {program.end():.1f} s."


@row(seconds=90)
def crowded_panel():
    """There are 20,000 agents, 20,000 projects with long texts and five workstreams each, and 20,000 jobs; the panel is open at
    each of its tabs for 4 s.

    The main thread answers within a moment meanwhile, and the program ends within a moment.
    """
    home, screen, bus = desk()
    crowd = range(20_000)
    text = "x" * 300
    streams = [{"id": str(i), "name": text, "status": "done", "progress": 3} for i in range(5)]
    listing = home.write("sessions", sessions(len(crowd)))
    jobs = home.write("jobs", json.dumps({"jobs": [
        {"id": f"j{i}", "name": text, "enabled": True, "schedule": {"kind": "cron", "expr": "* * * * *"}} for i in crowd]}))
    install_tool("duskrell", f"case \"$1\" in sessions) cat {listing} ;; cron) cat {jobs} ;; esac")
    home.write(DOCUMENTS["projects"], json.dumps({"version": 1, "updated": "now", "projects": [
        {"id": f"p{i}", "name": text, "description": text, "status": "active", "progress": 40, "workstreams": streams} for i in crowd]}))
    program = start(home, screen, bus)
    require(wait_for(lambda: len((document("cron") or {}).get("jobs", [])) == len(crowd)), "The jobs do not come")
    before = program.megabytes()
    screen.open_panel("at first")
    left, top, _, _ = screen.panel()

    def click(x, y):
        screen.run("xdotool", "mousemove", str(left + x), str(top + y), "click", "1")

    click(176, 670)  # the setup's "Skip"
    time.sleep(1)
    slowest = most = 0
    for tab in range(5):
        click(44 + 73 * tab, 30)
        end = time.monotonic() + 4
        while time.monotonic() < end:
            began = time.monotonic()
            status, told = ctl(home, "gateways")
            require(status == 0, f"At tab {tab} it is told after {time.monotonic() - began:.1f} s: {told}")
            slowest = max(slowest, time.monotonic() - began)
            most = max(most, program.megabytes() - before)
    require(most > 50, f"{most:+.0f} MB: the panel does not show them")
    after = program.megabytes() - before
    took = program.end()
    require(slowest < MOMENT, f"An answer took {slowest:.1f} s")
    return f"An answer took {slowest:.1f} s at most; {most:+.0f} MB at most, {after:+.0f} MB at the last tab; it ended in {took:.1f} s."
