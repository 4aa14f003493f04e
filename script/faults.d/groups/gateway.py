"""Gateway and tools"""

import json
import os
import socket
import time

from row import require, row
from session import Bus
from world import (DOCUMENTS, GATEWAY_PORT, MOMENT, SYNC, TOOLS, Gateway, Home, Program, ctl, document, install_gateway_tool,
                   install_sessions, install_tool, is_alive, must_serve, send_link, sessions, spawn, wait_for)

POLL = 3  # seconds between two questions to the gateway
LONGEST_QUESTION = 60  # seconds until one without an answer is given up
PATIENCE_FOR_POLL = 3 * POLL + 2


def with_gateway():
    home = Home()
    home.configure()
    install_tool("duskrell", "exit 1")
    home.play(record=True)
    gateway = Gateway(home)
    program = Program(home).listens()
    gateway.must_be_asked("at the start", PATIENCE_FOR_POLL)
    return home, gateway, program


def gateway_row(mode, seconds=15, most_megabytes=10):
    """The service misbehaves for a while, then answers again; returns what was seen."""
    home, gateway, program = with_gateway()
    calm, memory = program.rest(), program.megabytes()
    home.play(record=True, service=mode)
    worst = most = 0
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        worst = max(worst, must_serve(f"while the gateway is in the mode {mode}"))
        most = max(most, program.megabytes())
        time.sleep(0.3)
    require(most - memory < most_megabytes, f"{most - memory:.0f} MB more")
    home.play(record=True)
    took = gateway.must_be_asked("after it answers again", PATIENCE_FOR_POLL)
    gateway.must_be_asked("a second time", PATIENCE_FOR_POLL)
    after = program.calm_descriptors(calm + 3, LONGEST_QUESTION + 5)
    require(after <= calm + 3, f"{after} descriptors afterwards, {calm} before")
    program.end()
    return f"{most - memory:+.1f} MB at most; asked again {took:.1f} s after it answered; {after} descriptors, {calm} before."


@row(seconds=130)
def silent_gateway():
    """The gateway takes requests and never answers, for 15 s.

    Polls go on once it answers; memory and descriptors come back.
    """
    return gateway_row("silent")


@row(seconds=130)
def trickling_gateway():
    """The gateway answers a byte at a time, for 15 s.

    Polls go on once it answers; memory and descriptors come back.
    """
    return gateway_row("trickle")


@row(seconds=90, quick=True)
def flooding_gateway():
    """The gateway answers with 100 MB each time, for 15 s.

    Memory stays within 10 MB; polls go on once it answers.
    """
    return gateway_row("flood")


@row(seconds=130)
def endless_headers():
    """The gateway's headers never end, for 15 s.

    Memory stays within 10 MB; polls go on once it answers.
    """
    return gateway_row("endless-headers")


@row(seconds=90)
def cutting_gateway():
    """The gateway cuts each answer in the middle, for 15 s.

    Polls go on; memory and descriptors come back.
    """
    return gateway_row("cut")


@row(seconds=90)
def deep_answers():
    """The gateway's answers are JSON of extreme depth, for 8 s.

    Polls go on; memory and descriptors come back.
    """
    return gateway_row("deep", 8)


@row(seconds=120)
def flapping_gateway():
    """The gateway is killed and started 20 times, at once each time.

    Polls go on after the last start; of descriptors, threads and children there are at most three more than before.
    """
    home, gateway, program = with_gateway()
    program.rest()
    calm = program.open_things()
    for _ in range(20):
        gateway.stop()
        time.sleep(0.5)
        gateway.start()
        time.sleep(0.5)
    took = gateway.must_be_asked("after the last start", PATIENCE_FOR_POLL)
    told = program.must_come_back(calm, 3)
    program.end()
    return f"Asked {took:.1f} s after the last start; {told}."


