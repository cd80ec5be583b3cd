"""XML files, read as streams of definitions.

Each file is fed to the parser in pieces; of the tree that grows, a definition is handed out when
its element ends and taken away when the next one has ended, so that the memory needed is that of
the largest definition. Entities are refused before anything is parsed: a few lines of them expand
to more than any memory.
"""

import os
import re

from lxml import etree

from .report import is_writable, quote

ROOTS = ("open-psa", "opsa-mef", "srf-psa", "riskspectrum:opsa-mef")
_PIECE = 1 << 16

_DATA = {"define-basic-event", "define-house-event", "define-parameter", "label", "attributes",
         "include"}
_TREE = _DATA | {"define-gate", "define-component", "define-CCF-group"}
_MODEL = _TREE - {"define-component"} | {
    "define-fault-tree", "model-data", "define-event-tree", "define-initiating-event",
    "define-rule"}

_ATTRIBUTES = {"name", "role", "unit"}
_ROLES = {"public", "private"}

# Which elements may stand in each container.
CONTENTS = {
    "define-fault-tree": _TREE,
    "define-component": _TREE,
    "model-data": _DATA | {"define-CCF-group"},
    **{root: _MODEL for root in ROOTS},
}
_TAGS = sorted({tag for tags in CONTENTS.values() for tag in tags} | set(CONTENTS))

_LOCAL_NAMES = {}


def local_name(element):
    """The name of an element without its namespace."""
    tag = element.tag
    name = _LOCAL_NAMES.get(tag)
    if name is None:
        name = tag.rpartition("}")[2] if isinstance(tag, str) else "entity"
        _LOCAL_NAMES[tag] = name
    return name


def load(path):
    """The text of a file as the parser takes it, and the number of lines left out before it."""
    with open(path, "rb") as file:
        data = file.read()
    if data[:2] in (b"\xff\xfe", b"\xfe\xff") or b"\0" in data[:4]:
        encoding = "utf-16" if data[:2] in (b"\xff\xfe", b"\xfe\xff") else (
            "utf-16-be" if data[:1] == b"\0" else "utf-16-le")
        text = re.sub(r"^\s*<\?xml.*?\?>", _blank_header, data.decode(encoding), 1, re.DOTALL)
        data = text.encode("utf-8")
    if data.startswith(b"\xef\xbb\xbf"):
        data = data[3:]
    text = data.lstrip()
    return text, data[:len(data) - len(text)].count(b"\n")


def _blank_header(match):
    return "\n" * match.group().count("\n")


class Container:
    """An open container: its element, name, and the last child that was handled."""

    def __init__(self, element, tag, scope):
        self.element = element
        self.tag = tag
        self.scope = scope
        self.last = None


