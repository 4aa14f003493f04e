"""Starts and ends"""

import os
import pwd
import random
import resource
import signal
import socket
import subprocess
import time

from row import require, row
from world import (BUILD, DOCUMENTS, MOMENT, PREFERENCES, Home, Program, another_user, ctl, get, install_tool,
                   is_alive, link_to, must_serve, send_link, spawn, wait_for)

NEW_GATEWAY = "http://127.0.0.9:1"


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


@row(seconds=30)
def another_users_lock():
    """Another user tries to lock, replace and read what keeps the program single, and to open its socket.

    He gets at nothing, and the program starts.
    """
    uid = another_user()
    home = Home()
    home.configure()
    Program(home).listens().end()
    attempt = subprocess.run(
        ["/usr/bin/python3", "-c", "import glob,os,sys\nfor f in sys.argv[1:]:\n  try: os.listdir(f) and print(f)\n  except OSError: pass",
         str(home.file(".ostrelle/run")), str(home.file(".ostrelle")), str(home.runtime)],
        user=uid, group=uid, extra_groups=[], capture_output=True, text=True)
    require(not attempt.stdout, f"Another user gets into {attempt.stdout}")
    Program(home).listens().end()
    return "No folder could be entered; the next start came up."


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
def planted_library():
    """libgcc_s.so.1, libostrelle.so and a tool named cc are planted in the working directory of the start.

    None of them is opened.
    """
    home = Home()
    home.configure()
    trap = home.path / "trap"
    (trap / "lib").mkdir(parents=True)
    for name in ("libgcc_s.so.1", "libostrelle.so", "lib/libostrelle.so", "libstdc++.so.6", "libQt6Core.so.6"):
        (trap / name).write_text("planted")
    log = home.runtime / "opened"
    program = Program(home, cwd=trap, under=["strace", "-D", "-f", "-qq", "-o", str(log), "-e", "trace=open,openat,execve"])
    program.listens()
    program.end(within=10)
    opened = [line for line in log.read_text(errors="replace").splitlines() if str(trap) in line or
              any(f'"{name}"' in line for name in ("libgcc_s.so.1", "lib/libostrelle.so", "libostrelle.so"))]
    require(not opened, f"Opened: {(opened or [''])[0]}")
    return "None was opened, by the program or what it started."


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
    """The reader of what the program prints has gone, and its standard streams are closed.

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
    closed = spawn(["/bin/sh", "-c", f"exec {BUILD}/ostrelle <&- >&- 2>&-"], home)
    require(wait_for(lambda: get("/health")[0] == 200), "It does not serve with closed streams")
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


@row(seconds=30)
def few_descriptors():
    """The start finds limits of 64 descriptors and then 20 processes more than there are.

    It listens, serves and ends in time; or says what it lacks and ends.
    """
    home = Home()
    home.configure()
    program = Program(home, limits=[(resource.RLIMIT_NOFILE, 64)]).listens()
    must_serve("with 64 descriptors")
    took = program.end()
    return f"It listened and served with 64 descriptors, and ended in {took:.1f} s."


@row(seconds=30, quick=True)
def no_home_variable():
    """HOME is not set.

    The home is the one in the system's list of users, not "/".
    """
    home = Home()
    program = Program(home, HOME=None)
    program.wait_for("[StatusServer]")
    open_files = {os.readlink(f"/proc/{program.pid}/fd/{fd}") for fd in os.listdir(f"/proc/{program.pid}/fd")
                  if os.path.lexists(f"/proc/{program.pid}/fd/{fd}")}
    program.end()
    expected = pwd.getpwuid(os.getuid()).pw_dir
    lock = [file for file in open_files if file.endswith("ostrelle.lock")]
    require(lock and lock[0].startswith(expected + "/"), f"Its lock is {(lock or ['nowhere'])[0]}, not below {expected}")
    return f"It was at home in {expected}."


@row(seconds=20, quick=True)
def strange_arguments():
    """Arguments that are no link: an option, a file, an address of another scheme, 100 KB.

    They stay as they are on the command line; the program starts, and nothing is saved.
    """
    home = Home()
    home.configure()
    before = home.read(".ostrelle/config.json")
    arguments = ["note:for me", "/etc/passwd", "https://box/?token=x", "x" * 100000]
    program = Program(home, *arguments).listens()
    line = open(f"/proc/{program.pid}/cmdline").read().split("\0")
    require(line[1:5] == arguments, "The command line was changed")
    require(home.read(".ostrelle/config.json") == before, "Something was saved")
    program.end()
    return "All stayed; nothing was saved."


@row(seconds=20, quick=True)
def link_in_proc():
    """A start with a link that carries a token, its command line read without a pause; and one into a running program.

    The token is in no command line once the program has begun to run its own code.
    """
    home = Home()
    home.configure()
    longest = 0
    for _ in range(10):
        program = Program(home, link_to(NEW_GATEWAY, "sEcReT"))
        began = time.monotonic()
        end = began + 0.4
        last = 0
        while time.monotonic() < end:
            try:
                if b"sEcReT" in open(f"/proc/{program.pid}/cmdline", "rb").read():
                    last = time.monotonic() - began
            except OSError:
                break
        longest = max(longest, last)
        program.kill()
    require(longest < 0.05, f"Readable for {longest * 1000:.0f} ms")
    return f"Readable for {longest * 1000:.0f} ms at most in ten starts: until the system has loaded the program."


@row(seconds=20, quick=True)
def open_umask():
    """The very first start with umask 0, and a world-readable core limit.

    Everything that it makes is for the user alone, and it leaves no core when it crashes.
    """
    home = Home()
    program = Program(home, umask=0, limits=[(resource.RLIMIT_CORE, resource.RLIM_INFINITY)])
    program.listens()
    send_link(home, link_to(NEW_GATEWAY, "t0ken"))
    wait_for(lambda: home.read(".ostrelle/secrets.json"))
    program.process.send_signal(signal.SIGSEGV)
    program.process.wait()
    open_ones = [str(file) for file in home.path.rglob("*") if not file.is_symlink() and file.lstat().st_mode & 0o077
                 and ".config" not in str(file.parent)]
    require(not open_ones, f"Others may read {', '.join(open_ones)}")
    cores = list(home.path.rglob("core*"))
    require(not cores, "A core was left")
    return "Nothing is open to others; no core."


@row(seconds=30)
def inherited_descriptors():
    """The start inherits open files and a socket; its tools write down what they have.

    The tools have nothing but their three streams, and ignore no signal.
    """
    home = Home()
    home.configure()
    install_tool("duskrell", "ls -l /proc/self/fd > \"$HOME/fds\"; grep SigIgn /proc/self/status > \"$HOME/ignored\"")
    program = Program(home, under=["/bin/sh", "-c", 'exec 7</etc/passwd 8</etc 9>>/dev/null; exec "$0" "$@"']).listens()
    require(wait_for(lambda: home.read("ignored")), "The tool was not run")
    program.end()
    more = [line for line in home.read("fds").decode().splitlines() if " -> " in line and "/proc/" not in line
            and int(line.split(" -> ")[0].split()[-1]) > 2]
    require(not more, f"It has {more}")
    require(int(home.read("ignored").split()[1], 16) == 0, f"It ignores signals: {home.read('ignored').decode().strip()}")
    return "Three streams, no ignored signals."
