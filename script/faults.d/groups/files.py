"""Files"""

import json
import os
import subprocess
import time

from row import require, row
from world import (DOCUMENTS, MOMENT, NEW_GATEWAY, PREFERENCES, Home, Program, another_user, document, get, install_tool,
                   link_to, must_serve, send_link, timed_get, wait_for)


@row(seconds=30, quick=True)
def strange_documents():
    """The documents are a named pipe, a folder, a 300 MB file with a hole, a link to itself, a device, nothing.

    Each answers 404 within a moment; nothing hangs, and a good file is served right after.
    """
    home = Home()
    home.configure()
    install_tool("duskrell", "exit 1")
    program = Program(home).listens()
    path = home.file(DOCUMENTS["status"])

    def sparse():
        with open(path, "wb") as file:
            file.truncate(300 << 20)

    slowest = 0
    for name, make in {"pipe": lambda: os.mkfifo(path), "folder": lambda: os.mkdir(path), "huge file": sparse,
                       "link to itself": lambda: os.symlink(path, path), "device": lambda: os.symlink("/dev/zero", path),
                       "nothing": lambda: None}.items():
        subprocess.run(["rm", "-rf", str(path)], check=True)
        make()
        status, _, took = timed_get("/status")
        require(status == 404 and took < 1.5, f"{name}: {status} after {took:.1f} s")
        slowest = max(slowest, took)
    home.write(DOCUMENTS["status"], '{"agents":{}}')
    require(document("status") == {"agents": {}}, "A good file is not served afterwards")
    program.end()
    return f"404 each time, after {slowest * 1000:.0f} ms at most; then the good file."


STRANGE_FILES = {
    "a pipe": os.mkfifo,
    "a folder": os.mkdir,
    "a device": lambda path: os.symlink("/dev/zero", path),
    "a link to itself": lambda path: os.symlink(path, path),
    "100 MB of nothing": lambda path: (path.touch(), os.truncate(path, 100 << 20)),
    "100 MB of braces": lambda path: path.write_bytes(b'{"a":' * (20 << 20)),
}


@row(seconds=110)
def strange_files():
    """Each file that the program reads (configuration, preferences, secrets, the gateway's own settings, the session log, the
    lock) is a pipe, a folder, a device, a link to itself, 100 MB of nothing or of braces at the start.

    It listens within a moment, answers for the history, keeps 40 MB at most, takes a link, and ends within a moment.
    """
    names = (".ostrelle/config.json", PREFERENCES, ".ostrelle/secrets.json", ".duskrell/duskrell.json",
             ".duskrell/agents/main/sessions/one.jsonl", ".ostrelle/run/ostrelle.lock")
    slowest = most = 0
    install_tool("duskrell", "exit 1")
    for name in names:
        for kind, make in STRANGE_FILES.items():
            home = Home(f"/tmp/home-{name.rpartition('/')[2]}-{kind}".replace(" ", "-"))
            home.configure()
            file = home.file(name)
            file.parent.mkdir(mode=0o700, parents=True, exist_ok=True)
            file.unlink(missing_ok=True)
            make(file)
            what = f"with {name} as {kind}"
            program = Program(home)
            require(wait_for(lambda: get("/health")[0] == 200, 5), f"It does not serve {what}: {program.tail()}")
            slowest = max(slowest, time.monotonic() - program.began)
            require(get("/history", seconds=5)[0] in (200, 401, 404), f"No answer for the history {what}")
            send_link(home, link_to(NEW_GATEWAY, "t0ken"))
            time.sleep(0.3)
            most = max(most, program.megabytes())
            must_serve(what)
            program.end()
            subprocess.run(["rm", "-rf", str(home.path)], check=True)
    require(slowest < MOMENT and most < 40, f"Up after {slowest:.1f} s at most, {most:.0f} MB at most")
    return f"{len(names) * len(STRANGE_FILES)} starts: up after {slowest:.1f} s at most, {most:.0f} MB at most."


