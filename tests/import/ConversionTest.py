"""Models solved by hand, values of expressions, and input that is refused."""

import math
import os
import subprocess
import unittest
import xml.etree.ElementTree as ElementTree

from support import (HERE, PROGRAM, Flat, TemporaryFolder, convert, cutsets_of_orva, run_orva, subsets)

# The minimal cutsets, each a word of events that have one letter, or names.
CUTSETS = {
    ("repeated", "TWICE"): "AB AC AD BCD",
    ("repeated", "DOUBLED"): "AB AC BC",
    # Weights A 3, B 2, C 1, D 1, of which 4 are needed.
    ("repeated", "WEIGHTS"): "AB AC AD BCD",
    ("repeated", "BOTH"): "A C",
    ("repeated", "SAME"): "AB",
    ("house-events", "TOP"): [["P1"], ["V1"]],
    ("house-events", "VOTE"): [["P1"], ["V1"], ["V2"]],
    ("house-events", "ALIAS"): [["V2"]],
    ("house-events", "ALIAS-OF-GATE"): [["P1"], ["V1"]],
    ("house-events", "CERTAIN"): [["CERTAIN"]],
    ("house-events", "IMPOSSIBLE"): [["IMPOSSIBLE"]],
    ("components", "TOP"): [
        ["S.ONE.PUMP", "S.TWO.PUMP"], ["S.ONE.VALVE.STUCK", "S.TWO.PUMP"],
        ["S.ONE.PUMP", "COMMON", "PUMP"], ["S.ONE.VALVE.STUCK", "COMMON", "PUMP"]],
    ("negations", "TOP"): [["BUS"], ["PIPE"], ["TANK"], ["P1", "P2"], ["P1", "P3"], ["P2", "P3"]],
    ("negations", "DOUBLE"): [["P1", "P2"], ["P1", "P3"]],
    ("includes", "TOP"): "A BC".split(),
    ("ccf-groups", "TOP"): [["A", "B", "C"], ["G-111"]],
    ("ccf-groups", "OTHER"): [["D"], ["E"], ["M-11"]],
    ("event-tree", "TRANS.DAMAGE"): [["ET.1", "A"]],
    ("event-tree", "LOCA.OK"): [["ET.1"]],
    ("linked-trees", "FIRST.END"): "AB C",
    ("linked-trees", "FIRST.END-2"): [["A", "B", "C"]],
}

# Gates that are not coherent, as functions of the set of true events.
FUNCTIONS = {
    ("operators", "XOR"): lambda s: len(s & {*"ABC"}) % 2 == 1,
    ("operators", "IFF"): lambda s: ("A" in s) == ("B" in s),
    ("operators", "IMPLY"): lambda s: "A" not in s or "B" in s,
    ("operators", "NAND"): lambda s: not {*"ABC"} <= s,
    ("operators", "NOR"): lambda s: not s & {*"AB"},
    ("operators", "ATMOST"): lambda s: len(s) <= 1,
    ("operators", "CARDINALITY"): lambda s: 1 <= len(s) <= 2,
    ("operators", "NONE"): lambda s: not s & {*"AB"},
    ("operators", "MIX"): lambda s: ("A" in s) == ("C" in s) or "B" not in s,
    ("negations", "STAYS"): lambda s: s & {"P1", "P2", "P3", "BUS"} == {"P1"},
    ("event-tree", "LOCA.LATE"): lambda s: False,
    ("event-tree", "TRANS.LATE"): lambda s: False,
}

# Values at the date 100.
EXPRESSIONS = {
    '<Weibull><float value="50"/><float value="2"/><float value="40"/><system-mission-time/>'
    "</Weibull>": 1 - math.exp(-1.44),
    '<GLM><float value=".5"/><float value="1e-3"/><float value="2e-2"/><mission-time/></GLM>':
        1 / 21 - (1 / 21 - .5) * math.exp(-2.1),
    '<sub><float value="9"/><int value="2"/><int value="3"/></sub>': 4,
    '<div><int value="1"/><int value="2"/><int value="4"/></div>': 0.125,
    '<max><float value="-3"/><float value="-2"/></max>': -2,
    '<mod><neg><system-mission-time/></neg><int value="7"/></mod>': -2,
    '<mod><system-mission-time/><int value="7"/></mod>': 2,
    '<add><floor><neg><float value="1.5"/></neg></floor><ceil><sub><pi/><pi/></sub></ceil></add>': -2,
    '<add><sqrt><sub><pi/><pi/></sub></sqrt><float value="3"/></add>': 3,
    '<switch><case><bool value="false"/><float value="1"/></case><case><gt><mission-time/>'
    '<float value="99"/></gt><float value="2"/></case><sub><pi/><float value="3"/></sub></switch>': 2,
    '<switch><case><bool value="0"/><float value="1"/></case><sub><pi/><float value="3"/></sub>'
    "</switch>": math.pi - 3,
    # exp(-7 + 0.5 * 0.25) is the mean.
    '<lognormal-deviate><float value="-7"/><float value="0.5"/></lognormal-deviate>':
        math.exp(-6.875),
    '<mul><uniform-deviate><float value="0.2"/><float value="0.4"/></uniform-deviate>'
    '<histogram><float value="0"/><bin><float value="1"/><float value="4"/></bin>'
    '<bin><float value="3"/><float value="1"/></bin></histogram></mul>': 0.6,
}

