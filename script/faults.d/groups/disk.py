"""Disks"""

import contextlib
import json
import os
import subprocess
import threading
import time

from row import require, row
from world import (DOCUMENTS, MOMENT, NEW_GATEWAY, PREFERENCES, SYNC, Home, Program, document, get, install_sessions,
                   install_tool, is_alive, link_to, must_serve, send_link, spawn, timed_get, wait_for)


class SmallDisk:
    """A home on a disk of its own, which can be filled, emptied, made read-only and taken away."""

    def __init__(self, options="size=2m"):
        self.place = "/tmp/home"
        os.mkdir(self.place, 0o700)
        self.mount("-t", "tmpfs", "-o", "mode=700," + options, "none", self.place)
        self.home = Home(self.place)

    @staticmethod
    def mount(*arguments):
        subprocess.run(["mount", *arguments], check=True)

    def fill(self):
        with contextlib.suppress(OSError), open(f"{self.place}/filler", "wb", buffering=0) as filler:
            while filler.write(b"x" * 4096):
                pass

    def use_inodes(self):
        os.mkdir(f"{self.place}/fillers")
        with contextlib.suppress(OSError):
            for number in range(100000):
                os.close(os.open(f"{self.place}/fillers/{number}", os.O_CREAT, 0o600))

    def make_room(self):
        for filler in [f"{self.place}/filler", f"{self.place}/fillers"]:
            subprocess.run(["rm", "-rf", filler], check=True)

    def set_writable(self, writable):
        self.mount("-o", f"remount,bind,{'rw' if writable else 'ro'}", self.place)


def must_serve_documents(within):
    missing = lambda: [name for name in DOCUMENTS if not document(name)]
    require(wait_for(lambda: not missing(), within, 0.5), f"Not served after {within} s: {', '.join(missing())}")


@row(seconds=40, quick=True)
def full_disk_config():
    """The home's disk is full when a link names another gateway; then there is room again, and another link comes.

    The old configuration stays whole; what the links have set holds, and both are in the file once there is room.
    """
    disk = SmallDisk()
    disk.home.configure(saved=[(f"Old {i}", f"http://127.0.0.8:{i}") for i in range(1, 61)])
    program = Program(disk.home).listens()
    disk.fill()
    before = disk.home.read(".ostrelle/config.json")
    send_link(disk.home, link_to(NEW_GATEWAY))
    require(program.wait_for("not saved", 5), "No line says that nothing was saved")
    require(disk.home.read(".ostrelle/config.json") == before, "The old configuration was damaged")
    must_serve("with a full disk")
    disk.make_room()
    send_link(disk.home, link_to(NEW_GATEWAY + "2"))
    config = wait_for(lambda: (found := disk.home.config()) and found["gateway"]["url"] == NEW_GATEWAY + "2" and found)
    require(config, "The next link is not saved though there is room")
    urls = {entry["url"] for entry in config["gateway"]["saved"]}
    require({"http://127.0.0.8:60", NEW_GATEWAY, NEW_GATEWAY + "2"} <= urls, f"Saved gateways were lost: {sorted(urls)}")
    return f"The old file stayed; {len(urls)} gateways were in it after the next link. It ended in {program.end():.1f} s."


@row(seconds=90)
def full_disk_documents():
    """The disk is full when the agents' and the jobs' documents are to grow; later there is room.

    The old documents stay whole and are served; the new ones are there at the next pass (30 s).
    """
    disk = SmallDisk()
    disk.home.configure()
    disk.home.write(DOCUMENTS["status"], '{"agents":{"old":{"status":"idle"}}}')
    disk.fill()
    install_sessions(300)
    program = Program(disk.home).listens()
    time.sleep(5)
    require("old" in (document("status") or {}).get("agents", {}), "The old document is not served")
    disk.make_room()
    began = time.monotonic()
    require(wait_for(lambda: "a299" in (document("status") or {}).get("agents", {}), SYNC + 10, 0.5), "No new document")
    took = time.monotonic() - began
    program.end()
    return f"The old document was served; the new one came {took:.0f} s after there was room."


