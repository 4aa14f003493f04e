"""Puts many faults into a file at once, each of them asleep until the program is told to have it.

A fault is wrapped where a whole statement or condition can be written twice, once with it and once
without; fault(), which mutate.d/fault.h declares, tells which one runs.
"""

import os
import re

KEYWORD = re.compile(r"(?:else )?(if|while|for|switch) \(")
# Between an expression that goes on and what is a statement of its own.
GOES_ON = re.compile(r"\s*[),;.\](?:<>=+\-*/&|]")
BLOCK_AFTER = re.compile(
    r"(?:[)\];}{]|\b(?:else|do|try|const|noexcept|override|mutable)|->\s*[\w:<>&*, ]+|\b(?:case\b[^;{}]*|default):)\s*\Z")
DECLARED = re.compile(r"(?:const )?[\w:]+(?:<[\w:<>,*& ]*>)?(?: ?[&*]+ ?(?:const )?\w+| \w+| ?&{0,2} ?\[[\w, ]+\]) = ")
CONSTANT = re.compile(r"constexpr [^;{}=]+(?: = |\{)[^;{}]*\Z")
NOT_TWICE = re.compile(r"(?:static|constexpr|using|namespace|struct|class|enum|template|friend|goto|break|continue)\b"
                       r"|(?!return\b|Q_EMIT\b|delete\b|throw\b)(?:const )?[\w:]+(?:<[\w:<>,*& ]*>)? [&*]*\w+ ?[({;]")


class Place:
    """A part of the code that can be written twice: a "statement", a "condition" or a "value"; or a
    "constant" from its `constexpr` to the number."""

    def __init__(self, begin, end, kind):
        self.begin, self.end, self.kind = begin, end, kind

    def key(self):
        return self.begin, -self.end, self.kind

    def written(self, number, with_fault, without):
        chosen = f"fault({number})"
        if self.kind == "statement":
            return f"if ({chosen}) {{ {with_fault} }} else {{ {without} }}"
        if self.kind == "condition":
            return f"({chosen} ? static_cast<bool>({with_fault}) : static_cast<bool>({without}))"
        if self.kind == "constant":  # which is one no longer
            same = len(os.path.commonprefix([with_fault, without]))
            at = re.compile(r".*(?<![\w.'])(?=\d)", re.S).match(without, 0, same + 1).end()
            return f"const{without[9:at]}({chosen} ? {with_fault[at:]} : {without[at:]})"
        return f"({chosen} ? ({with_fault}) : ({without}))"


def partner(code, at):
    """Where the bracket at that place is closed, or opened; None where it is not."""
    step, depth = 1 if code[at] in "([{" else -1, 0
    while 0 <= at < len(code):
        depth += (code[at] in "([{") - (code[at] in ")]}")
        if depth == 0:
            return at
        at += step
    return None


def is_block(code, brace):
    return bool(BLOCK_AFTER.search(code, max(0, brace - 200), brace))


def statement_begin(code, at):
    """Where the statement around that character begins; None outside of functions."""
    at -= 1
    while at >= 0:
        if code[at] == ";" or code[at] == "{" and is_block(code, at):
            break
        if code[at] == "}" and not GOES_ON.match(code, at + 1):
            break
        if code[at] in ")]}":
            at = partner(code, at)
            if at is None:
                return None
        at -= 1
    if at < 0:
        return None
    begin = re.compile(r"[\s\x00]*(?:(?:case\b[^;{}]*?[^:]|default):(?!:)\s*)*").match(code, at + 1).end()
    # The `;` of a for loop's head ends no statement.
    depth = 0
    for before in range(at, max(0, at - 300), -1):
        if code[before] in ")]}":
            depth += 1
        elif code[before] in "([{":
            depth -= 1
            if depth < 0:
                if code[before] == "(":
                    return statement_begin(code, before)
                break
    return begin


def statement_end(code, begin, is_head):
    depth = 0
    for at in range(begin, len(code)):
        if code[at] == "{" and depth == 0 and is_head:
            return None
        if code[at] in "([{":
            depth += 1
        elif code[at] in ")]}":
            depth -= 1
            if depth < 0:
                return None
        elif code[at] == ";" and depth == 0:
            return at + 1
    return None


