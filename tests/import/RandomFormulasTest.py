"""Random nested models: their truth tables stay what they were, and orva finds the minimal cutsets.

Half of the models are coherent, with negations that cancel: they must come out without any.
"""

import random
import unittest

from support import Flat, TemporaryFolder, convert, cutsets_of_orva, minimal, subsets

MODELS = 1000
WITH_ORVA = 10  # every so many
EVENTS = "ABCDE"
GATES = 5
HOUSES = {"H0": False, "H1": True}
ANY = ("and", "or", "not", "nand", "nor", "xor", "iff", "imply", "atleast", "atmost", "cardinality")

# How many arguments are true, of how many, between the limits: the meaning of each operator.
MEANINGS = {
    "and": lambda k, n, low, high: k == n,
    "or": lambda k, n, low, high: k > 0,
    "not": lambda k, n, low, high: k == 0,
    "nand": lambda k, n, low, high: k < n,
    "nor": lambda k, n, low, high: k == 0,
    "xor": lambda k, n, low, high: k % 2 == 1,
    "iff": lambda k, n, low, high: k != 1,
    "atleast": lambda k, n, low, high: k >= low,
    "atmost": lambda k, n, low, high: k <= high,
    "cardinality": lambda k, n, low, high: low <= k <= high,
}


class RandomModel:
    """Gates 0 ... over events, houses, constants and later gates. A formula is a name, a Boolean,
    or (operator, low, high, arguments)."""

    def __init__(self, seed):
        self.random = random.Random(seed)
        self.is_coherent = seed % 2 == 0
        # In a coherent model a gate may stand for the failure or for the success of something.
        self.signs = [self.is_coherent and i > 0 and self.random.random() < 0.5
                      for i in range(GATES)]
        self.gates = [self._formula(i, 3, self.signs[i]) for i in range(GATES)]

    def _formula(self, gate, depth, sign):
        if depth == 0 or self.random.random() < 0.2:
            return self._leaf(gate, sign)
        if not self.is_coherent:
            operator = self.random.choice(ANY)
            return self._operator(operator, gate, depth, (False,) * 4)
        if self.random.random() < 0.25:
            return ("not", 0, 0, [self._formula(gate, depth - 1, not sign)])
        operator, below = self.random.choice(
            (("and", sign), ("or", sign), ("atleast", sign), ("nand", not sign), ("nor", not sign),
             ("atmost", not sign), ("imply", sign)))
        signs = (not sign, sign) if operator == "imply" else (below,) * 4
        return self._operator(operator, gate, depth, signs)

    def _operator(self, operator, gate, depth, signs):
        n = {"not": 1, "iff": 2, "imply": 2}.get(operator) or self.random.randint(1, 4)
        arguments = [self._formula(gate, depth - 1, sign) for sign in signs[:n]]
        low = self.random.randint(operator == "atleast", n)
        return (operator, low, self.random.randint(low, n), arguments)

    def _leaf(self, gate, sign):
        choice = self.random.random()
        if choice < 0.3 and gate + 1 < GATES:
            name = self.random.randrange(gate + 1, GATES)
            return self._negate(f"G{name}", self.signs[name] != sign)
        if choice < 0.35:
            return self.random.choice(list(HOUSES))
        if choice < 0.38:
            return self.random.random() < 0.5
        return self._negate(self.random.choice(EVENTS), sign)

    def _negate(self, name, is_negated):
        if not self.is_coherent:
            is_negated = False
        return ("not", 0, 0, [name]) if is_negated else name

    def value(self, formula, true_events):
        """Whether the formula is true when those events are."""
        if isinstance(formula, bool):
            return formula
        if isinstance(formula, str):
            if formula in HOUSES:
                return HOUSES[formula]
            if formula[0] == "G":
                return self.value(self.gates[int(formula[1:])], true_events)
            return formula in true_events
        operator, low, high, arguments = formula
        values = [self.value(each, true_events) for each in arguments]
        if operator == "imply":
            return values[1] or not values[0]
        return MEANINGS[operator](sum(values), len(values), low, high)

    def text(self):
        """The model as a document."""
        gates = "".join(f'<define-gate name="G{i}">{self._text(formula)}</define-gate>\n'
                        for i, formula in enumerate(self.gates))
        houses = "".join(f'<define-house-event name="{name}"><constant value="{str(value).lower()}"/>'
                         "</define-house-event>" for name, value in HOUSES.items())
        events = "".join(f'<define-basic-event name="{each}"><float value="0.1"/>'
                         "</define-basic-event>" for each in EVENTS)
        return (f'<opsa-mef><define-fault-tree name="F">{gates}</define-fault-tree>'
                f"<model-data>{houses}{events}</model-data></opsa-mef>")

    def _text(self, formula):
        if isinstance(formula, bool):
            return f'<constant value="{str(formula).lower()}"/>'
        if isinstance(formula, str):
            return f'<event name="{formula}"/>'
        operator, low, high, arguments = formula
        limits = f' min="{low}"' * (operator in ("atleast", "cardinality"))
        limits += f' max="{high}"' * (operator in ("atmost", "cardinality"))
        return f"<{operator}{limits}>{''.join(map(self._text, arguments))}</{operator}>"

    def tops(self):
        """The gates that no gate refers to."""
        text = "".join(map(self._text, self.gates))
        return [f"G{i}" for i in range(GATES) if f'"G{i}"' not in text]


class RandomFormulas(TemporaryFolder):
    def test_truth_tables_and_cutsets(self):
        compared = 0
        for seed in range(MODELS):
            with self.subTest(seed=seed):
                compared += self._compare(seed)
        self.assertGreater(compared, MODELS // 4 // WITH_ORVA)

    def _compare(self, seed):
        model = RandomModel(seed)
        self.write(model.text())
        status, said = convert(self.model, output=self.flat)
        self.assertEqual(status, 0, said)
        flat = Flat(self.flat)
        for top in model.tops():
            formula = model.gates[int(top[1:])]
            true_sets = [each for each in subsets(EVENTS) if model.value(formula, each)]
            if top not in flat.gates:
                self.assertIn(len(true_sets), (0, 2 ** len(EVENTS)), top)
                self.assertIn(f"{top} is always {str(bool(true_sets)).lower()}", said)
                continue
            for each in subsets(EVENTS):
                self.assertEqual(flat.value(top, each), each in true_sets, (top, each))
        self.assertLessEqual(flat.unused(), set(model.tops()))
        if not model.is_coherent or "G0" not in flat.gates:
            return 0
        return self._compare_with_orva(model, seed)

    def _compare_with_orva(self, model, seed):
        """The flat model has no negation as far as the coherent top event G0 goes."""
        waiting = ["G0"]
        flat = Flat(self.flat)
        while waiting:
            formula = flat.gates.get(waiting.pop(), ())
            self.assertFalse([each for each in formula if each.tag == "not"])
            waiting += [each.get("name") for each in formula]
        if seed % WITH_ORVA:
            return 0
        true_sets = [each for each in subsets(EVENTS) if model.value(model.gates[0], each)]
        self.assertEqual(cutsets_of_orva(self.folder, "flat.xml", "G0"), minimal(true_sets))
        return 1


if __name__ == "__main__":
    unittest.main()
