"""Starts and ends"""

import os
import random
import signal
import socket
import subprocess
import time

from row import require, row
from world import (BUILD, DOCUMENTS, MOMENT, NEW_GATEWAY, PREFERENCES, Home, Program, another_user, ctl, get, install_tool,
                   is_alive, link_to, must_serve, send_link, spawn, wait_for)


@row(seconds=60, quick=True)
def fifty_starts_at_once():
    """50 starts at once, ten of them with a link.

    One runs, the others end with status 0 within 10 s, and the ten gateways are saved.
    """
    home = Home()
    home.configure()
    programs = [Program(home, *([link_to(f"http://127.0.0.9:{i}")] if i % 5 == 0 else [])) for i in range(50)]
    wait_for(lambda: sum(program.is_running() for program in programs) == 1, 15)
    running = [program for program in programs if program.is_running()]
    require(len(running) == 1, f"{len(running)} run")
    failed = [program for program in programs if program.process.poll() not in (None, 0)]
    require(not failed, f"{len(failed)} starts failed: {(failed or programs)[0].tail()}")
    running[0].listens()
    saved = wait_for(lambda: all(f"127.0.0.9:{i}\"" in (home.read(".ostrelle/config.json") or b"").decode()
                                 for i in range(0, 50, 5)))
    require(saved, "Not all links were saved")
    return f"One ran, 49 handed over; all ten links were saved; it ended in {running[0].end():.1f} s."


@row(seconds=30)
def two_homes():
    """Two homes of one user, each with its own port, are started in the same session.

    Both run, and each serves its own documents.
    """
    programs = []
    for number in (1, 2):
        home = Home(f"/tmp/home{number}")
        home.configure(status=18800 + number)
        home.write(DOCUMENTS["status"], f'{{"agents":{{"of-{number}":{{}}}}}}')
        home.runtime = programs[0][0].runtime if programs else home.runtime
        programs.append((home, Program(home).listens()))
    for number in (1, 2):
        require(f"of-{number}".encode() in get("/status", 18800 + number)[1], f"Home {number} serves something else")
    return "Both ran and served their own; they ended in " + " and ".join(f"{program.end():.1f} s" for _, program in programs) + "."


@row(seconds=30, quick=True)
def two_sessions_of_one_home():
    """A second start comes from a session with another runtime directory, with a link.

    It ends with status 0, and the first program has taken the link.
    """
    home = Home()
    home.configure()
    program = Program(home).listens()
    other = home.path.parent / "other.run"
    other.mkdir(mode=0o700)
    send_link(home, link_to(NEW_GATEWAY), XDG_RUNTIME_DIR=str(other))
    require(wait_for(lambda: home.config()["gateway"]["url"] == NEW_GATEWAY), "The link is not taken")
    program.end()
    return "One instance; the link of the second session was saved."


@row(seconds=30)
def two_users():
    """Another user starts the program, with a home of his own, while the first one's runs on the same port.

    Both run; the second says that the port is taken and is not handed anything of the first's.
    """
    uid = another_user()
    home = Home()
    home.configure()
    first = Program(home).listens()
    theirs = Home("/tmp/theirs")
    theirs.configure()
    subprocess.run(["chown", "-R", str(uid), str(theirs.path), str(theirs.runtime)], check=True)
    theirs.user = uid
    second = Program(theirs)
    require(second.wait_for("[StatusServer]"), f"The second does not come up: {second.tail()}")
    second.must_run("beside another user's")
    require("Listening" not in second.output(), "It listens on a port that is taken")
    second.end()
    first.end()
    return "Both ran; " + (second.wait_for("[StatusServer]") or "")


INTRUDER = """
import fcntl, os, socket, sys
lock, opened = sys.argv[1:]
open("/tmp/his", "w").close()
for name, attempt in {
        "list the folder": lambda: os.listdir(os.path.dirname(lock)),
        "read the lock": lambda: open(lock),
        "take the lock": lambda: fcntl.flock(os.open(lock, os.O_RDWR), fcntl.LOCK_EX | fcntl.LOCK_NB),
        "replace the lock": lambda: os.rename("/tmp/his", lock),
        "move the lock away": lambda: os.rename(lock, "/tmp/his.lock"),
        "connect": lambda: socket.socket(socket.AF_UNIX).connect(opened),
        "replace the socket": lambda: os.rename("/tmp/his", opened)}.items():
    try:
        attempt()
        print(name, "- he can")
    except OSError as problem:
        print(name, "-", problem.strerror)
"""


