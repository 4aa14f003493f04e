"""The user whom the keyring asks for the password; its own library has one for tests."""

import ctypes
import subprocess
import sys
import time

from world import spawn, wait_for


class Prompter:
    def __init__(self, bus):
        self.log = bus.home.runtime / "prompts"
        with open(self.log, "wb") as log:
            spawn(["dbus-monitor", "--session", "interface='org.gnome.keyring.internal.Prompter',member='BeginPrompting'"],
                  env=bus.environment(), stdout=log)
        wait_for(lambda: self.log.stat().st_size)
        self.process = spawn([sys.executable, "-B", __file__], env=bus.environment(), text=True,
                             stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.variables = {"GNOME_KEYRING_TEST_PROMPTER": self.process.stdout.readline().strip()}

    def will(self, answer):
        """What comes next: "cancel", or the password. A prompt that comes without that stays unanswered."""
        self.process.stdin.write(answer + "\n")
        self.process.stdin.flush()
        self.process.stdout.readline()

    def prompts(self):
        """How many have been shown."""
        time.sleep(0.3)
        return self.log.read_text(errors="replace").count("member=BeginPrompting")


def main():
    library = ctypes.CDLL("libgcr-base-3.so.1")
    library.gcr_mock_prompter_start.restype = ctypes.c_char_p
    print(library.gcr_mock_prompter_start().decode(), flush=True)
    for line in sys.stdin:
        if line == "cancel\n":
            library.gcr_mock_prompter_expect_password_cancel()
        else:
            library.gcr_mock_prompter_expect_password_ok(line.strip().encode(), None)
        print(flush=True)


if __name__ == "__main__":
    main()