# What is refused, each with the line and what is said of it.
REFUSED = {
    "": "no element found",
    "flow\n": "not XML",
    "<html>\n</html>": "<html> where",
    "<opsa-mef><define-gate name='G'>\n<or><event": ":2: not XML",
    "<!DOCTYPE opsa-mef [\n<!ENTITY a 'b'>]><opsa-mef>&a;</opsa-mef>": "declares entities",
    "<!DOCTYPE opsa-mef SYSTEM 'x'><opsa-mef>&a;</opsa-mef>": "Entity 'a'",
    "<opsa-mef>\n<include file='model.xml'/></opsa-mef>": "model.xml includes itself",
    "<opsa-mef>\n<include file='no.xml'/></opsa-mef>": "no.xml: can't be read",
    "<opsa-mef>\n<define-substitution name='s'/></opsa-mef>": ":2: <define-substitution>: is not taken",
    "<opsa-mef><model-data>\n<define-gate name='g'><or/></define-gate></model-data></opsa-mef>":
        ":2: <define-gate>: is not taken",
    "<opsa-mef>\n<define-gate/></opsa-mef>": ":2: <define-gate>: has no name",
    "<opsa-mef>\n<define-gate name='G'/></opsa-mef>": ":2: <define-gate>: has 0 definitions",
    "<opsa-mef>\n<define-basic-event name='A' role='prvate'/></opsa-mef>":
        ":2: <define-basic-event>: role prvate is neither",
    "<opsa-mef><define-gate name='G'>\n<gate name='H'/></define-gate></opsa-mef>":
        ":2: <gate>: H is not defined",
    "<opsa-mef>" + "\n" * 70000 + "<define-gate name='G'>\n<gate name='H'/></define-gate></opsa-mef>":
        ":70002: <gate>: H is not defined",
    "<opsa-mef><define-gate name='G'>\n<iff><bool value='1'/></iff></define-gate></opsa-mef>":
        ":2: <iff>: has 1 arguments",
    "<opsa-mef><define-gate name='G'>\n<atleast min='3'><bool value='1'/></atleast></define-gate>"
    "</opsa-mef>": ":2: <atleast>: min 3 makes no sense",
    "<opsa-mef><define-gate name='G'>\n<or><mean/></or></define-gate></opsa-mef>": ":2: <mean>",
    "<opsa-mef>\n<define-gate name='G'><gate name='H'/></define-gate>"
    "<define-gate name='H'><not><gate name='G'/></not></define-gate></opsa-mef>":
        ":2: <define-gate>: is defined by itself: G -> H -> G",
    "<opsa-mef>\n<define-parameter name='p'><parameter name='p'/></define-parameter></opsa-mef>":
        ":2: <define-parameter>: p is defined by itself",
    "<opsa-mef><define-basic-event name='A'/>\n<define-house-event name='A'/></opsa-mef>":
        ":2: <define-house-event>: A is already defined at",
    "<opsa-mef><define-basic-event name='A'><float value='1e999'/></define-basic-event></opsa-mef>":
        "finite number",
    "<opsa-mef><define-basic-event name='A'>\n<extern-function name='f'/></define-basic-event>"
    "</opsa-mef>": ":2: <extern-function>",
    "<opsa-mef><define-parameter name='p' unit='years'><pi/></define-parameter><define-parameter "
    "name='q'>\n<parameter name='p' unit='hours'/></define-parameter></opsa-mef>":
        ":2: <parameter>: p is in years and used in hours",
    "<opsa-mef>\n<define-basic-event name='a&quot;b'/></opsa-mef>": ":2: <define-basic-event>: a\"b has a quote",
    "<opsa-mef><define-event-tree name='E'><define-branch name='B'>\n<branch name='B'/>"
    "</define-branch><initial-state><branch name='B'/></initial-state></define-event-tree>"
    "</opsa-mef>": ":2: <branch>: B leads back to itself",
    "<opsa-mef><define-event-tree name='E'><define-sequence name='S'>\n<set-gate name='G'/>"
    "</define-sequence><initial-state><sequence name='S'/></initial-state></define-event-tree>"
    "</opsa-mef>": ":2: <set-gate>: can't be carried over",
    "<opsa-mef><define-rule name='R'>\n<rule name='R'/></define-rule><define-event-tree name='E'>"
    "<define-sequence name='S'><rule name='R'/></define-sequence><initial-state><sequence name='S'/>"
    "</initial-state></define-event-tree></opsa-mef>": "a rule that uses itself",
}