@row(seconds=30)
def another_users_lock():
    """While the program runs, another user tries to list the folder of what keeps it single, to read, lock, replace and move
    away its lock, and to connect to its socket and replace it.

    Each time he is told "Permission denied"; a second start is taken, and so is the next one after the end.
    """
    uid = another_user()
    home = Home()
    home.configure()
    program = Program(home).listens()
    lock = home.file(".ostrelle/run/ostrelle.lock")
    sockets = [file for place in (home.path, home.runtime) for file in place.rglob("*") if file.is_socket()]
    require(lock.exists() and len(sockets) == 1, f"There is no lock, or not one socket but {len(sockets)}")
    told = subprocess.run(["/usr/bin/python3", "-c", INTRUDER, str(lock), str(sockets[0])], user=uid, group=uid, extra_groups=[],
                          capture_output=True, text=True).stdout.splitlines()
    got = [line for line in told if not line.endswith("- Permission denied")]
    require(len(told) == 7 and not got, f"Another user: {', '.join(got) or told}")
    send_link(home, link_to(NEW_GATEWAY))
    require(wait_for(lambda: home.config()["gateway"]["url"] == NEW_GATEWAY), "A second start is not taken")
    program.end()
    Program(home).listens().end()
    return f"Denied {len(told)} times; a second start was taken, and the next one came up."


@row(seconds=60)
def frozen_first_instance():
    """The running program is stopped (STOP) when a second start comes; then it goes on (CONT).

    The second start ends within 10 s and says why; afterwards a link is taken.
    """
    home = Home()
    home.configure()
    program = Program(home).listens()
    os.kill(program.pid, signal.SIGSTOP)
    second = Program(home)
    try:
        status = second.process.wait(10)
    except subprocess.TimeoutExpired:
        require(False, "The second start does not end within 10 s")
    took = time.monotonic() - second.began
    require(status == 1 and "does not answer" in second.output(), f"It ended with {status}: {second.tail()}")
    os.kill(program.pid, signal.SIGCONT)
    send_link(home, link_to(NEW_GATEWAY))
    require(wait_for(lambda: home.config()["gateway"]["url"] == NEW_GATEWAY), "The link is not taken afterwards")
    program.end()
    return f"Refused after {took:.1f} s with a line; the link that came afterwards was saved."


@row(seconds=60)
def killed_while_starting():
    """30 starts are killed at a random moment of their first 150 ms, with a link each.

    The next start always comes up within a moment, and config.json is whole.
    """
    home = Home()
    home.configure()
    chance = random.Random(30)
    slowest = 0
    for turn in range(30):
        program = Program(home, link_to(f"http://127.0.0.9:{turn + 1}"))
        time.sleep(chance.uniform(0, 0.15))
        program.kill()
        program = Program(home).listens()
        slowest = max(slowest, time.monotonic() - program.began)
        program.kill()
        require(home.config(), "config.json is torn")
    require(slowest < MOMENT, f"A start took {slowest:.1f} s")
    return f"30 times up again, after {slowest * 1000:.0f} ms at most."


@row(seconds=30)
def lock_removed():
    """The folder with the lock and the socket is removed while the program runs; then a second start comes.

    A second start never makes a second program on the same files without a word: it is taken, or it says why.
    """
    home = Home()
    home.configure()
    program = Program(home).listens()
    subprocess.run(["rm", "-rf", str(home.file(".ostrelle/run"))], check=True)
    send_link(home, link_to(NEW_GATEWAY))
    require(wait_for(lambda: home.config()["gateway"]["url"] == NEW_GATEWAY), "The link is not taken")
    program.end()
    return "The second start was taken by the first program."


