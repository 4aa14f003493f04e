"""Where a row runs: namespaces of its own, of which it is the first process. Prints what the row saw as JSON."""

import json
import os
import pathlib
import pwd
import signal
import subprocess
import sys
import traceback

from loopback import set_loopback
from row import FallsShort, NotHere, load_groups

PROJECT = pathlib.Path(__file__).resolve().parents[2]


def namespaces():
    """What to run a command under: a process table, a network, mounts and System V names of its own; root stays root."""
    mapped = [] if os.geteuid() == 0 else ["--user", "--map-root-user"]
    return ["unshare", *mapped, "--mount", "--pid", "--fork", "--kill-child", "--net", "--ipc", "--mount-proc"]


def mount(*arguments):
    subprocess.run(["mount", *arguments], check=True)


def cover(place, mode):
    """Lays an empty folder over one of this machine's; the project stays to be seen."""
    project = os.open(PROJECT, os.O_PATH)
    mount("-t", "tmpfs", "-o", f"mode={mode},size=2g", "none", place)
    if PROJECT.is_relative_to(place):
        PROJECT.mkdir(parents=True)
        mount("--no-canonicalize", "--bind", f"/proc/{os.getpid()}/fd/{project}", str(PROJECT))
    os.close(project)


def furnish():
    """Hides what belongs to this machine and its users, so that nothing of theirs is found or touched."""
    cover("/tmp", 1777)
    cover("/usr/local/bin", 755)
    cover(pwd.getpwuid(os.getuid()).pw_dir, 700)
    mount("-o", "remount,bind,ro", "/")
    os.makedirs("/tmp/.X11-unix", mode=0o1777)
    set_loopback(True)
    for name in [name for name in os.environ if name.startswith(("XDG_", "DBUS_", "QT_", "WAYLAND_"))]:
        del os.environ[name]
    os.environ.pop("DISPLAY", None)
    os.environ.update(HOME="/nonexistent", LANG="C.UTF-8", PATH="/usr/local/bin:/usr/bin:/bin:/usr/sbin:/sbin")


def time_is_over(*_):
    raise FallsShort("It took too long and was ended")


def main():
    row = next(row for row in load_groups() if row.name == sys.argv[1])
    furnish()
    for number in (signal.SIGINT, signal.SIGQUIT, signal.SIGHUP):  # a shell starts what is in its background without them
        signal.signal(number, signal.SIG_DFL)
    signal.signal(signal.SIGALRM, time_is_over)
    signal.alarm(row.seconds)
    try:
        result = {"verdict": "holds", "seen": row.run()}
    except FallsShort as short:
        result = {"verdict": "short", "seen": str(short)}
    except NotHere as reason:
        result = {"verdict": "not here", "seen": str(reason)}
    except Exception:
        traceback.print_exc()
        raise
    print(json.dumps(result), flush=True)


if __name__ == "__main__":
    main()
