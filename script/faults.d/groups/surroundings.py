"""What a start finds"""

import contextlib
import os
import pathlib
import pwd
import re
import resource
import signal
import subprocess
import time

from row import require, row
from world import (MOMENT, NEW_GATEWAY, PREFERENCES, Home, Program, another_user, install_tool, link_to, must_serve, send_link,
                   wait_for)


@row(seconds=30, quick=True)
def planted_library():
    """Libraries of the program's and the system's, tools named duskrell and tailscale, and a part of Python (venv.py) are planted
    in the working directory of the start, which is also the first folder in PATH (".").

    None of them is opened or run; the gateway's tool further on in PATH is.
    """
    home = Home()
    home.configure()
    install_tool("duskrell", 'touch "$HOME/right"; exit 1')
    trap = home.path / "trap"
    (trap / "lib").mkdir(parents=True)
    for name in ("libgcc_s.so.1", "libostrelle.so", "lib/libostrelle.so", "libstdc++.so.6", "libQt6Core.so.6"):
        (trap / name).write_text("planted")
    for tool in ("duskrell", "tailscale"):
        home.write(f"trap/{tool}", '#!/bin/sh\ntouch "$HOME/wrong"\n', 0o755)
    home.write("trap/venv.py", f"open('{home.path}/wrong', 'w')")
    log = home.runtime / "opened"
    program = Program(home, cwd=trap, PATH=f".:{os.environ['PATH']}",
                      under=["strace", "-D", "-f", "-qq", "-o", str(log), "-e", "trace=open,openat,execve"])
    program.listens()
    require(wait_for(lambda: home.read("right") is not None), "The right tool is not run")
    time.sleep(3)  # one more poll
    program.end(within=10)
    require(home.read("wrong") is None, "A planted tool or module was run")
    opened = [line for line in log.read_text(errors="replace").splitlines() if str(trap) in line or
              any(f'"{name}"' in line for name in ("libgcc_s.so.1", "lib/libostrelle.so", "libostrelle.so"))]
    require(not opened, f"Opened: {(opened or [''])[0]}")
    return "None was opened or run, by the program or what it started."


@row(seconds=30, quick=True)
def freed_memory_overwritten():
    """Whatever the program frees is overwritten at once (MALLOC_PERTURB_). It is started with a link to another gateway, and one to
    a third comes, with the MagicDNS address switched on and off.

    It reads nothing of what is gone: both gateways come in use, it serves, and ends with status 0.
    """
    for use in ("true", "false"):
        home = Home(f"/tmp/home-{use}")
        home.configure()
        home.write(PREFERENCES, f"[General]\nuseMagicDNS={use}\n")
        install_tool("duskrell", "exit 1")
        program = Program(home, link_to(NEW_GATEWAY), MALLOC_PERTURB_="165").listens()
        for url in (NEW_GATEWAY, NEW_GATEWAY + "2"):
            if url != NEW_GATEWAY:
                send_link(home, link_to(url))
            require(wait_for(lambda: home.config()["gateway"]["url"] == url), f"{url} does not come in use: {program.tail()}")
            time.sleep(1)  # what comes after the save
            program.must_run(f"after a switch to {url}")
        must_serve("after two switches")
        program.end()
    return "Both gateways came in use, with either setting."


@row(seconds=30)
def inherited_descriptors():
    """The start inherits open files and a socket; its tools write down what they have.

    The tools have nothing but their three streams, and ignore no signal.
    """
    home = Home()
    home.configure()
    # Run several times, and the last one is cut short; so each file is there whole.
    install_tool("duskrell", 'cd "$HOME"; ls -l /proc/self/fd > $$; mv $$ fds; grep SigIgn /proc/self/status > $$; mv $$ ignored')
    program = Program(home, under=["/bin/sh", "-c", 'exec 7</etc/passwd 8</etc 9>>/dev/null; exec "$0" "$@"']).listens()
    require(wait_for(lambda: home.read("ignored")), "The tool was not run")
    program.end()
    more = [line for line in home.read("fds").decode().splitlines() if " -> " in line and "/proc/" not in line
            and int(line.split(" -> ")[0].split()[-1]) > 2]
    require(not more, f"It has {more}")
    require(int(home.read("ignored").split()[1], 16) == 0, f"It ignores signals: {home.read('ignored').decode().strip()}")
    return "Three streams, no ignored signals."