@row(seconds=60)
def replaced_gateway():
    """Another program takes the gateway's port: it takes connections and sends noise; then the gateway is back.

    Polls go on once it is back, and descriptors are what they were.
    """
    home, gateway, program = with_gateway()
    calm = program.rest()
    gateway.stop()
    noise = socket.create_server(("127.0.0.1", GATEWAY_PORT))
    noise.settimeout(8)
    end = time.monotonic() + 8
    taken = 0
    while time.monotonic() < end:
        try:
            client, _ = noise.accept()
        except TimeoutError:
            break
        client.sendall(os.urandom(1000))
        client.close()
        taken += 1
    require(taken, "Nobody asked the other program")
    noise.close()
    gateway.start()
    took = gateway.must_be_asked("after it came back", PATIENCE_FOR_POLL)
    after = program.calm_descriptors(calm + 3, 15)
    require(after <= calm + 3, f"{after} descriptors, {calm} before")
    program.end()
    return f"{taken} connections got noise; asked {took:.1f} s after the gateway was back."


OLD = '{"agents":{"old":{"status":"idle"}}}'


def with_tool(mode):
    home = Home()
    home.configure()
    home.write(DOCUMENTS["status"], OLD)
    home.play(tool=mode)
    install_gateway_tool()
    return home, Program(home).listens()


def is_new():
    found = document("status")
    return found and found.get("agents") and "old" not in found["agents"]


@row(seconds=240)
def hanging_tool():
    """The gateway's tool hangs for 125 s, then answers at once.

    Fresh data within two passes (60 s) of its recovery; no more than 8 of its runs at a time, four for each document.
    """
    home, program = with_tool("hang")
    most = 0
    end = time.monotonic() + 125
    while time.monotonic() < end:
        most = max(most, program.runs_of("duskrell"))
        must_serve("while the tool hangs")
        time.sleep(1)
    home.play()
    began = time.monotonic()
    require(wait_for(is_new, 2 * SYNC + 5, 0.5), f"No fresh data {2 * SYNC + 5} s after it has recovered")
    took = time.monotonic() - began
    program.end()
    require(2 <= most <= 8, f"{most} runs at a time")
    return f"Fresh data {took:.0f} s after its recovery; {most} runs at most."


@row(seconds=90)
def stubborn_tool():
    """The gateway's tool hangs and ignores TERM; the program gets TERM.

    The program is gone within a moment, the tool with it.
    """
    _, program = with_tool("stubborn")
    require(wait_for(program.children), "The tool does not run")
    time.sleep(2)
    children = program.children()
    took = program.end()
    require(wait_for(lambda: not any(map(is_alive, children)), 3), "The tool lives on")
    return f"Gone after {took:.1f} s, with {len(children)} processes."


@row(seconds=60, quick=True)
def flooding_tool():
    """The gateway's tool prints 100 MB.

    Memory stays within 150 MB and comes back to 10; the old document stays and is served.
    """
    _, program = with_tool("flood")
    before = program.megabytes()
    most = 0
    end = time.monotonic() + 10
    while time.monotonic() < end:
        most = max(most, program.megabytes())
        must_serve("while the tool floods")
        time.sleep(0.02)
    after = program.megabytes()
    require(document("status") == json.loads(OLD), "The old document is gone")
    require(most - before < 150 and after - before < 10, f"{most - before:.0f} MB more, {after - before:.0f} MB of them stay")
    program.end()
    return f"{most - before:+.0f} MB at most, {after - before:+.1f} MB afterwards; the old document stayed."


