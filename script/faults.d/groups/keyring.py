"""Secrets and the keyring"""

import json
import subprocess
import time

from prompter import Prompter
from row import require, row
from session import Bus
from world import Home, Program, ctl, freeze, get, link_to, must_serve, send_link, thaw, wait_for

GATEWAY = "http://127.0.0.9:1"
SECRETS = ".ostrelle/secrets.json"


def session(keyring=True, unlocked=True):
    home = Home()
    home.configure(saved=[("Old", "http://127.0.0.8:1")])
    bus = Bus(home)
    if keyring:
        bus.start_keyring(unlocked)
    return home, bus


def start(home, bus, *arguments):
    return Program(home, *arguments, DBUS_SESSION_BUS_ADDRESS=bus.address).listens()


def must_be_nowhere(home, secret, program):
    """The token is in no file of the home but the keyring's own, in no log, on no command line."""
    found = subprocess.run(["grep", "-rlFa", secret, str(home.path), str(home.runtime)], capture_output=True, text=True).stdout
    require(not found, f"The token is in {found.strip()}")
    require(secret not in program.output(), "The token is in the log")
    lines = subprocess.run("cat /proc/[0-9]*/cmdline", shell=True, capture_output=True).stdout
    require(secret.encode() not in lines, "The token is on a command line")


def send(home, bus, url, token):
    send_link(home, link_to(url, token), DBUS_SESSION_BUS_ADDRESS=bus.address)


@row(seconds=40, quick=True)
def token_in_the_keyring():
    """A link with a token comes while the keyring answers.

    The keyring has it; it is in no file, no log and on no command line.
    """
    home, bus = session()
    program = start(home, bus)
    send(home, bus, GATEWAY, "sEcReT-one")
    require(wait_for(lambda: bus.token(GATEWAY) == "sEcReT-one"), "The keyring does not have it")
    must_be_nowhere(home, "sEcReT-one", program)
    program.end()
    return "Only the keyring has it."


@row(seconds=60)
def frozen_keyring():
    """The keyring is stopped (STOP) before the program starts; ostrellectl asks for tokens, and a link with one comes; then
    the keyring goes on (CONT).

    ostrellectl is told that they are not known; the program serves, the token is kept in the owner's file meanwhile and is
    moved to the keyring afterwards.
    """
    home, bus = session()
    freeze(bus.keyring)
    program = start(home, bus)
    for asked in "status", "gateways":
        require("unknown" in ctl(home, asked)[1], f"ostrellectl {asked} tells of tokens")
    send(home, bus, GATEWAY, "sEcReT-two")
    must_serve("while the keyring hangs")
    require(wait_for(lambda: b"sEcReT-two" in (home.read(SECRETS) or b""), 15), "The token is not kept meanwhile")
    mode = home.file(SECRETS).stat().st_mode & 0o777
    require(mode == 0o600, f"The file has mode {mode:o}")
    thaw(bus.keyring)
    require(wait_for(lambda: b"sEcReT-two" not in (home.read(SECRETS) or b""), 30, 0.3), "It stays in the file")
    require(bus.token(GATEWAY) == "sEcReT-two", "The keyring does not have it")
    took = program.end()
    return f"In the file, mode 600, then in the keyring only; it ended in {took:.1f} s."


@row(seconds=40, quick=True)
def term_with_a_frozen_keyring():
    """The keyring is stopped while the program talks to it, and TERM comes.

    The program is gone within a moment.
    """
    home, bus = session()
    program = start(home, bus)
    freeze(bus.keyring)
    for number in range(5):
        send(home, bus, f"http://127.0.0.9:{number + 1}", "t")
    must_serve("while the keyring hangs")
    return f"Gone after {program.end():.1f} s."


@row(seconds=60)
def locked_keyring():
    """The keyring is locked, nobody is there to unlock it, and a link with a token comes.

    The token is written to no file; one line says that it was not saved.
    """
    home, bus = session()
    start(home, bus, link_to("http://127.0.0.8:1", "first")).end()
    bus.lock_keyring()
    program = start(home, bus)
    send(home, bus, GATEWAY, "sEcReT-three")
    require(program.wait_for("Token not saved", 15), "No line says that it was not saved")
    must_be_nowhere(home, "sEcReT-three", program)
    took = program.end()
    return f"In no file; the log says: {program.wait_for('Token not saved')}. It ended in {took:.1f} s."


@row(seconds=60)
def dismissed_prompt():
    """The keyring (a real one) is locked when a token is set, and the user dismisses its prompt, twice; the third time he
    gives the password.

    He is asked once each time and never in between, is told each time that the token was not kept, the older token stays in
    use, and the third one is in the keyring.
    """
    home, bus = session(keyring=False)
    home.configure(gateway=GATEWAY)
    user = Prompter(bus)
    bus.start_keyring(**user.variables)
    program = start(home, bus, link_to(GATEWAY, "first"))
    saved = wait_for(lambda: bus.token(GATEWAY) == "first" and bus.token("_active_") == "first")
    require(saved, "The keyring does not have the first token")
    require(get("/history", headers="Authorization: Bearer first\r\n")[0] == 200, "The first token is not in use")
    bus.lock_keyring()
    for turn in (1, 2):
        user.will("cancel")
        told = ctl(home, "token", "set", text=f"sEcReT-{turn}")
        require(told[0] and "Token not saved" in told[1], f"It is told that {told[1]}")
        time.sleep(7)  # two polls, each of which may want the token
        require(user.prompts() == turn, f"{user.prompts()} prompts for {turn} attempts")
        must_serve("with a locked keyring")
    must_be_nowhere(home, "sEcReT", program)
    require(get("/history", headers="Authorization: Bearer first\r\n")[0] == 200, "The first token is no longer in use")
    user.will("test password")
    require(ctl(home, "token", "set", text="third")[0] == 0, "The token is not kept though the user gives the password")
    require(bus.token(GATEWAY) == "third", "The keyring does not have the third token")
    return f"{user.prompts()} prompts in all. He was told: {told[1]}. It ended in {program.end():.1f} s."