def lives_with(home, limit):
    program = Program(home, limits=[limit]).listens()
    time.sleep(3)  # one more poll
    slowest = max(must_serve("with so few") for _ in range(20))
    program.must_run("with so few")
    send_link(home, link_to(NEW_GATEWAY))
    require(wait_for(lambda: home.config()["gateway"]["url"] == NEW_GATEWAY), "A link is not taken")
    took = program.end()
    return f"The slowest of 20 answers took {slowest * 1000:.0f} ms; the link was saved; it ended in {took:.1f} s."


@row(seconds=30)
def few_descriptors():
    """The start finds a limit of 64 descriptors.

    It listens, serves, takes a link, and ends in time.
    """
    home = Home()
    home.configure()
    return lives_with(home, (resource.RLIMIT_NOFILE, 64))


@row(seconds=30)
def few_processes():
    """The start finds a limit of 20 processes and threads, of which it needs up to 18 itself.

    It listens, serves, takes a link, and ends in time.
    """
    another_user()
    uid = 61236  # nobody else's processes count
    home = Home("/tmp/theirs")
    home.configure()
    subprocess.run(["chown", "-R", str(uid), str(home.path), str(home.runtime)], check=True)
    home.user = uid
    install_tool("duskrell", "exit 1")
    return lives_with(home, (resource.RLIMIT_NPROC, 20))


@row(seconds=80)
def no_threads():
    """The start finds a limit of three processes and threads: one to run, one for signals, one for the log. A link comes, and six
    seconds later there may be more.

    One line says so; then the link is saved within two seconds, and it listens within 31. A limit of one is told in a line, too.
    """
    another_user()
    home = Home("/tmp/theirs", user=61235)  # nobody else's processes count, those of other rows neither
    home.configure()
    install_tool("duskrell", "exit 1")
    subprocess.run(["chown", "-R", str(home.user), str(home.path), str(home.runtime)], check=True)
    refused = Program(home, limits=[(resource.RLIMIT_NPROC, 1)])
    require(refused.process.wait(MOMENT) == 1 and refused.output().count("\n") == 1, f"With one it ends like this: {refused.tail()}")

    program = Program(home, under=["prlimit", "--nproc=3:64"])
    require(program.wait_for("no thread to spare"), f"It says: {program.output()}")
    send_link(home, link_to(NEW_GATEWAY))
    time.sleep(6)
    program.must_run("without threads")
    program.allow_threads(64)
    began = time.monotonic()
    require(wait_for(lambda: home.config()["gateway"]["url"] == NEW_GATEWAY, 2), "The link is not saved")
    saved = time.monotonic() - began
    program.listens(31)
    must_serve("once there are threads")
    return (f"{program.wait_for('to spare')}; the link was saved {saved:.1f} s after, and it listened {time.monotonic() - began:.0f} s "
            f"after; it ended in {program.end():.1f} s.")


@row(seconds=30, quick=True)
def place_of_the_program():
    """The start; the system takes 0.3 s to tell where the program is.

    One thread asks: Qt keeps the answer without a lock, and two that keep it at the same moment corrupt the heap.
    """
    home = Home()
    log = home.runtime / "told"
    program = Program(home, under=["strace", "-f", "-qq", "-o", str(log), "-P", "/proc/self/exe",
                                   "-e", "inject=readlink:delay_exit=300000"])
    require(program.wait_for("secrets are kept in"), "It does not ask for the keyring")
    told = {line.split()[0] for line in log.read_text().splitlines() if '/ostrelle"' in line}
    require(len(told) == 1, f"These ask: {told}")
    return "One thread asked."


