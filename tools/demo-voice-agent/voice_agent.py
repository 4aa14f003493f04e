#!/usr/bin/env python3
"""A voice agent that neither hears nor speaks.

It serves the control port as a real agent does and walks through the states of a
conversation, for demonstrations and tests; see README.md.
"""

import http.server
import json
import os
import pathlib
import socketserver
import threading
import time

DEFAULT_PORT = 18790
CONVERSATION = ("listening", "capturing", "processing", "speaking")
TURNS = 2  # questions and answers before the agent dozes off again
STEP_SECONDS = 2.0  # how long each state of a conversation lasts


def home():
    return pathlib.Path(os.environ.get("HOME", "~")).expanduser()


def data_directory():
    return pathlib.Path(os.environ.get("OSTRELLE_DATA", home() / ".ostrelle" / "data"))


def read_object(path):
    try:
        content = json.loads(path.read_text(encoding="utf-8"))
    except (OSError, ValueError):
        return {}
    return content if isinstance(content, dict) else {}


def step_seconds():
    """Read afresh on every use, so that it can be changed while the agent runs."""
    return read_object(data_directory() / "demo-agent.json").get("step_seconds", STEP_SECONDS)


def control_port():
    ports = read_object(home() / ".ostrelle" / "config.json").get("ports", {})
    return ports.get("voiceAgent", DEFAULT_PORT)


class Conversation:
    """What the agent pretends to do. Dozes until it is started."""

    def __init__(self):
        self._lock = threading.Lock()
        self._muted = False
        self._steps_left = 0
        self._step_began = time.monotonic()

    def start(self):
        with self._lock:
            self._steps_left = TURNS * len(CONVERSATION)
            self._step_began = time.monotonic()

    def set_muted(self, muted):
        with self._lock:
            self._muted = muted

    def status(self):
        with self._lock:
            self._advance(step_seconds())
            return {
                "state": self._state(),
                "muted": self._muted,
                "tier": "local",
                "wake_word_enabled": True,
            }

    def _state(self):
        if self._steps_left == 0:
            return "dormant"
        return CONVERSATION[-self._steps_left % len(CONVERSATION)]

    def _advance(self, seconds):
        passed = int((time.monotonic() - self._step_began) / seconds)
        self._steps_left = max(self._steps_left - passed, 0)
        self._step_began += passed * seconds


class ControlRequest(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    conversation = Conversation()

    def do_GET(self):
        if self.path != "/status":
            self.send_error(404)
            return
        self._answer(json.dumps(self.conversation.status()))

    def do_POST(self):
        commands = {
            "/start": self.conversation.start,
            "/mute": lambda: self.conversation.set_muted(True),
            "/unmute": lambda: self.conversation.set_muted(False),
        }
        command = commands.get(self.path)
        if command is None:
            self.send_error(404)
            return
        command()
        self._answer("{}")

    def _answer(self, text):
        body = text.encode()
        self.send_response(200)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, format, *args):
        if self.command == "POST":  # a line for each poll would fill the log
            print(f"{self.path}", flush=True)


class ControlServer(socketserver.ThreadingMixIn, http.server.HTTPServer):
    daemon_threads = True


def main():
    with ControlServer(("127.0.0.1", control_port()), ControlRequest) as server:
        print(f"demo voice agent: control port {server.server_port}", flush=True)
        server.serve_forever()


if __name__ == "__main__":
    main()