@row(seconds=120)
def restarted_keyring():
    """The keyring is killed and started 30 times; a token comes after each third start.

    All tokens are kept; of descriptors, threads and children there are at most two more than after the first.
    """
    home, bus = session()
    program = start(home, bus)
    send(home, bus, GATEWAY, "first")
    require(wait_for(lambda: bus.token(GATEWAY) == "first"), "The first token is not kept")
    program.rest()
    calm = program.open_things()
    for turn in range(30):
        bus.stop_keyring()
        bus.start_keyring()
        if turn % 3 == 2:
            send(home, bus, GATEWAY, f"token-{turn}")
            require(wait_for(lambda: bus.token(GATEWAY) == f"token-{turn}"), f"Token {turn} is not kept")
    told = program.must_come_back(calm)
    return f"All tokens were kept; {told}. It ended in {program.end():.1f} s."


@row(seconds=60)
def keyring_comes_late():
    """The program starts without a keyring and gets a token; then the keyring is started.

    The token is in the owner's file first, then in the keyring and no longer in the file.
    """
    home, bus = session(keyring=False)
    program = start(home, bus)
    send(home, bus, GATEWAY, "sEcReT-four")
    require(wait_for(lambda: b"sEcReT-four" in (home.read(SECRETS) or b"")), "It is not in the file")
    bus.start_keyring()
    began = time.monotonic()
    require(wait_for(lambda: b"sEcReT-four" not in (home.read(SECRETS) or b""), 30, 0.3), "It stays in the file")
    require(bus.token(GATEWAY) == "sEcReT-four", "The keyring does not have it")
    took = time.monotonic() - began
    program.end()
    return f"Moved {took:.1f} s after the keyring was there."


@row(seconds=60)
def keyring_killed_while_saving():
    """20 tokens come one after the other, and the keyring is killed in the middle of each save; then it is back.

    No token is lost: each is in the keyring or in the owner's file.
    """
    home, bus = session()
    program = start(home, bus)
    urls = [f"http://127.0.0.9:{number + 1}" for number in range(20)]
    for number, url in enumerate(urls):
        send(home, bus, url, f"token-{number}")
        time.sleep(0.004 * number)
        bus.stop_keyring()
        bus.start_keyring()
    time.sleep(3)
    kept = json.loads(home.read(SECRETS) or b"{}")
    lost = [url for number, url in enumerate(urls)
            if f"token-{number}" not in (bus.token(url), kept.get(f"gateway-token:{url}"))]
    require(not lost, f"{len(lost)} of 20 tokens are lost: {', '.join(lost[:3])}")
    program.end()
    return f"All 20 are there, {sum(url in key for key in kept for url in urls)} of them in the file."


@row(seconds=60)
def tokens_of_an_old_configuration():
    """config.json of an older version holds a token; the keyring is stopped at the start and goes on 5 s later.

    The token stays in the file until the keyring, or the owner's file, has it, and is then taken out.
    """
    home, bus = session()
    home.configure(token="sEcReT-old")
    url = home.config()["gateway"]["url"]
    freeze(bus.keyring)
    program = start(home, bus)
    time.sleep(5)
    somewhere = home.read(".ostrelle/config.json") + (home.read(SECRETS) or b"")
    require(b"sEcReT-old" in somewhere, "It is nowhere while the keyring hangs")
    thaw(bus.keyring)
    require(wait_for(lambda: bus.token(url) == "sEcReT-old", 40, 0.3), "The keyring does not have it")
    require(b"sEcReT-old" not in home.read(".ostrelle/config.json"), "It stays in config.json")
    program.end()
    return "Somewhere at all times; in the keyring in the end."


@row(seconds=40)
def history_without_the_keyring():
    """The token of the gateway is in the keyring, which is killed, or stopped; somebody asks for the history without one.

    401 each time: what cannot be asked opens nothing.
    """
    home, bus = session()
    home.configure(gateway=GATEWAY)
    program = start(home, bus, link_to(GATEWAY, "s3cret"))
    require(wait_for(lambda: bus.token(GATEWAY) == "s3cret"), "The keyring does not have it")
    require(wait_for(lambda: get("/history")[0] == 401), "Open although there is a token")
    freeze(bus.keyring)
    require(get("/history", seconds=20)[0] in (401, 0), "Open while the keyring hangs")
    thaw(bus.keyring)
    bus.stop_keyring()
    program.end(within=3)
    program = start(home, bus)
    require(get("/history", seconds=20)[0] == 401, "Open while there is no keyring")
    program.end()
    return "401 each time."