@row(seconds=30, quick=True)
def no_home_variable():
    """HOME is not set.

    The home is the one in the system's list of users, not "/".
    """
    home = Home()
    program = Program(home, HOME=None)
    program.wait_for("[StatusServer]")
    open_files = set()
    for descriptor in os.scandir(f"/proc/{program.pid}/fd"):
        with contextlib.suppress(FileNotFoundError):  # closed meanwhile
            open_files.add(os.readlink(descriptor))
    program.end()
    expected = pwd.getpwuid(os.getuid()).pw_dir
    lock = [file for file in open_files if file.endswith("ostrelle.lock")]
    require(lock and lock[0].startswith(expected + "/"), f"Its lock is {(lock or ['nowhere'])[0]}, not below {expected}")
    return f"It was at home in {expected}."


@row(seconds=20, quick=True)
def strange_arguments():
    """Arguments that are no link: options, a file, an address of another scheme, 100 KB.

    They stay as they are on the command line; the program starts, and nothing is saved.
    """
    home = Home()
    home.configure()
    before = home.read(".ostrelle/config.json")
    arguments = ["--help", "-platform=none", "note:for me", "/etc/passwd", "https://box/?token=x", "x" * 100000]
    program = Program(home, *arguments).listens()
    line = open(f"/proc/{program.pid}/cmdline").read().split("\0")
    require(line[1:-1] == arguments, "The command line was changed")
    require(home.read(".ostrelle/config.json") == before, "Something was saved")
    program.end()
    return "All stayed; nothing was saved."


def readable_for(program, secret):
    """The milliseconds for which its command line has the secret, which must be over once it loads a library of ours."""
    began = time.monotonic()
    last = 0
    place = pathlib.Path(f"/proc/{program.pid}")
    while time.monotonic() < began + 0.4:
        with contextlib.suppress(OSError):
            is_loaded = "libostrelle" in (place / "maps").read_text()
            if secret in (place / "cmdline").read_bytes():
                last = time.monotonic() - began
                require(not is_loaded, f"Readable {last * 1000:.0f} ms after the start, when its own libraries are loaded")
    program.kill()
    return last * 1000


@row(seconds=30, quick=True)
def link_in_proc():
    """Ten starts with a link that carries a token, their command lines read without a pause; then ten into a running program.

    The token is in the command line until the system has loaded the few kilobytes that load the rest, and no longer.
    """
    home = Home()
    home.configure()
    link = link_to(NEW_GATEWAY, "sEcReT")
    first = max(readable_for(Program(home, link), b"sEcReT") for _ in range(10))
    running = Program(home).listens()
    second = max(readable_for(Program(home, link), b"sEcReT") for _ in range(10))
    require(b"sEcReT" in (home.read(".ostrelle/secrets.json") or b""), "The running program does not have the token")
    running.end()
    return f"Readable for {first:.0f} ms at most in ten starts, for {second:.0f} ms in ten into a running program."


@row(seconds=20, quick=True)
def open_umask():
    """The very first start with umask 0 and no limit for cores; a link with a token comes, then it crashes (SEGV).

    Everything in the home is for the user alone, and it leaves no core.
    """
    home = Home()
    program = Program(home, umask=0, limits=[(resource.RLIMIT_CORE, resource.RLIM_INFINITY)])
    program.listens()
    send_link(home, link_to(NEW_GATEWAY, "t0ken"))
    wait_for(lambda: home.read(".ostrelle/secrets.json"))
    limit = resource.prlimit(program.pid, resource.RLIMIT_CORE)[0]
    program.process.send_signal(signal.SIGSEGV)
    program.process.wait()
    open_ones = [str(file) for file in home.path.rglob("*") if not file.is_symlink() and file.lstat().st_mode & 0o077]
    require(not open_ones, f"Others may read {', '.join(open_ones)}")
    cores = list(home.path.rglob("core*"))
    require(not cores and limit == 0, f"{len(cores)} cores were left; {limit} bytes may be")
    return "Nothing is open to others; no core."