@row(seconds=90)
def endless_lines():
    """The gateway's tool, the Tailscale tool and the user's login shell, which the setup asks, print one line without end.

    Memory stays within 150 MB and comes back to 10 once they are ended; a link is taken meanwhile; no more than 30 processes at a
    time; the program ends within a moment and leaves none.
    """
    home = Home()
    home.configure()
    endless = "exec tr '\\0' x < /dev/zero"
    for tool in ("duskrell", "tailscale"):
        install_tool(tool, endless)
    home.write(".bash_profile", endless)
    program = Program(home).listens()
    before = program.megabytes()
    most = slowest = processes = 0
    end = time.monotonic() + 20
    while time.monotonic() < end:
        slowest = max(slowest, send_link(home, "ostrelle://nothing"))
        most, processes = max(most, program.megabytes() - before), max(processes, len(program.children()))
        time.sleep(0.1)
    wait_for(lambda: program.megabytes() - before < 10, 30, 0.2)
    after, children = program.megabytes() - before, program.children()
    took = program.end()
    require(wait_for(lambda: not any(map(is_alive, children)), 3), "Something lives on")
    seen = (f"{most:+.0f} MB at most, {after:+.1f} MB afterwards; a link took {slowest:.1f} s at most; {processes} processes at most; "
            f"it ended in {took:.1f} s.")
    require(most < 150 and after < 10 and slowest < MOMENT and processes <= 30, seen)
    return seen


def lying_tool(modes):
    seen = []
    for mode in modes:
        _, program = with_tool(mode)
        time.sleep(2.5)
        found = document("status")
        require(found == json.loads(OLD), f"With the mode {mode} the document became {json.dumps(found)[:60]}")
        program.end()
        seen.append(mode)
    return "The old document stayed each time: " + ", ".join(seen) + "."


@row(seconds=60)
def lying_tools():
    """The gateway's tool is killed halfway, fails, prints noise, another shape, no UTF-8, nothing.

    The old document stays and is served.
    """
    return lying_tool(["die", "fail", "garbage", "other-shape", "not-utf8", "nothing"])


@row(seconds=60)
def deep_and_odd_output():
    """The gateway's tool prints JSON of extreme depth, and halves of surrogate pairs.

    The first leaves the old document; the second gives a new one with whole Unicode.
    """
    seen = lying_tool(["deep"])
    _, program = with_tool("surrogates")
    require(wait_for(is_new, 15), "No new document for output with half of a surrogate pair")
    program.end()
    return seen + " With surrogates a new one came."


@row(seconds=60, quick=True)
def daemon_of_a_tool():
    """A gateway tool starts a service that lets go of its streams, and another that holds them.

    The first lives on; the second is ended, and the tool's answer counts.
    """
    home = Home()
    home.configure()
    install_tool("duskrell", "case \"$1\" in sessions)\n"
                 "  [ -e \"$HOME/service\" ] || { sleep 500 >/dev/null 2>&1 </dev/null & echo $! > \"$HOME/service\"; }\n"
                 "  sleep 501 & echo $! > \"$HOME/holder\"\n"
                 f"  echo '{sessions()}' ;; esac")
    program = Program(home).listens()
    require(wait_for(lambda: home.read("holder")), "The tool does not run")
    service, holder = (int(home.read(name)) for name in ("service", "holder"))
    require(wait_for(lambda: "a0" in (document("status") or {}).get("agents", {}), 10), "The tool's answer does not count")
    require(wait_for(lambda: not is_alive(holder), 5), "Who holds the pipe lives on")
    time.sleep(1)
    require(is_alive(service), "The service was ended")
    program.end()
    require(is_alive(service), "The service was ended with the program")
    return "The service lives on, also after the end; the other was ended."


@row(seconds=100)
def replaced_tool():
    """The gateway's tool is removed while the program runs; then another is there, newer, in its place.

    The document of the newer one is there within two passes (60 s) of its coming.
    """
    home, program = with_tool("fail")
    time.sleep(2)
    (TOOLS / "duskrell").unlink()
    time.sleep(5)
    install_sessions(2)
    began = time.monotonic()
    require(wait_for(lambda: "a1" in (document("status") or {}).get("agents", {}), 2 * SYNC + 5, 0.5), "No new document")
    program.end()
    return f"The new document came {time.monotonic() - began:.0f} s after the newer tool."