class SolvedByHand(TemporaryFolder):
    def convert_model(self, name):
        """Converts a model of the folder beside; returns what was said."""
        status, said = convert(os.path.join(HERE, "models", name + ".xml"), output=self.flat)
        self.assertEqual(status, 0, said)
        return said

    def test_flat_model(self):
        said = self.convert_model("nested")
        with open(self.flat, encoding="utf-8") as flat, \
                open(os.path.join(HERE, "models", "nested.flat.xml"), encoding="utf-8") as expected:
            self.assertEqual(flat.read(), expected.read())
        self.assertEqual(said.count("has no probability"), 5)

    def test_manual(self):
        page = os.path.join(HERE, "..", "..", "docs", "import.md")
        with open(page, encoding="utf-8") as text:
            blocks = dict(each.split("\n```", 1)[0].split("\n", 1)
                          for each in text.read().split("```xml ")[1:])
        self.write(blocks["model.xml"])
        self.assertEqual(convert(self.model, output=self.flat), (0, ""))
        with open(self.flat, encoding="utf-8") as flat:
            self.assertEqual(flat.read(), blocks["flat.xml"] + "\n")

    def test_cutsets(self):
        for (name, top), expected in CUTSETS.items():
            with self.subTest(name, top=top):
                self.convert_model(name)
                words = expected.split() if isinstance(expected, str) else expected
                self.assertEqual(cutsets_of_orva(self.folder, "flat.xml", top),
                                 set(map(frozenset, words)))

    def test_functions(self):
        for (name, top), function in FUNCTIONS.items():
            with self.subTest(name, top=top):
                self.convert_model(name)
                flat = Flat(self.flat)
                for true_events in subsets(flat.events):
                    self.assertEqual(flat.value(top, true_events), function(true_events))

    def test_coherent_models_stay_coherent(self):
        self.convert_model("negations")
        for name, formula in Flat(self.flat).gates.items():
            if not name.startswith("STAYS"):
                self.assertIsNone(formula.find("not"), name)

    def test_values_of_private_parameters(self):
        self.convert_model("components")
        self.assertEqual(run_orva(self.folder, "flat.xml", """<compute>
            <probabilities-of-basic-events output="events.txt"/></compute>"""), "")
        with open(os.path.join(self.folder, "events.txt"), encoding="utf-8") as rows:
            values = {row.split("\t")[1]: float(row.split("\t")[3]) for row in rows}
        self.assertEqual(values, {"S.ONE.PUMP": 0.25, "S.ONE.VALVE.STUCK": 0.25, "COMMON": 0.125,
                                  "S.TWO.PUMP": 0.75, "PUMP": 0.5})


class Expressions(TemporaryFolder):
    def test_values(self):
        definitions = "".join(f'<define-parameter name="p{i}">{text}</define-parameter>'
                              for i, text in enumerate(EXPRESSIONS))
        # Only deviates that events use have a value.
        uses = "".join(f'<parameter name="p{i}"/>' for i in range(len(EXPRESSIONS)))
        self.write(f"""<opsa-mef><define-gate name="G"><or><event name="A"/><event name="B"/></or>
            </define-gate><define-basic-event name="A"><add>{uses}</add></define-basic-event>
            <define-basic-event name="B"><pi/></define-basic-event>{definitions}</opsa-mef>""")
        self.assertEqual(convert(self.model, output=self.flat), (0, ""))
        said = run_orva(self.folder, "flat.xml", """<normalize top-event="G"/><compute>
            <values-of-parameters mission-time="100" output="values.txt"/></compute>""")
        self.assertEqual(said, "")
        with open(os.path.join(self.folder, "values.txt"), encoding="utf-8") as rows:
            values = {row.split("\t")[1]: float(row.split("\t")[3]) for row in rows}
        for i, (text, expected) in enumerate(EXPRESSIONS.items()):
            self.assertAlmostEqual(values[f"p{i}"], expected, delta=abs(expected) * 1e-5, msg=text)

        for owner in ElementTree.parse(self.flat).getroot().iter():
            for each in owner:
                if each.tag.endswith("-deviate") or each.tag == "histogram":
                    self.assertEqual(owner.tag, "define-parameter", "else it is never drawn")

    def test_error_factors(self):
        """The level of a quantile becomes the one level whose score orva and the format share."""
        for level, factor in (("0.95", 3.0), ("0.975", 3 ** (1.6449 / 1.9599640))):
            self.write(f"""<opsa-mef><define-basic-event name="A"><lognormal-deviate><float
                value="1e-3"/><float value="3"/><float value="{level}"/></lognormal-deviate>
                </define-basic-event></opsa-mef>""")
            self.assertEqual(convert(self.model, output=self.flat), (0, ""))
            with open(self.flat, encoding="utf-8") as flat:
                values = [float(each.split('"')[0]) for each in flat.read().split('value="')[1:]]
            self.assertAlmostEqual(values[1], factor, places=6)
            self.assertEqual(values[2], 0.9)


