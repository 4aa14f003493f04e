"""What others answer"""

import contextlib
import http.server
import itertools
import re
import socket
import threading
import time

from row import require, row
from world import (GATEWAY_PORT, MOMENT, STATUS_PORT, VOICE_PORT, Home, Program, ctl, install_tool, link_to, send_link,
                   wait_for)


class HostileServer:
    """Answers with what play() is given: parts of an answer, sent one after the other."""

    def __init__(self, address, port):
        self.parts = lambda: iter(())
        self.socket = socket.create_server((address, port), backlog=64)
        threading.Thread(target=self.listen, daemon=True).start()

    def play(self, parts):
        self.parts = parts

    def listen(self):
        while True:
            client, _ = self.socket.accept()
            threading.Thread(target=self.answer, args=(client, self.parts), daemon=True).start()

    @staticmethod
    def answer(client, parts):
        with client, contextlib.suppress(OSError):
            client.recv(65536)
            for part in parts():
                client.sendall(part)


def drip(text):
    for byte in text:
        yield bytes([byte])
        time.sleep(1)


HEAD = b"HTTP/1.1 200 OK\r\n\r\n"


def agents(count):
    return b'{"agents":{' + b",".join(b'"a%d":{"status":"active"}' % i for i in range(count)) + b"}}"


HOSTILE_ANSWERS = {
    "headers a byte a second": lambda: drip(b"HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\nnonsense"),
    "a body a byte a second": lambda: itertools.chain([HEAD], drip(b'{"agents":{}}' * 9)),
    "headers without end": lambda: itertools.chain([b"HTTP/1.1 200 OK\r\n"], itertools.repeat(b"X: y\r\n" * 10_000)),
    "a body without end": lambda: itertools.chain([HEAD], itertools.repeat(b" " * 1_000_000)),
    "a length beyond all numbers": lambda: [b"HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999999\r\n\r\n{}"],
    "chunks beyond all numbers": lambda: [b"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nffffffffffffffffff\r\n{}"],
    "JSON of extreme depth": lambda: [HEAD, b'{"agents":' * 1_500_000],
    "500,000 agents": lambda: [HEAD, agents(500_000)],
    "nothing": lambda: time.sleep(60) or [],
    "a redirect to itself": lambda: [b"HTTP/1.1 302 Found\r\nLocation: /status\r\nContent-Length: 0\r\n\r\n"],
}


@row(seconds=110)
def hostile_far_machine():
    """The agents of another machine's gateway are asked for, and what has its port there answers with headers or a body a byte
    a second, or without end, with impossible lengths, extreme depth, 500,000 agents, nothing, a redirect to itself; then well.

    Each time it is said within 5 s that the machine cannot be reached; a link is taken meanwhile; memory stays within 400 MB and
    comes back to 40; the good document is shown.
    """
    home = Home()
    home.configure(status=18800)
    install_tool("duskrell", "exit 1")
    far = HostileServer("127.0.0.2", STATUS_PORT)
    program = Program(home).listens()
    send_link(home, link_to("http://127.0.0.2:18789", "t0ken"))
    before = program.megabytes()
    longest = most = slowest = 0
    for name, parts in HOSTILE_ANSWERS.items():
        far.play(parts)
        told = []
        asker = threading.Thread(target=lambda: told.append(ctl(home, "agents")))
        began = time.monotonic()
        asker.start()
        while asker.is_alive():
            slowest = max(slowest, send_link(home, "ostrelle://nothing"))
            most = max(most, program.megabytes() - before)
        took = time.monotonic() - began
        longest = max(longest, took)
        require(told and "not reachable" in told[0][1], f"It is told {(told or ['nothing'])[0][1][-80:]} for {name}")
        require(took < 5, f"That is told after {took:.1f} s for {name}")
    require(wait_for(lambda: program.megabytes() - before < 40, 10, 0.5), f"{program.megabytes() - before:.0f} MB stay")
    after = program.megabytes() - before
    far.play(lambda: [HEAD, agents(3)])
    require("A2" in ctl(home, "agents")[1], "The good document is not shown")
    seen = f"Told after {longest:.1f} s at most; a link took {slowest:.1f} s at most; {most:+.0f} MB at most"
    require(most < 400 and slowest < MOMENT, seen)
    program.end()
    return f"{seen}, {after:+.0f} MB afterwards."


