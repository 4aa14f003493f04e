"""What a row plays with: a home, the program, its gateway; session.py has the desktop."""

import contextlib
import json
import os
import pathlib
import re
import resource
import signal
import socket
import subprocess
import time

from row import FallsShort, NotHere, require

PROJECT = pathlib.Path(__file__).resolve().parents[2]
BUILD = PROJECT / "build"
TOOLS = pathlib.Path("/usr/local/bin")  # the row's own, and where the program looks for tools first
STATUS_PORT, VOICE_PORT, GATEWAY_PORT = 18794, 18790, 18789
MOMENT = 1.5  # seconds: one that the program may take, and what a busy machine adds
PATIENCE = 20  # seconds for what is only waited for, not judged
SYNC = 30  # seconds between two passes over the gateway's tool
NEW_GATEWAY = "http://127.0.0.9:1"  # where nobody answers

DOCUMENTS = {
    "status": ".ostrelle/ostrelle-agent-tracker.json",
    "cron": ".ostrelle/ostrelle-cron-tracker.json",
    "projects": ".ostrelle/ostrelle-project-tracker.json",
}
PREFERENCES = ".config/ai.duskrell.ostrelle.conf"


def wait_for(condition, seconds=PATIENCE, step=0.05):
    """What the condition returns once that is true, or the last thing it returned."""
    end = time.monotonic() + seconds
    while not (value := condition()) and time.monotonic() < end:
        time.sleep(step)
    return value


def is_alive(pid):
    with contextlib.suppress(OSError):
        return pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()[0] not in "ZX"
    return False


def children_of(pid):
    """The numbers of all that it has started, and of what those have."""
    found = []
    for stat in pathlib.Path("/proc").glob("[0-9]*/stat"):
        with contextlib.suppress(OSError):
            fields = stat.read_text().rpartition(")")[2].split()
            if int(fields[1]) == pid and fields[0] not in "ZX":
                child = int(stat.parent.name)
                found += [child, *children_of(child)]
    return found


def command_of(pid):
    """Its command line, word by word; nothing once it has gone."""
    with contextlib.suppress(OSError):
        return pathlib.Path(f"/proc/{pid}/cmdline").read_bytes().decode(errors="replace").split("\0")
    return []


def another_user():
    """The number of a user who is not the one that runs the row."""
    if os.geteuid() != 0 or open("/proc/self/uid_map").read().split()[2] == "1":
        raise NotHere("It takes two users, so root has to run the row")
    return 65534


class Home:
    def __init__(self, path="/tmp/home", user=None):
        self.path = pathlib.Path(path)
        self.user = user
        self.path.mkdir(mode=0o700, parents=True, exist_ok=True)
        self.runtime = pathlib.Path(f"{path}.run")
        self.runtime.mkdir(mode=0o700, exist_ok=True)

    def file(self, relative):
        return self.path / relative

    def read(self, relative):
        """None where there is nothing."""
        with contextlib.suppress(FileNotFoundError, NotADirectoryError):
            return self.file(relative).read_bytes()
        return None

    def write(self, relative, content, mode=0o600):
        file = self.file(relative)
        file.parent.mkdir(mode=0o700, parents=True, exist_ok=True)
        file.write_bytes(content.encode() if isinstance(content, str) else content)
        file.chmod(mode)
        return file

    def configure(self, status=STATUS_PORT, voice=False, gateway=f"http://127.0.0.1:{GATEWAY_PORT}", saved=(), token=None):
        config = {
            "gateway": {"url": gateway, "saved": [{"name": name, "url": url} for name, url in saved]},
            "ports": {"status": status, "voiceAgent": VOICE_PORT},
            "voice": {"enabled": voice, "venvPath": "~/.ostrelle/venv"},
            "paths": {"statusFile": "~/" + DOCUMENTS["status"], "trackerFile": "~/" + DOCUMENTS["projects"],
                      "cronFile": "~/" + DOCUMENTS["cron"]},
        }
        if token:
            config["gateway"]["token"] = token
        self.write(".ostrelle/config.json", json.dumps(config))

    def config(self):
        """The configuration in the file; None where it cannot be understood."""
        try:
            return json.loads(self.read(".ostrelle/config.json") or b"")
        except ValueError:
            return None

    def play(self, **members):
        """Directs the simulator; see tools/gateway-simulator/README.md."""
        self.write(".duskrell/simulator.json", json.dumps(members))

    def environment(self, **more):
        variables = {"HOME": str(self.path), "XDG_RUNTIME_DIR": str(self.runtime), "PATH": os.environ["PATH"],
                     "LANG": "C.UTF-8", "DBUS_SESSION_BUS_ADDRESS": "disabled:",
                     "FAULT": os.environ.get("FAULT"), **more}  # which script/mutate chooses
        return {name: value for name, value in variables.items() if value is not None}

    def leftovers(self):
        """Files that were to be there for the time of a save only."""
        return [str(file.relative_to(self.path)) for file in self.path.rglob("*")
                if re.search(r"\.(new|written\d*|unfinished)$", file.name)]