@row(seconds=30, quick=True)
def broken_config():
    """config.json is cut in the middle at the start; then a link comes.

    The broken file is kept under another name before anything is written over it, and one line says so.
    """
    home = Home()
    home.configure(saved=[("Kept", "http://127.0.0.8:1")])
    whole = home.read(".ostrelle/config.json")
    home.write(".ostrelle/config.json", whole[:-20])
    program = Program(home).listens()
    send_link(home, link_to(NEW_GATEWAY))
    require(wait_for(lambda: NEW_GATEWAY in json.dumps(home.config())), "The link is not saved")
    kept = [file for file in home.file(".ostrelle").iterdir() if file.is_file() and file.read_bytes() == whole[:-20]]
    require(kept, "The broken file was written over; its saved gateways are lost")
    require("config.json" in program.output(), "No line says so")
    program.end()
    return f"Kept as {kept[0].name}; the log says so."


@row(seconds=30, quick=True)
def broken_secrets():
    """secrets.json is cut in the middle, without a keyring, when a token comes.

    The broken file is kept under another name, the token is saved, and only the user may read both.
    """
    home = Home()
    home.configure()
    home.write(".ostrelle/secrets.json", '{"gateway-token:x": "old')
    program = Program(home).listens()
    send_link(home, link_to(NEW_GATEWAY, "t0ken"))
    require(wait_for(lambda: b"t0ken" in (home.read(".ostrelle/secrets.json") or b"")), "The token is not saved")
    require(home.read(".ostrelle/secrets.json.broken") == b'{"gateway-token:x": "old', "The broken file is lost")
    modes = {file.stat().st_mode & 0o077 for file in home.file(".ostrelle").glob("secrets*")}
    require(modes == {0}, "Others may read them")
    program.end()
    return "Kept as secrets.json.broken; the token was saved; nobody else may read either."


@row(seconds=40)
def changed_while_running():
    """config.json is replaced 50 times by editors (renamed over, emptied first, removed and made again) while links come.

    The program goes on, and what the last link set is in the file.
    """
    home = Home()
    home.configure()
    program = Program(home).listens()
    content = home.read(".ostrelle/config.json")
    file = home.file(".ostrelle/config.json")
    for turn in range(50):
        if turn % 3 == 0:
            home.write(".ostrelle/config.json.editor", content).rename(file)
        elif turn % 3 == 1:
            file.write_bytes(b"")
            file.write_bytes(content)
        else:
            file.unlink(missing_ok=True)
            file.write_bytes(content)
        if turn % 10 == 0:
            send_link(home, link_to(f"http://127.0.0.9:{turn + 1}"))
    send_link(home, link_to(NEW_GATEWAY))
    require(wait_for(lambda: NEW_GATEWAY in json.dumps(home.config())), "The last link is not in the file")
    return f"The last link was saved; it ended in {program.end():.1f} s."


@row(seconds=60)
def files_of_root():
    """The program was once started as root, and left files of root's in the user's folders, which he cannot read: lock, socket,
    configuration, preferences, secrets, documents, PID file, and halves of saves.

    Started as the user it serves, takes a link, says what cannot be saved, changes none of these files, and ends.
    """
    uid = another_user()
    home = Home("/tmp/theirs")
    home.configure(voice=True, saved=[("Old", "http://127.0.0.8:1")])
    home.write(PREFERENCES, "[General]\nautoStartVoice=true\n")
    home.write(".ostrelle/secrets.json", "{}")
    home.write(".ostrelle/voice-agent.pid", "1")
    Program(home).listens().kill()
    for name in (".ostrelle/config.json.unfinished", ".ostrelle/secrets.json.new", PREFERENCES + ".new"):
        home.write(name, "half")
    folders = [folder for place in (home.path, home.runtime) for folder in [place, *place.rglob("*")] if folder.is_dir()]
    subprocess.run(["chown", str(uid), *map(str, folders)], check=True)
    before = {file: file.read_bytes() for file in home.path.rglob("*") if file.is_file()}
    home.user = uid
    program = Program(home).listens()
    send_link(home, link_to(NEW_GATEWAY, "t0ken"))
    must_serve("among files of root's")
    time.sleep(3)
    took = program.end()
    changed = [file.name for file, content in before.items() if not file.exists() or file.read_bytes() != content]
    require(not changed, f"Changed: {', '.join(changed)}")
    told = [line for line in program.output().splitlines() if "not saved" in line]
    require(len(told) == 2, f"It does not say what was not saved: {program.tail()}")
    return f"None was changed; {len(told)} lines tell what was not saved; it ended in {took:.1f} s."