def parts(code, begin, end):
    """What `;` divides, brackets aside: their first and last characters."""
    found, depth = [begin], 0
    for at in range(begin, end):
        depth += (code[at] in "([{") - (code[at] in ")]}")
        if code[at] == ";" and depth == 0:
            found.append(at + 1)
    return list(zip(found, [at - 1 for at in found[1:]] + [end]))


def declared_value(code, begin, end):
    """The place of the value that a declaration gives; None where nothing is declared."""
    begin += len(code[begin:end]) - len(code[begin:end].lstrip())
    found = DECLARED.match(code, begin, end)
    return Place(found.end(), end, "value") if found else None


def place_of(code, fault):
    """Where this fault can sleep; None: it has to be built alone."""
    if fault.kind == "changed constant":
        end = re.compile(r"\w+").match(code, fault.begin).end()
        constant = CONSTANT.search(code, code.rfind("\n\n", 0, fault.begin) + 1, fault.begin)
        return Place(constant.start(), end, "constant") if constant else Place(fault.begin, end, "value")
    begin = statement_begin(code, fault.begin)
    if begin is None:
        return None
    head = KEYWORD.match(code, begin)
    if head:
        inside, last = head.end(), partner(code, head.end() - 1)
        if last is None or not inside <= fault.begin <= fault.end <= last:
            return None
        for index, (first, end) in enumerate(pieces := parts(code, inside, last)):
            if first <= fault.begin and fault.end <= end:
                if head[1] == "for" and (len(pieces) != 3 or index != 1):
                    return None
                place = declared_value(code, first, end)
                if place:
                    return place if place.begin <= fault.begin else None
                return Place(first, end, "value" if head[1] == "switch" else "condition")
        return None
    end = statement_end(code, begin, re.match(r"(?:else|do|try)\b", code[begin:begin + 5]))
    if end is None or fault.end > end or NOT_TWICE.match(code, begin):
        return None
    if DECLARED.match(code, begin, end):
        place = declared_value(code, begin, end - 1)
        return place if place.begin <= fault.begin and fault.end <= place.end else None
    return Place(begin, end, "statement")


class File:
    """A source with the faults that sleep in it. Those whose place does not compile are taken out."""

    def __init__(self, source, code, numbered):
        self.source = source
        self.sleeping = [(number, fault, place) for number, fault in numbered
                         if (place := place_of(code, fault))]
        # Only one can turn the same constant into something else.
        taken = set()
        for entry in list(self.sleeping):
            if entry[2].kind == "constant":
                if entry[2].begin in taken:
                    self.sleeping.remove(entry)
                taken.add(entry[2].begin)
        self.spans = []  # the first and last line of each place, and its faults

    def text(self):
        groups = {}
        for number, fault, place in self.sleeping:
            groups.setdefault(place.key(), (place, []))[1].append((number, fault))
        self.spans = []
        ordered = [groups[key] for key in sorted(groups)]
        written, rest = self._between(0, len(self.source), ordered)
        assert not rest
        out, line = [], 1
        for piece in re.split(r"(\x01\d+\x02|\x03)", written):
            if mark := re.fullmatch(r"\x01(\d+)\x02", piece):
                self.spans.append([line, None, int(mark[1])])
            elif piece == "\x03":
                next(span for span in reversed(self.spans) if span[1] is None)[1] = line
            else:
                out.append(piece)
                line += piece.count("\n")
        return "".join(out)

    def _between(self, begin, end, groups):
        """The text from begin to end, and the groups that begin behind it."""
        text, at = "", begin
        while groups and groups[0][0].begin < end and groups[0][0].end <= end:
            place, faults = groups[0]
            inner, groups = self._between(place.begin, place.end, groups[1:])
            written = inner
            for number, fault in faults:
                other = (self.source[place.begin:fault.begin] + fault.text
                         + self.source[fault.end:place.end])
                written = f"\x01{number}\x02{place.written(number, other, written)}\x03"
            text += self.source[at:place.begin] + written
            at = place.end
        return text + self.source[at:end], groups

    def take_out(self, lines):
        """Takes out the innermost faults around those lines; all of them where there is none."""
        gone = set()
        for line in lines:
            around = [span for span in self.spans if span[0] <= line <= span[1]]
            if around:
                tightest = min(last - first for first, last, _ in around)
                gone |= {number for first, last, number in around if last - first == tightest}
        if not gone:
            gone = {number for number, _, _ in self.sleeping}
        self.sleeping = [entry for entry in self.sleeping if entry[0] not in gone]
