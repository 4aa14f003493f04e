"""The clocks of a program, set through libfaketime while it runs."""

import pathlib

from row import NotHere


class Clock:
    """With variables() only the time of day is set; the time since the boot goes on as it is."""

    def __init__(self, home):
        self.file = home.runtime / "clock"
        found = list(pathlib.Path("/usr/lib").glob("*/faketime/libfaketimeMT.so.1"))
        if not found:
            raise NotHere("libfaketime is not installed")
        self.library = found[0]
        self.shift(0)

    def shift(self, seconds):
        """By so much from now."""
        self.file.write_text(f"{seconds:+d}\n")

    def hurry(self, times):
        """Lets all clocks of a program that has hurried_variables() go so many times as fast."""
        self.file.write_text(f"+0 x{times}\n")

    def variables(self):
        return {"LD_PRELOAD": str(self.library), "FAKETIME_TIMESTAMP_FILE": str(self.file), "FAKETIME_NO_CACHE": "1",
                "FAKETIME_DONT_FAKE_MONOTONIC": "1", "FAKETIME_DONT_RESET": "1"}

    def hurried_variables(self):
        """For a program whose timers and deadlines are to be shorter too."""
        return {**self.variables(), "FAKETIME_DONT_FAKE_MONOTONIC": "0"}