def install_tool(name, body):
    """Puts a program where the program looks for its tools: a script, or a link to one of ours."""
    tool = TOOLS / name
    with contextlib.suppress(FileNotFoundError):
        tool.unlink()
    if isinstance(body, pathlib.Path):
        tool.symlink_to(body)
        return
    tool.write_text("#!/bin/sh\n" + body + "\n")
    tool.chmod(0o755)


def install_gateway_tool():
    install_tool("duskrell", BUILD / "duskrell")


def sessions(count=1, model="atlas"):
    """What a gateway tool prints for so many sessions."""
    return json.dumps({"sessions": [{"key": f"agent:a{i}:main", "agentId": f"a{i}", "model": model}
                                    for i in range(count)]})


def install_sessions(count=1, jobs='{"jobs":[]}'):
    """A gateway tool with so many sessions, and these jobs."""
    install_tool("duskrell", f"case \"$1\" in sessions) echo '{sessions(count)}' ;; cron) echo '{jobs}' ;; esac")


def install_agent(home, body):
    """Makes that shell script the home's voice agent; each agent adds its number to the file "agents"."""
    home.write(".ostrelle/voice_agent.py", "")
    # The setup asks it for its packages, which starts no agent.
    home.write(".ostrelle/venv/bin/python", f"#!/bin/sh\n[ \"$1\" = -I ] && exit\necho $$ >> \"$HOME/agents\"\n{body}\n", 0o755)


def numbers(home, file="agents"):
    return [int(word) for word in (home.read(file) or b"").split()]