@row(seconds=40)
def no_file_locks():
    """Every lock of a file is refused (ENOLCK), as on a network file system without locks; a start in another session has a
    link; two preferences are saved.

    It says so once at most; the link and the preferences are saved, and there is one program.
    """
    home = Home()
    home.configure()
    unlockable = ["strace", "-D", "-f", "-qq", "-o", "/dev/null", "-e", "inject=flock:error=ENOLCK"]
    program = Program(home, under=unlockable).listens()
    other = home.path.parent / "other.run"
    other.mkdir(mode=0o700)
    send_link(home, link_to(NEW_GATEWAY), under=unlockable, XDG_RUNTIME_DIR=str(other))
    require(wait_for(lambda: home.config()["gateway"]["url"] == NEW_GATEWAY), "The link is not taken")
    require(wait_for(lambda: home.read(PREFERENCES)), "The first preference is not saved")
    ctl(home, "voice", "start")
    require(wait_for(lambda: b"voiceEnabled" in home.read(PREFERENCES)), "The second preference is not saved")
    told = [line for line in program.output().splitlines() if "lock" in line.lower()]
    require(len(told) <= 1, f"{len(told)} lines tell of it")
    took = program.end(within=5)  # the tracer holds it
    return f"All were saved; {len(told)} line told of it; it ended in {took:.1f} s."


@row(seconds=30, quick=True)
def unread_log():
    """The terminal is paused: nobody reads what the program prints, and the pipe is full.

    It serves, takes a link, and ends within a moment of TERM.
    """
    home = Home()
    home.configure()
    reading, writing = os.pipe()
    os.set_blocking(writing, False)
    try:
        while True:
            os.write(writing, b"x" * 4096)
    except BlockingIOError:
        os.set_blocking(writing, True)
    program = Program(home, output=writing)
    require(wait_for(lambda: get("/health")[0] == 200), "It does not serve")
    for number in range(20):
        send_link(home, link_to(f"http://127.0.0.9:{number + 1}"))
    must_serve("with a full pipe")
    took = program.end()
    os.close(reading)
    return f"20 links were taken; it ended in {took:.1f} s."


@row(seconds=30)
def nobody_reads_any_more():
    """The reader of what the program prints has gone; then its standard streams are closed, and it ignores HUP, as under nohup,
    when that comes.

    It goes on, and ends with TERM.
    """
    home = Home()
    home.configure()
    reading, writing = os.pipe()
    os.close(reading)
    program = Program(home, output=writing)
    require(wait_for(lambda: get("/health")[0] == 200), "It does not serve")
    send_link(home, link_to(NEW_GATEWAY))
    program.end()
    closed = spawn(["/bin/sh", "-c", f"trap '' HUP; exec {BUILD}/ostrelle <&- >&- 2>&-"], home)
    require(wait_for(lambda: get("/health")[0] == 200), "It does not serve with closed streams")
    closed.send_signal(signal.SIGHUP)
    time.sleep(1)  # in which it would end
    must_serve("after the end of its terminal")
    closed.terminate()
    require(closed.wait(5) == 0, "It does not end with status 0")
    return "It served in both cases, and ended with status 0."


@row(seconds=40, quick=True)
def term_while_everything_hangs():
    """The gateway's tool, the Tailscale tool and the gateway hang, when TERM, INT or HUP comes.

    The program is gone within a moment, with everything that it has started.
    """
    home = Home()
    home.configure()
    for tool in ("duskrell", "tailscale"):
        install_tool(tool, "trap '' TERM INT HUP\nwhile :; do sleep 1; done")
    silent = socket.socket()
    silent.bind(("127.0.0.1", 18789))
    silent.listen(64)
    seen = []
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        program = Program(home).listens()
        require(wait_for(lambda: len(program.children()) >= 2), "Its tools do not run")
        children = program.children()
        seen.append(f"{number.name} {program.end(number):.1f} s")
        left = wait_for(lambda: not any(map(is_alive, children)), 3)
        require(left, f"Children live on after {number.name}")
    return "Gone, with all children: " + ", ".join(seen) + "."


@row(seconds=20)
def no_process_left():
    """The user may start no process any more, and `ostrellectl setup install` needs one.

    It says so, and that it has failed.
    """
    another_user()
    home = Home(user=61234)  # nobody else's processes count
    limit = ["setpriv", f"--reuid={home.user}", "--clear-groups", "prlimit", "--nproc=1"]
    told = subprocess.run([*limit, str(BUILD / "ostrellectl"), "setup", "install"], env=home.environment(), input="password\n",
                          capture_output=True, text=True)
    require(told.returncode == 1, f"It ends with status {told.returncode}")
    require("Resource temporarily unavailable" in told.stderr, f"It says: {told.stderr}")
    return told.stderr.strip()
