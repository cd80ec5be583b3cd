"""Which definitions are written, and under which names.

Everything is written that a top event needs, a top event being a gate that no formula of the input
refers to, or a sequence; and every basic event and parameter that nothing referred to. What was
referred to and is needed no longer, because constants took it away, is left out.
"""

from .boolean import FALSE, TRUE
from .model import Definition, Scope
from .report import quote


class Gate:
    """A gate to be written: its arguments are pairs (is negated, reference), the reference being a
    Gate or the Definition of a basic event."""

    __slots__ = ("name", "label", "tree", "operator", "least", "arguments", "order")

    def __init__(self, name, label, tree, order):
        self.name = name
        self.label = label
        self.tree = tree
        self.operator = "or"
        self.least = 1
        self.arguments = ()
        self.order = order


class Selection:
    """gates and events to be written, in order. sequences: pairs (name, literal)."""

    def __init__(self, model, formulas, sequences):
        self._model = model
        self._report = model.report
        self._formulas = formulas
        self._graph = formulas.graph
        self._needs = {}
        self._polarity = {}
        self._referred = set()
        self._gates = {}
        self._counts = {}
        self._indices = {each: i for i, each in enumerate(model.definitions)}
        self._roots = {}
        self.gates = []
        self.events = []
        self._tops = [(each.name, formulas.value(each), each) for each in model.definitions
                      if each.kind == "gate" and not each.is_used]
        self._tops += [(name, literal, None) for name, literal in sequences]
        self._mark()
        self._name_gates()
        self._fill_gates()
        self._keep_events()
        self._write_tops_without_operator()
        self.gates.sort(key=lambda gate: gate.order)

    def _mark(self):
        """Finds out which nodes are needed, and in which polarity each is written: parents have
        larger numbers than their arguments."""
        operators = self._graph.operators
        for _, literal, _ in self._tops:
            self._needs[literal >> 1] = self._needs.get(literal >> 1, 0) | 1 << (literal & 1)
        self._find_roots()
        for node in range(len(operators) - 1, 0, -1):
            if node not in self._needs or not operators[node]:
                continue
            literal = self._choose(node)
            self._polarity[node] = literal
            for argument in self._graph.definition(literal)[2]:
                below = argument >> 1
                self._needs[below] = self._needs.get(below, 0) | 1 << (argument & 1)
                self._referred.add(below)

    def _find_roots(self):
        """Which gate, under which setting, a literal is the value of: the one that owns the node
        rather than another name of it."""
        for (definition, setting), literal in self._formulas.all_values():
            owner = self._formulas.owners.get(literal >> 1)
            if definition.kind == "gate" and owner == (definition, setting):
                self._roots.setdefault(literal >> 1, literal)

    def _choose(self, node):
        literals = [2 * node + sign for sign in (0, 1) if self._needs[node] >> sign & 1]
        clean = [each for each in literals if self._graph.is_clean(each)]
        if clean:
            return clean[0]
        return literals[0] if len(literals) == 1 else self._roots.get(node, literals[0])

    def _name_gates(self):
        for name, literal, definition in self._tops:
            owner = self._formulas.owners.get(literal >> 1)
            is_own = definition is not None and owner is not None and owner[0] is definition
            if self._polarity.get(literal >> 1) == literal and literal >> 1 not in self._gates and (
                    is_own or literal >> 1 not in self._referred):
                self._gates[literal >> 1] = self._new_gate(name, definition, (0, 0))
            elif self._graph.operators[literal >> 1]:
                gate = self._new_gate(name, definition, (0, 0))
                self._define(gate, literal)
        for node in sorted(self._polarity):
            if node not in self._gates and (node in self._referred):
                self._gates[node] = self._name_inner(node)

    def _new_gate(self, name, definition, order):
        label = definition.label if definition else None
        tree = definition.scope.tree if definition else ""
        index = self._indices.get(definition, len(self._indices))
        gate = Gate(name, label, tree, (index, *order))
        self.gates.append(gate)
        return gate

    def _name_inner(self, node):
        """A gate for a node: under the name of the gate whose value it is, or a generated name."""
        definition, setting = self._formulas.owners[node]
        is_root = node in self._roots
        if not isinstance(definition, Definition):
            return self._new_gate(self._numbered(definition), None, (1, node))
        if is_root and self._roots[node] == self._polarity[node] and not setting:
            return self._new_gate(definition.name, definition, (0, node))
        base = definition.name + "".join(
            f".{house.name}={str(value).lower()}"
            for house, value in sorted(setting, key=lambda pair: pair[0].name))
        if is_root:
            suffix = "" if self._roots[node] == self._polarity[node] else ".not"
            name = self._model.events.fresh(base + suffix)
        else:
            name = self._numbered(base)
        gate = self._new_gate(name, definition, (1, node))
        gate.label = None
        return gate

    def _numbered(self, base):
        self._counts[base] = self._counts.get(base, 0) + 1
        return self._model.events.fresh(f"{base}.{self._counts[base]}")

    def _fill_gates(self):
        for node, gate in self._gates.items():
            self._define(gate, self._polarity[node])
        for gate in self.gates:
            gate.arguments = [self._refer(each) for each in gate.arguments]

    def _define(self, gate, literal):
        gate.operator, gate.least, gate.arguments = self._graph.definition(literal)

    def _refer(self, literal):
        node = literal >> 1
        if self._graph.operators[node]:
            return self._polarity[node] != literal, self._gates[node]
        return bool(literal & 1), self._graph.symbols[node]

    def _keep_events(self):
        for node in self._needs:
            symbol = self._graph.symbols[node]
            if symbol is not None:
                symbol.is_kept = True
        for each in self._model.definitions:
            each.is_kept = each.is_kept or not each.is_used
        for group in self._model.groups:
            kept = any(each.is_kept for each in group.members)
            for each in group.members:
                each.is_kept = kept
        self.events = [each for each in self._model.definitions
                       if each.kind == "basic-event" and each.is_kept]

    def _write_tops_without_operator(self):
        """A top event that comes down to an event or a constant."""
        for name, literal, definition in self._tops:
            if literal in (TRUE, FALSE):
                self._add_constant(name, literal, definition)
            elif not self._graph.operators[literal >> 1]:
                self._add_alias(name, literal, definition)

    def _add_constant(self, name, literal, definition):
        event = Definition("basic-event", name, None, Scope())
        event.label = definition and definition.label
        event.tokens = [("float", "1" if literal == TRUE else "0", None)]
        self.events.append(event)
        self._report.note(definition.place if definition else None, None,
                          f"{quote(name)} is always {'true' if literal == TRUE else 'false'}: "
                          f"written as a basic event of probability {event.tokens[0][1]}")

    def _add_alias(self, name, literal, definition):
        """The engine takes a top event that comes down to one event as certain: it gets a second
        argument, which the first one absorbs."""
        one = self._refer(literal)
        other = next((each for each in self.events if each is not one[1]), None)
        if other is None:
            other = Definition("basic-event", self._numbered(name), None, Scope())
            other.tokens = [("float", "0", None)]
            self.events.append(other)
        gate = self._new_gate(name, definition, (0, 0))
        absorbed = self._new_gate(self._numbered(name), definition, (1, 0))
        absorbed.label = None
        absorbed.operator, absorbed.arguments = "and", [one, (False, other)]
        gate.arguments = [one, (False, absorbed)]