class Source:
    """One file while it is read.

    events() yields ("open", Container), ("close", Container) and ("definition", element). The
    receiver of a definition must number its elements, with number() or count(), each once, in the
    order in which they end.
    """

    def __init__(self, path, report, scope):
        self.path = path
        self.place = 0
        self._report = report
        self._containers = []
        self._scope = scope
        self._text, self._lines_before = self._load()
        # What comes from a pipe is there once only.
        kept = None if os.path.isfile(path) else (self._text, self._lines_before)
        self.place = report.add_file(path, lambda: kept or load(path))

    def _load(self):
        try:
            text, before = load(self.path)
        except (OSError, UnicodeError) as error:
            reason = error.strerror if isinstance(error, OSError) else "not UTF-16 text"
            self._report.stop(self.path, None, f"can't be read: {reason}")
        if b"<!ENTITY" in text:
            self._report.stop(self.path, None, "declares entities, which are not taken")
        return text, before

    def number(self):
        """The place of the next element that ends."""
        self.place += 1
        return self.place

    def count(self, element):
        """Numbers an element and all below it; returns their places."""
        return {each: self.number() for _, each in etree.iterwalk(element, events=("end",))}

    def scope(self):
        """The scope of the innermost open container, or that of the file."""
        return self._containers[-1].scope if self._containers else self._scope

    def events(self):
        """See the class."""
        for event, element in self._parsed():
            parent = self._containers[-1] if self._containers else None
            if parent and event == "end" and element is parent.element:
                yield from self._close(parent)
            elif element.getparent() is (parent.element if parent else None):
                yield from self._handle(event, element, parent)

    def _parsed(self):
        parser = etree.XMLPullParser(
            events=("start", "end"), tag=["{*}" + tag for tag in _TAGS if ":" not in tag]
            + [ROOTS[-1]],
            huge_tree=True, no_network=True, resolve_entities=False, load_dtd=False,
            remove_comments=True, remove_pis=True, remove_blank_text=True, recover=True)
        text = memoryview(self._text)
        self._text = None
        for start in range(0, len(text), _PIECE):
            parser.feed(bytes(text[start:start + _PIECE]))
            self._check(parser)
            yield from parser.read_events()
        root = None
        try:
            root = parser.close()
        except etree.XMLSyntaxError as error:
            self._check(parser)
            self._report.stop(self.path, None, f"not XML: {error.msg}")
        self._check(parser)
        yield from parser.read_events()
        if root is None or local_name(root) not in _TAGS:
            name = "no element" if root is None else f"<{quote(local_name(root))}>"
            self._report.stop(self.path, None, f"{name} where <open-psa> or <opsa-mef> was expected")

    def _check(self, parser):
        """Stops at the first fault of the syntax; prefixes without a namespace are none."""
        for entry in parser.feed_error_log:
            if entry.domain != etree.ErrorDomains.NAMESPACE:
                where = f"{self.path}:{entry.line + self._lines_before}"
                self._report.stop(where, None, f"not XML: {quote(entry.message)}")

    def _handle(self, event, element, parent):
        tag = local_name(element)
        if event == "start":
            if tag in CONTENTS and (parent is None or tag in CONTENTS[parent.tag]):
                self._pass_unknown(element, parent)
                yield "open", self._open(element, tag)
            return
        if parent is None:
            # The root of an included file may be what is included.
            yield "definition", element
            return
        self._pass_unknown(element, parent)
        if tag in CONTENTS[parent.tag]:
            yield "definition", element
        else:
            self._refuse(element)
        parent.last = element

    def _open(self, element, tag):
        is_root = not self._containers and tag in ROOTS
        outer = self.scope()
        scope = outer if is_root or tag == "model-data" else outer.inner(
            element.get("name"), element.get("role"))
        self._containers.append(Container(element, tag, scope))
        return self._containers[-1]

    def _close(self, container):
        for child in container.element if container.last is None else (
                container.last.itersiblings()):
            self._refuse(child)
        self._containers.pop()
        place = self.number()
        if self._containers:
            self._containers[-1].last = container.element
        name = container.element.get("name")
        if container.tag not in ROOTS and container.tag != "model-data" and not (
                name and is_writable(name)):
            self._report.fault(place, container.tag, "has no name that orva takes")
        check_attributes(container.element, place, self._report)
        container.element.clear()
        yield "close", container

    def _pass_unknown(self, element, parent):
        """Refuses what stands between the last child handled and this one, and takes both away."""
        if parent is None:
            return
        former = []
        sibling = element.getprevious()
        while sibling is not None:
            former.append(sibling)
            sibling = sibling.getprevious()
        for sibling in reversed(former):
            if sibling is not parent.last:
                self._refuse(sibling)
            parent.element.remove(sibling)

    def _refuse(self, element):
        if not isinstance(element.tag, str):
            self._report.stop(self.path, None, "uses entities, which are not taken")
        places = self.count(element)
        self._report.fault(places[element], quote(local_name(element)), "is not taken here")


def check_attributes(element, place, report):
    """Notes what nothing reads of a definition. Attributes with a prefix are notes of others."""
    tag = local_name(element)
    for name, value in element.items():
        if name == "role" and value not in _ROLES:
            report.fault(place, tag, f"role {quote(value)} is neither public nor private")
        elif name not in _ATTRIBUTES and "}" not in name and ":" not in name:
            report.note_once(place, tag, f"the attribute {quote(name)} is not carried over")


def resolve_include(source, element):
    """The path of the file that an <include> names, or None without a name."""
    name = element.get("file")
    return name and os.path.join(os.path.dirname(source.path), name)
