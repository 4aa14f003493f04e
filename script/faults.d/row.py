"""What a row of the table is, and what it may end with."""

import dataclasses
import importlib
import inspect
from collections.abc import Callable


class FallsShort(Exception):
    """What must hold did not; the text tells what was seen instead."""


class NotHere(Exception):
    """This machine cannot show the row; the text tells why."""


@dataclasses.dataclass(frozen=True)
class Row:
    name: str
    file: str  # below groups, without its suffix
    group: str
    done: str
    must: str
    cause: str  # why it falls short, as long as it does; empty where nobody knows
    run: Callable[[], str]  # returns what was seen
    seconds: int  # then the row is ended and falls short
    quick: bool


rows: list[Row] = []


def row(seconds=60, quick=False):
    """Makes a row of a function. Its documentation tells what is done, what must hold and, where it is known, why it
    does not."""

    def add(function):
        done, must, *cause = (" ".join(part.split()) for part in inspect.getdoc(function).split("\n\n"))
        home = inspect.getmodule(function)
        name, file = function.__name__.replace("_", "-"), home.__name__.removeprefix("groups.")
        rows.append(Row(name, file, home.__doc__.strip(), done, must, "".join(cause), function, seconds, quick))
        return function

    return add


def require(holds, seen):
    if not holds:
        raise FallsShort(seen)


def load_groups():
    for name in ("writes", "disk", "files", "keyring", "desktop", "gateway", "answers", "voice", "network", "clock", "starts",
                 "surroundings", "security"):
        importlib.import_module(f"groups.{name}")
    return rows