class Program:
    """The program, from its start until the row ends it, or its sandbox does."""

    def __init__(self, home, *arguments, under=(), output=None, limits=(), cwd=None, umask=-1, **variables):
        self.home = home
        self.log = home.runtime / f"log-{time.monotonic_ns()}"
        self.began = time.monotonic()

        def prepare():
            for limit, value in limits:
                resource.setrlimit(limit, (value, value))

        with open(self.log, "wb") as log:
            self.process = subprocess.Popen(
                [*under, str(BUILD / "ostrelle"), *arguments], env=home.environment(**variables), cwd=cwd or home.path,
                stdin=subprocess.DEVNULL, stdout=output or log, stderr=output or log, umask=umask,
                user=home.user, group=home.user, extra_groups=[] if home.user else None,
                preexec_fn=prepare if limits else None)
        self.pid = self.process.pid

    def output(self):
        return self.log.read_text(errors="replace")

    def wait_for(self, text, seconds=PATIENCE):
        """The first line with that text, or None; also None once the program has ended without one."""
        def find():
            ended = self.process.poll() is not None
            line = next((line for line in self.output().splitlines() if text in line), None)
            return line or ("" if ended else None)
        end = time.monotonic() + seconds
        while (line := find()) is None and time.monotonic() < end:
            time.sleep(0.03)
        return line or None

    def listens(self, seconds=PATIENCE):
        require(self.wait_for("[StatusServer] Listening on port", seconds),
                f"It does not listen within {seconds} s; its log: {self.tail()}")
        return self

    def tail(self):
        return " / ".join(self.output().splitlines()[-3:])

    def is_running(self):
        return self.process.poll() is None

    def must_run(self, while_what):
        require(self.is_running(), f"It ended with {self.process.poll()} {while_what}: {self.tail()}")

    def end(self, signal_number=signal.SIGTERM, within=MOMENT):
        """Seconds from the signal to the end, which has to come in time and with status 0."""
        began = time.monotonic()
        self.process.send_signal(signal_number)
        try:
            status = self.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            raise FallsShort(f"It did not end within {PATIENCE} s of {signal.Signals(signal_number).name}") from None
        took = time.monotonic() - began
        require(took <= within, f"It ended {took:.1f} s after {signal.Signals(signal_number).name}")
        require(signal_number == signal.SIGKILL or status == 0, f"It ended with status {status}")
        return took

    def kill(self):
        with contextlib.suppress(ProcessLookupError):
            self.process.kill()
        self.process.wait()

    def descriptors(self):
        return len(os.listdir(f"/proc/{self.pid}/fd"))

    def threads(self):
        return len(os.listdir(f"/proc/{self.pid}/task"))

    def allow_threads(self, count):
        """How many processes and threads its user may have; what runs goes on."""
        subprocess.run(["prlimit", f"--pid={self.pid}", f"--nproc={count}:"], user=self.home.user, group=self.home.user, check=True)

    def children(self):
        return children_of(self.pid)

    def runs_of(self, tool):
        """How many processes of its that tool is at the moment."""
        return sum(str(TOOLS / tool) in command_of(child)[:2] for child in self.children())

    def open_things(self):
        """What it has open: descriptors, threads and children."""
        return {"descriptors": self.descriptors(), "threads": self.threads(), "children": len(self.children())}

    def must_come_back(self, before, more=2, seconds=PATIENCE):
        """Waits until it has open what it had, and of nothing more than so much beyond; tells what it has."""
        def is_back():
            return all(count <= before[thing] + more for thing, count in self.open_things().items())
        back = wait_for(is_back, seconds, 0.2)
        told = ", ".join(f"{count} {thing}, {before[thing]} before" for thing, count in self.open_things().items())
        require(back, told)
        return told

    def processor_seconds(self):
        """How long it has had a processor since its start."""
        fields = pathlib.Path(f"/proc/{self.pid}/stat").read_text().rpartition(")")[2].split()
        return sum(map(int, fields[11:13])) / os.sysconf("SC_CLK_TCK")

    def megabytes(self):
        """What it has written to memory of its own.

        What it has only read is left out: a library's pages would count while no other program uses that library.
        """
        text = pathlib.Path(f"/proc/{self.pid}/smaps_rollup").read_text()
        return sum(int(kb) for kb in re.findall(r"(?:Private_Dirty|Swap): +(\d+)", text)) / 1024

    def rest(self, seconds=15):
        """How many descriptors are open once the start is over: no change for a second and a half."""
        end = time.monotonic() + seconds
        count, since = self.descriptors(), time.monotonic()
        while time.monotonic() - since < 1.5 and time.monotonic() < end:
            time.sleep(0.1)
            if (now := self.descriptors()) != count:
                count, since = now, time.monotonic()
        return count

    def calm_descriptors(self, at_most, seconds=PATIENCE):
        """How many are open once there are not more than that, or the time is over."""
        wait_for(lambda: self.descriptors() <= at_most, seconds, 0.2)
        return self.descriptors()


def send_link(home, link, **variables):
    """Opens a link as the desktop does; the running program takes it. The seconds that took."""
    other = Program(home, link, **variables)
    status = other.process.wait(PATIENCE)
    require(status == 0, f"The start with a link ended with {status}: {other.tail()}")
    return time.monotonic() - other.began