class BadInput(TemporaryFolder):
    def test_refusals_touch_no_file(self):
        for text, expected in REFUSED.items():
            with self.subTest(text[:200]):
                self.write(text)
                with open(self.flat, "w", encoding="utf-8") as flat:
                    flat.write("before")
                status, said = convert(self.model, output=self.flat)
                self.assertEqual(status, 1)
                self.assertIn(expected, said)
                with open(self.flat, encoding="utf-8") as flat:
                    self.assertEqual(flat.read(), "before")
                self.assertEqual(sorted(os.listdir(self.folder)), ["flat.xml", "model.xml"])

    def test_files_of_the_model_stay(self):
        text = "<opsa-mef><define-parameter name='p'><pi/></define-parameter></opsa-mef>"
        self.write(text)
        for name in ("model.xml", "./model.xml"):
            status, said = convert(self.model, output=os.path.join(self.folder, name))
            self.assertEqual(status, 1)
            self.assertIn("is a file of the model", said)
        with open(self.model, encoding="utf-8") as model:
            self.assertEqual(model.read(), text)

    def test_pipes(self):
        def run(text):
            return subprocess.run([PROGRAM, "/dev/stdin", "-o", "/dev/stdout"], input=text, text=True,
                                  capture_output=True, check=False)

        parameter = '<define-parameter name="p">\n    <pi/>\n  </define-parameter>'
        made = run(f"<opsa-mef>{parameter}</opsa-mef>")
        self.assertEqual((made.returncode, made.stderr), (0, ""))
        self.assertEqual(made.stdout,
                         f'<?xml version="1.0"?>\n<open-psa>\n  {parameter}\n</open-psa>\n')
        refused = run("<opsa-mef>\n<define-gate name='G'/></opsa-mef>")
        self.assertEqual((refused.returncode, refused.stdout), (1, ""))
        self.assertIn("/dev/stdin:2: <define-gate>", refused.stderr)

    def test_unknown_attributes(self):
        event = "<define-parameter name='{}' rol='private' x:y='1'><pi/></define-parameter>"
        self.write(f"<opsa-mef xmlns:x='x'>\n{event.format('A')}{event.format('B')}</opsa-mef>")
        said = f"{self.model}:2: <define-parameter>: the attribute rol is not carried over\n"
        self.assertEqual(convert(self.model, output=self.flat), (0, f"orva-import: {said}"))

    def test_files_cut_anywhere(self):
        for name in ("nested", "event-tree", "ccf-groups"):
            with open(os.path.join(HERE, "models", name + ".xml"), "rb") as file:
                text = file.read().rstrip()
            for end in range(0, len(text), 29):
                with open(self.model, "wb") as file:
                    file.write(text[:end])
                status, said = convert(self.model, output=self.flat)
                self.assertEqual((status, said[:13]), (1, "orva-import: "), end)

    def test_depth(self):
        depth = 100_000
        event = '<event name="{}"/>'
        events = "".join(f'<define-basic-event name="{each}"><float value="0.1"/>'
                         "</define-basic-event>" for each in "AB")
        for opening, closing in (("<not>", "</not>"),
                                 ('<or><event name="B"/>', "</or>"),
                                 ('<and><event name="B"/><or><event name="A"/>', "</or></and>")):
            formula = opening * depth + event.format("A") + closing * depth
            self.write(f'<opsa-mef><define-gate name="G"><or>{formula}{event.format("B")}</or>'
                       f"</define-gate>{events}</opsa-mef>")
            self.assertEqual(convert(self.model, output=self.flat), (0, ""))
        self.write('<opsa-mef><define-parameter name="p">' + "<neg>" * depth + "<pi/>"
                   + "</neg>" * depth + "</define-parameter></opsa-mef>")
        self.assertEqual(convert(self.model, output=self.flat), (0, ""))
        self.assertEqual(run_orva(self.folder, "flat.xml", "<check><model/></check>"), "")

    def test_long_names(self):
        name = "x" * 10_000
        self.write(f'<opsa-mef><define-gate name="G"><or><event name="{name}"/></or></define-gate>'
                   "</opsa-mef>")
        status, said = convert(self.model, output=self.flat)
        self.assertEqual(status, 1)
        self.assertLess(len(said), 300)


if __name__ == "__main__":
    unittest.main()