VOICE_RUNS = re.compile("^Voice +running", re.MULTILINE)


@row(seconds=90)
def hostile_voice_port():
    """On the voice agent's port somebody answers in the same ways, each for 4 s, which is two questions; then as an agent does.

    Nobody takes it for an agent; memory stays within 40 MB and comes back to 10, a link is taken meanwhile, and the agent is
    seen within 4 s.
    """
    home = Home()
    home.configure(voice=True)
    install_tool("duskrell", "exit 1")
    voice = HostileServer("127.0.0.1", VOICE_PORT)
    program = Program(home).listens()
    before, calm = program.megabytes(), program.rest()
    most = slowest = 0
    for name, parts in HOSTILE_ANSWERS.items():
        voice.play(parts)
        end = time.monotonic() + 4
        while time.monotonic() < end:
            slowest = max(slowest, send_link(home, "ostrelle://nothing"))
            most = max(most, program.megabytes() - before)
            require(not VOICE_RUNS.search(ctl(home, "status")[1]), f"It is taken for an agent: {name}")
            time.sleep(0.1)
    voice.play(lambda: [HEAD, b'{"state":"listening"}'])
    seen = wait_for(lambda: VOICE_RUNS.search(ctl(home, "status")[1]), 4, 0.3)
    require(seen, "The agent is not seen")
    wait_for(lambda: program.megabytes() - before < 10, 10, 0.5)
    after, descriptors = program.megabytes() - before, program.calm_descriptors(calm + 4)
    seen = (f"A link took {slowest:.1f} s at most; {most:+.0f} MB at most, {after:+.1f} MB afterwards; {descriptors} descriptors, "
            f"{calm} before.")
    require(most < 40 and after < 10 and slowest < MOMENT and descriptors <= calm + 4, seen)
    program.end()
    return seen


class SlowJudge(http.server.ThreadingHTTPServer):
    """A gateway that answers each question about the token after so many seconds with that status; the last one stays."""

    daemon_threads = True

    def __init__(self, *answers):
        self.answers = list(answers)
        self.answered = []

        class Handler(http.server.BaseHTTPRequestHandler):
            def do_GET(self):
                judge = self.server
                is_token = self.path == "/v1/models"
                delay, status = (judge.answers.pop(0) if len(judge.answers) > 1 else judge.answers[0]) if is_token else (0, 200)
                time.sleep(delay)
                self.send_response(status)
                self.send_header("Content-Length", "0")
                self.end_headers()
                if is_token:
                    judge.answered.append(status)

            def log_message(self, *_):
                pass

        super().__init__(("127.0.0.1", GATEWAY_PORT), Handler)
        threading.Thread(target=self.serve_forever, daemon=True).start()


def answered_late(first, late, newer):
    """Whether the token counts as refused once the newer answer has come, and once the late one has come after it."""
    home = Home()
    home.configure()
    home.write(".duskrell/duskrell.json", '{"gateway":{"auth":{"token":"t"}}}')
    judge = SlowJudge((0, first), (4.5, late), (0, newer), (60, newer))
    program = Program(home).listens()

    def is_refused():
        time.sleep(0.3)
        return "token rejected" in ctl(home, "status")[1]

    require(wait_for(lambda: judge.answered == [first, newer]), f"Answered {judge.answered}")
    before = is_refused()
    require(wait_for(lambda: judge.answered == [first, newer, late]), f"Answered {judge.answered}")
    after = is_refused()
    program.end()
    judge.shutdown()
    judge.server_close()
    return before, after


@row(seconds=60)
def late_401():
    """The gateway's 401 to one question comes after its 200 to the next one; then the other way round.

    The answer to the later question counts.
    """
    require(answered_late(200, late=401, newer=200) == (False, False), "The older 401 counts")
    require(answered_late(401, late=200, newer=401) == (True, True), "The older 200 counts")
    return "The later question's answer counted, both times."