def link_to(url, token=None):
    return f"ostrelle://config?gatewayBaseURL={url}" + (f"&token={token}" if token else "")


def ctl(home, *arguments, text=""):
    """What ostrellectl, with these arguments, was told by the running program: its status and its words."""
    told = subprocess.run([str(BUILD / "ostrellectl"), *arguments], env=home.environment(), input=text, capture_output=True,
                          text=True, timeout=PATIENCE)
    return told.returncode, (told.stdout + told.stderr).strip()


def exchange(request, port=STATUS_PORT, seconds=10, address="127.0.0.1"):
    """Everything that the server answers until it closes."""
    with socket.create_connection((address, port), seconds) as client:
        client.settimeout(seconds)
        client.sendall(request)
        answer = bytearray()
        while part := client.recv(1 << 16):
            answer += part
    return bytes(answer)


def get(path, port=STATUS_PORT, seconds=10, headers=""):
    """Status and body; (0, reason) where there is no answer."""
    try:
        answer = exchange(f"GET {path} HTTP/1.1\r\nHost: here\r\n{headers}\r\n".encode(), port, seconds)
    except OSError as problem:
        return 0, str(problem).encode()
    head, _, body = answer.partition(b"\r\n\r\n")
    return (int(head.split()[1]) if head.startswith(b"HTTP/") else 0), body


def connections(port=STATUS_PORT):
    """How many clients the program has, as the system's table tells."""
    lines = pathlib.Path("/proc/net/tcp").read_text().splitlines() + pathlib.Path("/proc/net/tcp6").read_text().splitlines()
    return sum(fields[1].endswith(f":{port:04X}") and fields[3] == "01" for fields in map(str.split, lines[1:]))


def timed_get(path, **options):
    began = time.monotonic()
    status, body = get(path, **options)
    return status, body, time.monotonic() - began


def must_serve(while_what, within=MOMENT):
    """The status server answers, and soon."""
    status, body, took = timed_get("/health")
    require(status == 200, f"No answer to /health {while_what}: {body.decode(errors='replace')}")
    require(took <= within, f"/health took {took:.1f} s {while_what}")
    return took


def document(name):
    """The document that the status server gives, or None where it is no whole one."""
    status, body = get(f"/{name}")
    try:
        return json.loads(body) if status == 200 else None
    except ValueError:
        return None


def spawn(command, home=None, **options):
    """A process that the sandbox ends with everything else."""
    options.setdefault("stdout", subprocess.DEVNULL)
    options.setdefault("stderr", subprocess.DEVNULL)
    options.setdefault("stdin", subprocess.DEVNULL)
    return subprocess.Popen(command, env=options.pop("env", home.environment() if home else None), **options)


def freeze(process):
    os.kill(process.pid, signal.SIGSTOP)


def thaw(process):
    os.kill(process.pid, signal.SIGCONT)


class Gateway:
    """The simulator's HTTP service."""

    def __init__(self, home, port=GATEWAY_PORT):
        self.home = home
        self.port = port
        self.start()

    def start(self):
        self.process = spawn([str(BUILD / "duskrell"), "serve", "--port", str(self.port)], self.home)
        require(wait_for(lambda: get("/health", self.port)[0]), "The simulated gateway does not start")

    def stop(self):
        self.process.kill()
        self.process.wait()

    def asked(self, target="/health"):
        """How often the program has asked for that; record=True has to be played."""
        record = self.home.read(".duskrell/simulator-record.jsonl") or b""
        lines = [json.loads(line) for line in record.splitlines() if line.endswith(b"}")]
        return sum(line.get("target") == target for line in lines)

    def must_be_asked(self, when, within, target="/health"):
        began = time.monotonic()
        before = self.asked(target)
        require(wait_for(lambda: self.asked(target) > before, within), f"Nothing asks for {target} within {within} s {when}")
        return time.monotonic() - began
