"""The desktop session that a row plays with: a bus, a keyring, tray hosts, a screen."""

import os
import re
import subprocess
import sys
import time

from row import require
from world import PATIENCE, PROJECT, spawn, wait_for


class Bus:
    """A session bus at an address that outlives it."""

    def __init__(self, home):
        self.home = home
        self.socket = home.runtime / "bus"
        self.address = f"unix:path={self.socket}"
        self.configuration = home.runtime / "bus.conf"
        self.configuration.write_text(
            f"<busconfig><type>session</type><listen>{self.address}</listen><policy context='default'>"
            "<allow send_destination='*'/><allow receive_sender='*'/><allow own='*'/></policy></busconfig>")
        self.keyring = self.host = None
        self.start()

    def start(self):
        self.socket.unlink(missing_ok=True)
        self.process = spawn(["dbus-daemon", "--config-file", str(self.configuration), "--nofork", "--print-address"], self.home,
                             stdout=subprocess.PIPE, text=True)
        # With the bus's identity in it, as many sessions hand it on.
        self.full_address = self.process.stdout.readline().strip()
        require(self.full_address, "The bus does not start")

    def stop(self):
        self.process.kill()
        self.process.wait()

    def environment(self):
        return self.home.environment(DBUS_SESSION_BUS_ADDRESS=self.address)

    def has(self, name):
        answer = subprocess.run(
            ["dbus-send", "--session", "--print-reply=literal", "--dest=org.freedesktop.DBus", "/",
             "org.freedesktop.DBus.NameHasOwner", f"string:{name}"],
            env=self.environment(), capture_output=True, text=True, timeout=PATIENCE)
        return "true" in answer.stdout

    def start_keyring(self, unlocked=True, **variables):
        options = ["--unlock"] if unlocked else []
        self.keyring = spawn(["gnome-keyring-daemon", "--foreground", "--components=secrets", *options],
                             env={**self.environment(), **variables}, stdin=subprocess.PIPE)
        if unlocked:
            self.keyring.stdin.write(b"test password")
        self.keyring.stdin.close()
        require(wait_for(lambda: self.has("org.freedesktop.secrets")), "The keyring does not start")

    def stop_keyring(self):
        self.keyring.kill()
        self.keyring.wait()
        wait_for(lambda: not self.has("org.freedesktop.secrets"))

    def start_tray_host(self):
        """A host of the kind that lives on the bus, and the file in which it writes who has registered an icon."""
        icons = self.home.runtime / f"icons-{time.monotonic_ns()}"
        with open(icons, "wb") as log:
            self.host = spawn([sys.executable, "-B", str(PROJECT / "script/faults.d/trayhost.py")], env=self.environment(),
                              stdout=log)
        require(wait_for(lambda: self.has("org.kde.StatusNotifierWatcher")), "The tray host does not start")
        return icons

    def asks(self, icons, path, method, *arguments):
        """Calls a method of the last icon that was registered there, and does not wait for the answer."""
        service = ":" + icons.read_text().split()[-1].rpartition(":")[2]
        return subprocess.Popen(["gdbus", "call", "--session", "--dest", service, "--object-path", path, "--method", method,
                                 *arguments], env=self.environment(), stdout=subprocess.PIPE, text=True)

    def icon_has(self, icons, name):
        """A property of that icon, as text."""
        return self.asks(icons, "/StatusNotifierItem", "org.freedesktop.DBus.Properties.Get", "org.kde.StatusNotifierItem",
                         name).communicate(timeout=PATIENCE)[0]

    def lock_keyring(self):
        subprocess.run(["gdbus", "call", "--session", "--dest", "org.freedesktop.secrets", "--object-path",
                        "/org/freedesktop/secrets", "--method", "org.freedesktop.Secret.Service.Lock",
                        "['/org/freedesktop/secrets/collection/login']"],
                       env=self.environment(), check=True, capture_output=True)

    def token(self, url):
        """What the keyring keeps for a gateway; None for nothing."""
        answer = subprocess.run(["secret-tool", "lookup", "service", "ai.duskrell.ostrelle", "account", f"gateway-token:{url}"],
                                env=self.environment(), capture_output=True, text=True, timeout=PATIENCE)
        return answer.stdout.strip() or None


class Screen:
    """An X server with a window manager and, once it is started, a tray host."""

    def __init__(self, home):
        self.home = home
        reading, writing = os.pipe()
        self.server = spawn(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x800x24", "-noreset",
                             "-nolisten", "tcp"], home, pass_fds=[writing])
        self.name = ":" + os.read(reading, 16).decode().strip()
        spawn(["openbox"], env=home.environment(DISPLAY=self.name))
        wait_for(lambda: self.run("xdotool", "get_desktop").returncode == 0)
        self.host = None

    def run(self, *command):
        return subprocess.run(command, env=self.home.environment(DISPLAY=self.name), capture_output=True, text=True,
                              timeout=PATIENCE)

    def start_tray_host(self):
        self.host = spawn(["trayer", "--edge", "top", "--align", "right", "--height", "24", "--width", "10"],
                          env=self.home.environment(DISPLAY=self.name))

    def end_tray_host(self):
        self.host.terminate()
        self.host.wait()

    def windows(self):
        """The visible windows of the program: (x, y, width, height)."""
        for window in self.run("xdotool", "search", "--onlyvisible", "--class", "^ostrelle$").stdout.split():
            shape = dict(re.findall(r"(\w+)=(\d+)", self.run("xdotool", "getwindowgeometry", "--shell", window).stdout))
            if shape:
                yield tuple(int(shape[key]) for key in ("X", "Y", "WIDTH", "HEIGHT"))

    def icon(self):
        return next((window for window in self.windows() if 4 < window[2] < 64), None)

    def panel(self):
        return next((window for window in self.windows() if window[2:] == (380, 700)), None)

    def wait_for_icon(self, when, seconds=PATIENCE):
        icon = wait_for(self.icon, seconds, 0.2)
        require(icon, f"No icon in the tray within {seconds} s {when}")
        return icon

    def click_icon(self):
        x, y, width, height = self.wait_for_icon("to click")
        self.run("xdotool", "mousemove", str(x + width // 2), str(y + height // 2), "click", "1")

    def open_panel(self, when):
        self.click_icon()
        require(wait_for(self.panel, PATIENCE, 0.2), f"A click opens no panel {when}")

    def close_panel(self):
        self.run("xdotool", "key", "Escape")
        require(wait_for(lambda: not self.panel(), PATIENCE, 0.2), "Escape does not close the panel")
        time.sleep(0.6)  # slower than a double click