@row(seconds=40)
def full_disk_secrets():
    """Without a keyring, the disk is full when a token comes; then there is room, and it comes again.

    The tokens that were there stay; it is said that this one was not saved; the second time it is.
    """
    disk = SmallDisk()
    disk.home.configure()
    disk.home.write(".ostrelle/secrets.json", json.dumps({"gateway-token:http://127.0.0.8:1": "old"}))
    program = Program(disk.home).listens()
    disk.fill()
    send_link(disk.home, link_to(NEW_GATEWAY, "t" * 5000))
    require(program.wait_for("Token not saved", 5), "No line says that the token was not saved")
    kept = json.loads(disk.home.read(".ostrelle/secrets.json"))
    require(kept.get("gateway-token:http://127.0.0.8:1") == "old", "The old token is lost")
    disk.make_room()
    send_link(disk.home, link_to(NEW_GATEWAY, "t" * 5000))
    require(wait_for(lambda: b"ttttt" in disk.home.read(".ostrelle/secrets.json")), "The token is not saved though there is room")
    program.end()
    return "The old token stayed, a line told of the new one, which was saved when there was room."


@row(seconds=80)
def full_disk_preferences():
    """The disk is full at the first start, which sets a preference; later there is room.

    The preferences that were there stay; the new one is written at the next attempt, within 40 s of there being room.
    """
    disk = SmallDisk()
    disk.home.configure()
    disk.home.write(PREFERENCES, "[General]\nagents.customName.main=Ada\n")
    disk.fill()
    program = Program(disk.home).listens()
    time.sleep(2)
    require(b"Ada" in disk.home.read(PREFERENCES), "A preference is lost")
    disk.make_room()
    began = time.monotonic()
    require(wait_for(lambda: b"projectTrackingEnabled" in disk.home.read(PREFERENCES), 40), "It is not written")
    took = time.monotonic() - began
    require(b"Ada" in disk.home.read(PREFERENCES) and not disk.home.leftovers(), "A preference is lost, or a draft stayed")
    program.end()
    return f"Nothing was lost; written {took:.0f} s after there was room."


@row(seconds=90)
def full_disk_first_start():
    """The very first start finds a full disk; later there is room.

    It listens; the three documents are served at the next pass, within 40 s of there being room.
    """
    disk = SmallDisk()
    disk.fill()
    program = Program(disk.home)
    program.listens()
    must_serve("with a full disk")
    disk.make_room()
    began = time.monotonic()
    must_serve_documents(SYNC + 10)
    program.end()
    return f"It listened; all three documents were served {time.monotonic() - began:.0f} s after there was room."


@row(seconds=90)
def no_inodes_left():
    """The home's disk has no inodes left at the first start; later it has.

    As with a full disk: it listens, and later serves all three documents.
    """
    disk = SmallDisk("size=8m,nr_inodes=200")
    disk.use_inodes()
    program = Program(disk.home)
    program.listens()
    disk.make_room()
    began = time.monotonic()
    must_serve_documents(SYNC + 10)
    program.end()
    return f"All three documents were served {time.monotonic() - began:.0f} s after there were inodes again."


@row(seconds=60, quick=True)
def read_only_home():
    """The home is mounted read-only; a link comes; then it is writable again, and another link comes.

    It serves the documents and the second link is saved, with the gateway of the first.
    """
    disk = SmallDisk()
    disk.home.configure()
    disk.home.write(DOCUMENTS["status"], '{"agents":{"old":{"status":"idle"}}}')
    disk.set_writable(False)
    program = Program(disk.home).listens()
    require(document("status"), "The document is not served")
    send_link(disk.home, link_to(NEW_GATEWAY))
    time.sleep(1)
    program.must_run("on a read-only disk")
    disk.set_writable(True)
    send_link(disk.home, link_to(NEW_GATEWAY + "2"))
    saved = wait_for(lambda: NEW_GATEWAY + "2" in json.dumps(disk.home.config()))
    require(saved and NEW_GATEWAY + '"' in json.dumps(disk.home.config()), "A link is not saved")
    program.end()
    return "Served while read-only; both gateways were saved afterwards."


@row(seconds=90)
def home_removed():
    """Everything in the home is removed while the program runs, and the gateway's tool answers.

    The three documents are served again within two passes (60 s), a link is saved, and TERM ends it.
    """
    home = Home()
    home.configure()
    install_sessions()
    program = Program(home).listens()
    require(wait_for(lambda: document("status")), "No document at the start")
    subprocess.run(["find", str(home.path), "-mindepth", "1", "-delete"], check=True)
    began = time.monotonic()
    must_serve_documents(2 * SYNC + 5)
    took = time.monotonic() - began
    send_link(home, link_to(NEW_GATEWAY))
    require(wait_for(lambda: NEW_GATEWAY in json.dumps(home.config())), "A link is not saved")
    program.end()
    return f"All three were served again after {took:.0f} s; a link was saved."