@row(seconds=60, quick=True)
def rogue_tool():
    """Tools named duskrell are in folders that anybody may write to, earlier in PATH, and the right one is writable by all.

    None of them is run, and one line tells of that folder, and one of the right one.
    """
    home = Home()
    home.configure()
    open_folder = home.path.parent / "open"
    open_folder.mkdir()
    open_folder.chmod(0o777)
    for tool in (open_folder / "duskrell", TOOLS / "duskrell"):
        tool.write_text('#!/bin/sh\necho "$0" >> "$HOME/run"\n')
        tool.chmod(0o777)
    program = Program(home, PATH=f"{open_folder}:{os.environ['PATH']}").listens()
    for path in (open_folder, TOOLS / "duskrell"):
        require(program.wait_for(f"Passed over, because anybody may write there: {path}", 8), f"No line tells of {path}")
    time.sleep(3)  # one more poll
    require(home.read("run") is None, f"It was run: {(home.read('run') or b'').decode()}")
    told = [line for line in program.output().splitlines() if "Passed over" in line]
    require(len(told) == 2, f"{len(told)} lines tell of it")
    program.end()
    return "None was run; one line tells of the folder and one of the tool."


@row(seconds=150)
def hanging_tailscale_tool():
    """The Tailscale tool hangs for 70 s, then answers.

    No more than 8 of its runs at a time; it is asked again within a minute of its recovery.
    """
    home = Home()
    home.configure()
    install_tool("duskrell", "exit 1")
    install_tool("tailscale", '[ -e "$HOME/recovered" ] && { date >> "$HOME/answers"; exit 0; }; sleep 600')
    program = Program(home).listens()
    most = 0
    end = time.monotonic() + 70
    while time.monotonic() < end:
        most = max(most, program.runs_of("tailscale"))
        time.sleep(1)
    home.write("recovered", "")
    began = time.monotonic()
    require(wait_for(lambda: home.read("answers"), 65, 0.2), "It is not asked again within 65 s")
    took = time.monotonic() - began
    program.end()
    require(2 <= most <= 8, f"{most} runs at a time")
    return f"Asked {took:.0f} s after its recovery; {most} runs at most."


@row(seconds=90)
def hundred_thousand_sessions():
    """The gateway's tool lists 100,000 sessions, once.

    The program serves meanwhile and gives the memory back: 40 MB more than before at most.
    """
    home = Home()
    home.configure()
    listing = home.write("listing", sessions(100_000))
    install_tool("duskrell", f"case \"$1\" in sessions) cat {listing} ;; *) exit 1 ;; esac")
    program = Program(home).listens()
    before = program.megabytes()
    most, slowest = 0, 0
    end = time.monotonic() + 30
    while time.monotonic() < end and not is_new():
        most = max(most, program.megabytes())
        slowest = max(slowest, must_serve("while the list is read"))
    require(is_new(), "No document")
    wait_for(lambda: program.megabytes() < before + 40, 15, 0.5)
    after = program.megabytes()
    require(after - before < 40, f"{after - before:.0f} MB stay")
    program.end()
    return f"{most - before:+.0f} MB at most, {after - before:+.0f} MB afterwards; the slowest answer took {slowest * 1000:.0f} ms."


@row(seconds=30)
def failed_token_reset():
    """`ostrellectl token reset` in a session with a bus, while the gateway's tool fails.

    It says that it has failed, and so do the log and a notification.
    """
    home = Home()
    home.configure()
    install_tool("duskrell", "exit 1")
    bus = Bus(home)
    seen = home.runtime / "notifications"
    with open(seen, "wb") as log:
        spawn(["dbus-monitor", "--session", "member='Notify'"], env=bus.environment(), stdout=log)
    require(wait_for(lambda: seen.stat().st_size), "The bus is not watched")
    program = Program(home, DBUS_SESSION_BUS_ADDRESS=bus.address).listens()
    status, told = ctl(home, "token", "reset")
    require(status == 1, f"It ends with status {status}: {told}")
    require(wait_for(lambda: b"Token reset failed: " in seen.read_bytes()), f"No notification tells of it: {seen.read_text()}")
    require("Token reset: the gateway" in program.output(), f"The log says: {program.tail()}")
    program.end()
    return told
