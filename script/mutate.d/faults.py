"""The small faults that can be put into the code, and those that change nothing."""

import functools
import pathlib
import re
import subprocess

from alternatives import partner

ROOT = pathlib.Path(__file__).resolve().parents[2]
EQUIVALENT = ROOT / "script/mutate.d/equivalent"
# Without these statements the program does the same.
ONLY_FASTER = ("Q_UNREACHABLE", "Q_UNUSED", "reserve", "shrink_to_fit", "squeeze", "static_assert")


def masked(text):
    """The text with comments, strings and preprocessor lines blanked, character for character."""
    pattern = re.compile(
        r'R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"|//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"'
        r"|(?<![\w'])'(?:\\.|[^'\\\n])+'|^[ \t]*#[^\n]*(?:\\\n[^\n]*)*", re.S | re.M)
    return pattern.sub(lambda found: re.sub(r"[^\n]", "\x00", found[0]), text)


class Fault:
    def __init__(self, path, begin, end, text, kind):
        self.path, self.begin, self.end, self.text, self.kind = path, begin, end, text, kind

    def applied(self, source):
        return source[:self.begin] + self.text + source[self.end:]

    def line(self, source):
        return source.count("\n", 0, self.begin) + 1

    def lines(self, source):
        """What the lines of the fault are before and after, with their blanks made one."""
        first = source.rfind("\n", 0, self.begin) + 1
        last = source.find("\n", self.end)
        after = self.applied(source)[first:last + len(self.text) - self.end + self.begin]
        return " ".join(source[first:last].split()), " ".join(after.split())

    def told(self, source):
        before, after = self.lines(source)
        return f"{self.path}:{self.line(source)} {self.kind}\n    - {before[:160]}\n    + {after[:160]}"


REPLACED = {
    "boundary": {" < ": " <= ", " <= ": " < ", " > ": " >= ", " >= ": " > "},
    "negated comparison": {" == ": " != ", " != ": " == ", " === ": " !== ", " !== ": " === "},
    "and for or": {" && ": " || ", " || ": " && "},
    "truth": {"true": "false", "false": "true"},
}


def replacements(path, code):
    for kind, pairs in REPLACED.items():
        for old, new in pairs.items():
            word = re.escape(old) if old.startswith(" ") else rf"\b{old}\b"
            for found in re.finditer(word, code):
                yield Fault(path, found.start(), found.end(), new, kind)


def conditions(path, code, source):
    for found in re.finditer(r"\bif (?=\()", code):
        end = partner(code, found.end())
        if end is None:
            continue
        begin = found.end() + 1
        parts = code[begin:end].rfind("; ")  # what comes before it is declared there
        begin += parts + 2 if parts >= 0 else 0
        if not re.match(r"(const )?auto\b|[\w:<> ]+[*&]? ?\w+ = ", code[begin:end]):
            yield Fault(path, begin, end, f"!({source[begin:end]})", "condition turned round")


def statements(path, code):
    for found in re.finditer(r"(?<=[;{}]\n)( {4,})(?:[\w:]+(?:\.|->))*([\w:]+)\(", code):
        end = partner(code, found.end() - 1)
        if end is None or code[end + 1:end + 2] != ";" or found[2] in ONLY_FASTER:
            continue
        kind = "dropped connection" if found[2].endswith("connect") else "dropped statement"
        yield Fault(path, found.start() + len(found[1]), end + 2, ";", kind)
    for found in re.finditer(r"(?<=[;{}]\n)( {4,})[\w.\->\[\]]+ [+\-|&]?= [^;{}]*;", code):
        yield Fault(path, found.start() + len(found[1]), found.end(), ";", "dropped assignment")


def constants(path, code):
    for found in re.finditer(r"(?<![\w.\x00'])(\d+)(?=(?:s|ms|min|h|U|UL|LL)?\b)(?!\.\d|'|x)", code):
        value = int(found[1])
        new = value + 1 if value < 10 else value * 10
        yield Fault(path, found.start(1), found.end(1), str(new), "changed constant")


def calls(path, code):
    argument = r"[\w.:]+(?:\(\))?"
    for found in re.finditer(rf"\b(?!(?:swap|min|max)\()\w+\(({argument}), ({argument})\)", code):
        if found[1] != found[2]:
            yield Fault(path, found.start(1), found.end(2), f"{found[2]}, {found[1]}", "swapped arguments")
    empty = r"std::nullopt|nullptr|false|0|[A-Z]\w*\(\)"  # is left out already
    for found in re.finditer(r"\breturn ([^;{}]+);", code):
        if "\x00" not in found[1] and not re.fullmatch(empty, found[1]):
            yield Fault(path, found.start(1), found.end(1), "{}", "result left out")


def all_faults_in(path, source):
    code = masked(source)
    yield from replacements(path, code)
    yield from conditions(path, code, source)
    if path.suffix == ".cpp":
        yield from statements(path, code)
        yield from constants(path, code)
        yield from calls(path, code)


def git_files():
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                            cwd=ROOT, check=True, capture_output=True).stdout.decode()
    return {pathlib.Path(name) for name in listed.split("\0") if name and (ROOT / name).is_file()}


def sources():
    return sorted(path for path in git_files() if path.parts[0] == "src" and path.suffix in (".cpp", ".qml"))


@functools.cache
def equivalent():
    """The faults that change nothing: the path, the kind, and the line before and after."""
    lines = [line for line in EQUIVALENT.read_text().splitlines() if line and not line.startswith("#")]
    heads = [line.split(": ", 2) for line in lines[::3]]
    return {(path, kind, before.removeprefix("    - "), after.removeprefix("    + "))
            for (path, kind, _), before, after in zip(heads, lines[1::3], lines[2::3], strict=True)}


def faults_in(path):
    source = (ROOT / path).read_text()
    return [fault for fault in all_faults_in(path, source)
            if (str(path), fault.kind, *fault.lines(source)) not in equivalent()]


def all_faults():
    """As equivalent() tells them."""
    return {(str(path), fault.kind, *fault.lines(source)) for path in sources()
            for source in [(ROOT / path).read_text()] for fault in all_faults_in(path, source)}
