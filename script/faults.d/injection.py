"""Kills the program at each system call of a save, or lets that call fail, with strace."""

import collections
import contextlib
import os
import re
import shutil
import signal
import time

from row import FallsShort, require
from world import PATIENCE, TOOLS, Home, Program, wait_for

CALL = re.compile(r"^(\d+) +(\w+)\(")
# These neither write nor decide anything.
UNEVENTFUL = {"read", "pread64", "close", "lseek", "getdents64", "readlink", "access", "faccessat2", "statx", "flock"}
# Once one of these has failed the file may be torn, and the next start writes it again from what is beside it.
FINISHED_LATER = {"pwrite64", "ftruncate", "fsync", "unlink"}
MOST_POSITIONS = 60


class Save:
    """One file that the program saves, in homes made for the purpose."""

    def __init__(self, name, prepare, judge, arguments=(), done=None):
        self.name = name  # the file, below the home
        self.prepare = prepare  # fills a new home with what was there before
        self.judge = judge  # (home, when) -> "old", "new" or another word; FallsShort where it is neither
        self.arguments = arguments  # of the start that saves
        self.done = done or (lambda home: judge(home, "") == "new")

    def new_home(self):
        path = "/tmp/saving"
        shutil.rmtree(path, ignore_errors=True)
        home = Home(path)
        self.prepare(home)
        file = home.file(self.name)
        self.before = file.stat().st_ino if file.exists() else None  # the file that the save finds
        return home

    def trace(self, home, paths, *inject):
        """Starts the program in that home with its calls on these paths recorded."""
        log = home.runtime / "calls"
        log.unlink(missing_ok=True)
        watched = [option for path in paths for option in ("-P", path)]
        under = ["strace", "-D", "-f", "-y", "-qq", "-o", str(log), *watched, *inject]
        return Program(home, *self.arguments, under=under), log

    def paths(self):
        """The file, what is made beside it, and its folder: whatever the save touches."""
        home = self.new_home()
        file = str(home.file(self.name))
        program, log = self.trace(home, [], "-e", "trace=%file,%desc")
        self.wait_until_saved(program, home)
        touched = set(re.findall(re.escape(file) + r"[\w.-]*", log.read_text(errors="replace")))
        return sorted(touched | {file, os.path.dirname(file)})

    def wait_until_saved(self, program, home):
        def is_saved():
            with contextlib.suppress(FallsShort):
                return self.done(home)
            return False
        require(wait_for(is_saved), f"The save does not come: {program.tail()}")
        time.sleep(0.3)  # what it clears away behind itself
        program.end(within=PATIENCE)

    def positions(self, paths):
        """Each system call of the save: its name and the how-manieth of its thread it is."""
        home = self.new_home()
        program, log = self.trace(home, paths)
        self.wait_until_saved(program, home)
        counts = collections.Counter()
        found = {}
        for line in log.read_text(errors="replace").splitlines():
            if call := CALL.match(line):
                counts[call.groups()] += 1
                if call[2] not in UNEVENTFUL and self.name.rpartition("/")[2] in line:
                    found[call[2], counts[call.groups()]] = line
        require(found, "No system call was seen")
        return list(found)[:MOST_POSITIONS]

    @staticmethod
    def is_quiet(log, seconds=0.6):
        """Whether a call on the file has come, and then none for a while."""
        return log.exists() and log.stat().st_size > 0 and time.time() - log.stat().st_mtime > seconds

    def kill_everywhere(self):
        def run(name, nth, when):
            home = self.new_home()
            program, log = self.trace(home, self.touched, "-e", f"inject={name}:signal=KILL:when={nth}")
            wait_for(lambda: not program.is_running() or self.is_quiet(log), PATIENCE)
            if program.is_running():  # the call is one of the end
                program.process.terminate()
                program.process.wait()
            self.missed += program.process.returncode != -signal.SIGKILL
            require(not (readable := self.open_to_others(home)), f"Others may read {', '.join(readable)} {when}")
            return self.restarted(home, when)

        return "Killed before {} calls; after the next start the file was {}.".format(*self.everywhere("killed before", run))

    def fail_everywhere(self):
        def run(name, nth, when):
            error = "ENOSPC" if name in ("write", "pwrite64", "fallocate") else "EIO"
            home = self.new_home()
            program, log = self.trace(home, self.touched, "-e", f"inject={name}:error={error}:when={nth}")
            wait_for(lambda: not program.is_running() or self.is_quiet(log), PATIENCE)
            program.must_run(when)
            try:
                program.end(within=PATIENCE)
            finally:
                program.kill()
            self.missed += "INJECTED" not in log.read_text(errors="replace")
            self.must_leave_nothing(home, when, but=".unfinished" if name in FINISHED_LATER else None)
            state = self.restarted(home, when)
            self.must_leave_nothing(home, f"{when} and the next start")
            return state

        return "{} calls failed, one in each run; after the next start the file was {}.".format(
            *self.everywhere("after a failed", run))

    @staticmethod
    def must_leave_nothing(home, when, but=None):
        left = [file for file in home.leftovers() if not but or not file.endswith(but)]
        require(not left, f"{', '.join(left)} stayed behind {when}")

    def open_to_others(self, home):
        """What the save has made, the file or something beside it, and others may read."""
        file = home.file(self.name)
        made = [(found, found.stat()) for found in file.parent.glob(file.name + "*")]
        return [found.name for found, status in made if status.st_ino != self.before and status.st_mode & 0o077]

    def everywhere(self, how, run):
        """How many calls there are, and what was found after the runs."""
        self.touched = self.paths()
        self.missed = 0
        positions = self.positions(self.touched)
        states = collections.Counter()
        short = []
        for name, nth in positions:
            try:
                states[run(name, nth, f"{how} {name} number {nth}")] += 1
            except FallsShort as problem:
                short.append(str(problem))
        require(not short, f"{len(short)} of {len(positions)} times, the first: {(short or [''])[0]}")
        reached = len(positions) - self.missed
        require(reached > len(positions) / 2, f"Only {reached} of {len(positions)} calls came about")
        return reached, tell(states)

    def restarted(self, home, when):
        """What the file holds after a start that finds no gateway tool."""
        (TOOLS / "duskrell").unlink(missing_ok=True)  # else the next start would write a new document
        program = Program(home).listens()
        try:
            state = self.judge(home, when)
            program.end(within=PATIENCE)  # and with it what it saves itself
            return state
        finally:
            program.kill()


def tell(states):
    return ", ".join(f"{state} {count} times" for state, count in sorted(states.items()))