@row(seconds=100)
def home_gone_and_back():
    """The home's disk is taken away for 10 s while the program runs, and is empty when it comes back.

    The three documents are served again within two passes (60 s).
    """
    disk = SmallDisk()
    disk.home.configure()
    install_sessions()
    program = Program(disk.home, cwd="/").listens()
    require(wait_for(lambda: document("status")), "No document at the start")
    subprocess.run(["umount", "-l", disk.place], check=True)
    os.chmod(disk.place, 0)
    os.rename(disk.place, disk.place + ".away")
    time.sleep(10)
    must_serve("without a home")
    os.rename(disk.place + ".away", disk.place)
    os.chmod(disk.place, 0o700)
    began = time.monotonic()
    must_serve_documents(2 * SYNC + 5)
    took = time.monotonic() - began
    program.end()
    return f"It served without a home; all three documents were there {took:.0f} s after it was back."


def hold_calls_on(file, seconds, program=None, calls="all"):
    """The options that let system calls on the file take so long."""
    return ["strace", "-f", "-qq", "-o", "/dev/null", "-P", str(file), "-e", f"inject={calls}:delay_enter={seconds}s",
            *(["-p", str(program.pid)] if program else ["-D"])]


@row(seconds=40, quick=True)
def hanging_disk():
    """Every system call on the agents' document takes 20 s, as on a network file system that hangs, and is asked for.

    Whoever asks for something else is answered at once, and the program ends within a moment of TERM.
    """
    home = Home()
    home.configure()
    install_tool("duskrell", "exit 1")
    file = home.write(DOCUMENTS["status"], '{"agents":{"old":{"status":"idle"}}}')
    program = Program(home).listens()
    spawn(hold_calls_on(file, 20, program))
    time.sleep(1)
    for _ in range(4):
        threading.Thread(target=get, args=("/status",), kwargs={"seconds": 30}, daemon=True).start()
    time.sleep(0.5)
    slowest = max(must_serve("while /status hangs") for _ in range(20))
    require(timed_get("/projects")[2] < MOMENT, "/projects waits for another document's disk")
    program.process.terminate()
    began = time.monotonic()
    # Who delays a call keeps its thread until that is over; what the program itself is, is a zombie before.
    require(wait_for(lambda: not is_alive(program.pid), MOMENT), "It did not end in time")
    return f"The slowest of 20 other requests took {slowest * 1000:.0f} ms; it ended {time.monotonic() - began:.1f} s after TERM."


@row(seconds=40)
def hanging_disk_at_the_start():
    """Every system call on the agents' document takes 5 s when the program starts.

    It listens within a moment, and answers who asks for something else.
    """
    home = Home()
    home.configure()
    install_tool("duskrell", "exit 1")
    file = home.write(DOCUMENTS["status"], '{"agents":{"old":{"status":"idle"}}}')
    program = Program(home, under=hold_calls_on(file, 5)).listens(30)
    took = time.monotonic() - program.began
    require(took < 2 * MOMENT, f"It listens after {took:.1f} s")
    must_serve("while a disk hangs")
    return f"It listened after {took:.1f} s, under a tracer that slows it."


@row(seconds=60)
def clients_of_a_hanging_disk():
    """A document cannot be read for 35 s; 50 clients wait for it.

    They are dropped after 30 s when the next one comes, and the document is served once it can be read.
    """
    home = Home()
    home.configure()
    install_tool("duskrell", "exit 1")
    file = str(home.write(DOCUMENTS["status"], '{"agents":{"old":{"status":"idle"}}}'))
    program = Program(home).listens()
    tracer = subprocess.Popen(["strace", "-f", "-qq", "-o", "/dev/null", "-P", file, "-p", str(program.pid),
                               "-e", "inject=openat:delay_enter=35000000:when=1"])
    time.sleep(1)
    home.write(DOCUMENTS["status"], '{"agents":{"new":{"status":"idle"}}}')
    idle = program.descriptors()
    threads = [threading.Thread(target=get, args=("/status",), kwargs={"seconds": 50}) for _ in range(50)]
    for thread in threads:
        thread.start()
    require(wait_for(lambda: program.descriptors() >= idle + 50, 5), "The clients were not taken")
    time.sleep(31)
    get("/status", seconds=0.5)
    left = program.calm_descriptors(idle + 10, 3)
    require(left <= idle + 10, f"{left - idle} clients still wait after 31 s")
    require(wait_for(lambda: document("status"), 20, 0.5), "The document is not served though it can be read")
    tracer.terminate()
    tracer.wait()
    program.end(within=3)
    return "All 50 were dropped; the document was served again."
