"""What the tests of orva-import share: running it, running orva, and reading flat models back."""

import io
import itertools
import os
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree
from contextlib import redirect_stderr

HERE = os.path.dirname(os.path.abspath(__file__))
ORVA = os.environ["ORVA"]
PROGRAM = os.path.join(HERE, "..", "..", "src", "import", "orva-import")

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(HERE, "..", "..", "src", "import"))
from orva_import.command import main  # noqa: E402 (the path comes first)


def convert(*paths, output):
    """Converts; returns the exit status and what was said."""
    said = io.StringIO()
    with redirect_stderr(said):
        status = main([*paths, "-o", output])
    return status, said.getvalue()


def run_orva(folder, model, commands):
    """Runs orva on a model; returns its messages."""
    with open(os.path.join(folder, "study.xml"), "w", encoding="utf-8") as script:
        script.write(f'<?xml version="1.0"?>\n<orva><load><model input="{model}"/></load>'
                     f"{commands}</orva>\n")
    run = subprocess.run([ORVA, "study.xml"], cwd=folder, capture_output=True, text=True,
                         check=False)
    return run.stderr.removesuffix("bye\n")


def cutsets_of_orva(folder, model, top):
    """The minimal cutsets that orva finds, as a set of frozen sets; messages raise."""
    table = os.path.join(folder, "cutsets.txt")
    said = run_orva(folder, model, f"""
        <set><option name="top-event" value="{top}"/></set><check><normal-form/></check>
        <build><minimal-cutsets/></build><print><minimal-cutsets output="cutsets.txt"/></print>""")
    if said:
        raise AssertionError(said)
    with open(table, encoding="utf-8") as rows:
        return {frozenset(row.rstrip("\n").split("\t")[3:]) for row in rows}


class Flat:
    """A flat model read back; whatever is not flat, or could be simpler, raises."""

    def __init__(self, path):
        root = ElementTree.parse(path).getroot()
        self.gates = {each.get("name"): each.find("*[last()]")
                      for each in root.iter("define-gate")}
        self.events = {each.get("name") for each in root.iter("define-basic-event")}
        self.has_negation = next(root.iter("not"), None) is not None
        for name, formula in self.gates.items():
            self._check(name, formula)

    def _check(self, name, formula):
        literals = [self._literal(each) for each in formula]
        events = [event for event, _ in literals]
        least = int(formula.get("min", "2"))
        assert formula.tag in ("and", "or", "atleast"), name
        assert len(set(events)) == len(events) > 1 < least + (formula.tag != "atleast"), name
        assert least <= len(events) - (formula.tag == "atleast"), name

    def _literal(self, node):
        is_negated = node.tag == "not"
        if is_negated:
            (node,) = node
        name = node.get("name")
        assert name in (self.gates if node.tag == "gate" else self.events), name
        return name, is_negated

    def unused(self):
        """The names of gates that no gate refers to."""
        used = {self._literal(each)[0] for formula in self.gates.values() for each in formula}
        return set(self.gates) - used

    def value(self, name, true_events, known=None):
        """Whether the event is true when those events are."""
        known = {} if known is None else known
        if name not in self.gates:
            return name in true_events
        if name not in known:
            formula = self.gates[name]
            count = sum(self.value(event, true_events, known) != is_negated
                        for event, is_negated in map(self._literal, formula))
            least = {"and": len(formula), "or": 1}.get(formula.tag)
            known[name] = count >= (least or int(formula.get("min", "0")))
        return known[name]


def subsets(events):
    """All subsets, the smaller ones first."""
    return [frozenset(each) for size in range(len(events) + 1)
            for each in itertools.combinations(sorted(events), size)]


def minimal(true_sets):
    """The minimal ones of sets that come in the order of their sizes."""
    found = []
    for each in true_sets:
        if not any(smaller <= each for smaller in found):
            found.append(each)
    return set(found)


class TemporaryFolder(unittest.TestCase):
    """Each test has a folder of its own."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = folder.name
        self.flat = os.path.join(self.folder, "flat.xml")
        self.model = os.path.join(self.folder, "model.xml")

    def write(self, text):
        """Writes the model."""
        with open(self.model, "w", encoding="utf-8") as file:
            file.write(text)
