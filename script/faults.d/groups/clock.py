"""Time"""

import os
import threading
import time
from datetime import datetime

from faketime import Clock
from groups.voice import home_with_agent
from row import require, row
from session import Bus, Screen
from world import (DOCUMENTS, PREFERENCES, SYNC, Gateway, Home, Program, document, freeze, get, install_sessions, install_tool,
                   is_alive, link_to, must_serve, numbers, send_link, thaw, wait_for)

DAY = 24 * 3600
GATEWAY = "http://127.0.0.1:18789"
STOP = int(os.environ.get("STOP_SECONDS", 20))


def shifted(seconds):
    home = Home()
    home.configure()
    home.play(record=True)
    install_sessions()
    gateway = Gateway(home)
    clock = Clock(home)
    program = Program(home, **clock.variables()).listens()
    require(wait_for(lambda: "a0" in (document("status") or {}).get("agents", {})), "No document")
    written = home.file(DOCUMENTS["status"]).stat().st_mtime_ns
    clock.shift(seconds)
    polled = gateway.must_be_asked("after the clock was set", 12)
    must_serve("after the clock was set")
    began = time.monotonic()
    require(wait_for(lambda: home.file(DOCUMENTS["status"]).stat().st_mtime_ns != written, SYNC + 8, 0.5), "No further pass")
    took = time.monotonic() - began
    time.sleep(1)
    told = datetime.fromisoformat(document("cron")["updated"]).timestamp() - time.time()
    require(abs(told - seconds) < 60, f"The document is {told:.0f} s off instead of {seconds} s")
    gateway.must_be_asked("a second time", 12)
    return f"Asked {polled:.1f} s and the next pass {took:.0f} s later; it ended in {program.end():.1f} s."


@row(seconds=90)
def a_day_forward():
    """The clock is set a day forward while the program runs.

    Polls and passes go on at their pace, the status server answers, and the documents bear the new time.
    """
    return shifted(DAY)


@row(seconds=90)
def a_day_back():
    """The clock is set a day back while the program runs.

    Polls and passes go on at their pace, the status server answers, and the documents bear the new time.
    """
    return shifted(-DAY)


@row(seconds=60)
def clock_of_the_epoch():
    """The clock stands at the beginning of 1970 at the start, as on a machine whose battery is empty.

    It starts, writes its documents and serves.
    """
    home = Home()
    home.configure()
    install_sessions()
    clock = Clock(home)
    clock.shift(-int(time.time()) + 60)
    program = Program(home, **clock.variables()).listens()
    require(wait_for(lambda: "a0" in (document("status") or {}).get("agents", {})), "No document")
    return f"It served the new document; it ended in {program.end():.1f} s."


@row(seconds=100 + STOP)
def stopped_for_an_hour():
    """The program is stopped (STOP) with its panel open and a voice agent that prints; its clock goes an hour forward while 20 s
    pass (`STOP_SECONDS=3600 script/faults stopped-for` stops it for the whole hour); then it goes on (CONT).

    It answers at once, polls go on, a token gets into the keyring, panel, icon and agent are there, and descriptors are what
    they were.
    """
    home = home_with_agent("exec sh -c 'while :; do date; sleep 0.1; done'")
    home.write(PREFERENCES, "[General]\nautoStartVoice=true\nprojectTrackingEnabled=true\nsetupWasShown=true\n")
    home.play(record=True)
    install_tool("duskrell", "exit 1")
    screen, bus = Screen(home), Bus(home)
    screen.start_tray_host()
    bus.start_keyring()
    gateway = Gateway(home)
    clock = Clock(home)
    session = {**clock.variables(), "DISPLAY": screen.name, "DBUS_SESSION_BUS_ADDRESS": bus.address}
    program = Program(home, **session).listens()
    gateway.must_be_asked("at the start", 12)
    send_link(home, link_to(GATEWAY, "before"), **session)
    screen.open_panel("at first")
    require(wait_for(lambda: numbers(home)), "The agent does not start")
    calm = program.rest()
    freeze(program.process)
    clock.shift(3600 - STOP)
    time.sleep(STOP)
    thaw(program.process)
    took = must_serve("after an hour's stop")
    polled = gateway.must_be_asked("after an hour's stop", 12)
    send_link(home, link_to(GATEWAY, "after"), **session)
    require(wait_for(lambda: bus.token(GATEWAY) == "after"), "The keyring does not get a token")
    screen.close_panel()
    screen.open_panel("after an hour's stop")
    require(list(map(is_alive, numbers(home))) == [True], f"{len(numbers(home))} agents were started, or it is gone")
    after = program.calm_descriptors(calm + 3)
    require(after <= calm + 3, f"{after} descriptors, {calm} before")
    return (f"Stopped for {STOP} s. /health took {took * 1000:.0f} ms, the gateway was asked after {polled:.1f} s; "
            f"{after} descriptors, {calm} before; it ended in {program.end():.1f} s.")


@row(seconds=60)
def clients_of_a_stopped_program():
    """The program is stopped for 15 s; 300 clients ask meanwhile; then it goes on.

    All who still wait are answered, and the next is answered at once.
    """
    home = Home()
    home.configure()
    install_tool("duskrell", "exit 1")
    home.write(DOCUMENTS["status"], '{"agents":{}}')
    program = Program(home).listens()
    require(document("status"), "No document")
    freeze(program.process)
    answers = []
    threads = [threading.Thread(target=lambda: answers.append(get("/status", seconds=30)[0])) for _ in range(300)]
    for thread in threads:
        thread.start()
    time.sleep(15)
    thaw(program.process)
    for thread in threads:
        thread.join()
    require(answers.count(200) == 300, f"{answers.count(200)} of 300 were answered")
    took = must_serve("afterwards")
    program.end()
    return f"All 300 were answered; the next one took {took * 1000:.0f} ms."


@row(seconds=40)
def files_from_the_future():
    """The documents, the preferences and the PID file bear the time of next year.

    They are read and written as ever.
    """
    home = Home()
    home.configure()
    home.write(DOCUMENTS["status"], '{"agents":{"old":{}}}')
    home.write(PREFERENCES, "[General]\nagents.customName.main=Ada\n")
    home.write(".ostrelle/voice-agent.pid", "999999")
    for name in (DOCUMENTS["status"], PREFERENCES, ".ostrelle/voice-agent.pid", ".ostrelle/config.json"):
        os.utime(home.file(name), (time.time() + 365 * DAY,) * 2)
    install_sessions()
    program = Program(home).listens()
    require(wait_for(lambda: "a0" in (document("status") or {}).get("agents", {})), "No new document")
    require(wait_for(lambda: b"projectTrackingEnabled" in home.read(PREFERENCES)), "The preferences are not written")
    require(b"Ada" in home.read(PREFERENCES), "A preference is lost")
    return f"Read and written; it ended in {program.end():.1f} s."
