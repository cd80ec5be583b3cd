"""What is said about the input, and where.

A place is an integer: the file, and the number of the element in the order in which elements end.
Lines are looked up only when something is reported: the parser's own line numbers stop at 65,535,
and most elements are never reported.
"""

import sys
import xml.parsers.expat

_ORDINAL_BITS = 32
_MOST_FAULTS = 50
_MOST_NOTES = 20
_LONGEST_QUOTE = 80


class Stop(Exception):
    """Nothing more can be found out: what was reported is all."""


def quote(name):
    """The name as messages show it: long ones are cut."""
    return name if len(name) <= _LONGEST_QUOTE else name[:_LONGEST_QUOTE] + "..."


def is_writable(name):
    """Whether the engine reads and prints a name as it stands: it knows no entities, and interprets
    a backslash before some characters."""
    return '"' not in name and not any("\\" + letter in name for letter in "\\nt")


class Report:
    """Collects faults and notes, and shows them in the order of the input."""

    def __init__(self):
        self.faults = []
        self.notes = []
        self._files = []
        self._noted = set()

    def add_file(self, path, load):
        """Registers a file; load() gives the text as parsed and the lines before it. Returns the
        place of its first element minus one."""
        self._files.append((path, load))
        return (len(self._files) - 1) << _ORDINAL_BITS

    def fault(self, place, element, text):
        """Reports what can't be carried over; raises Stop when there is too much of it."""
        self.faults.append((place, element, text))
        if len(self.faults) >= _MOST_FAULTS:
            self.stop(None, None, "too many faults: the rest is not shown")

    def stop(self, place, element, text):
        """Reports a fault that leaves nothing to go on with. place may also be a text."""
        self.faults.append((place, element, text))
        raise Stop()

    def note(self, place, element, text):
        """Reports what the user should know of a model that is converted."""
        self.notes.append((place, element, text))

    def note_once(self, place, element, text):
        """The same, for the first element of a name only."""
        if (element, text) not in self._noted:
            self._noted.add((element, text))
            self.note(place, element, text)

    def files(self):
        """The paths of all files that were read."""
        return [path for path, _ in self._files]

    def show(self, stream=None):
        """Writes faults, or, without any, notes."""
        stream = stream or sys.stderr
        entries = self.faults or self.notes[:_MOST_NOTES]
        lines = self._find_lines(place for place, _, _ in entries if isinstance(place, int))
        for place, element, text in entries:
            where = lines.get(place, place)
            parts = [where, element and f"<{element}>", text]
            print("orva-import: " + ": ".join(part for part in parts if part), file=stream)
        if not self.faults and len(self.notes) > _MOST_NOTES:
            print(f"orva-import: {len(self.notes) - _MOST_NOTES} more of such notes", file=stream)

    def describe(self, place):
        """The place as "file:line"."""
        return self._find_lines([place])[place]

    def _find_lines(self, places):
        wanted = {}
        for place in places:
            wanted.setdefault(place >> _ORDINAL_BITS, set()).add(place)
        found = {}
        for index, group in wanted.items():
            path, load = self._files[index]
            text, before = load()
            base = index << _ORDINAL_BITS
            lines = _lines_of_elements(text, {place - base for place in group})
            for place in group:
                line = lines.get(place - base)
                found[place] = f"{path}:{line + before}" if line else path
        return found


def _lines_of_elements(text, ordinals):
    """The lines on which the elements begin that are the n-th to end, for each n of ordinals."""
    parser = xml.parsers.expat.ParserCreate()
    open_lines = []
    lines = {}
    count = 0

    def start(_name, _attributes):
        open_lines.append(parser.CurrentLineNumber)

    def end(_name):
        nonlocal count
        count += 1
        line = open_lines.pop()
        if count in ordinals:
            lines[count] = line

    parser.StartElementHandler = start
    parser.EndElementHandler = end
    try:
        parser.Parse(text, True)
    except xml.parsers.expat.ExpatError:
        pass  # what was found before the fault stays
    return lines
