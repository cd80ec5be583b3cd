"""One graph of flat operators for all formulas.

A literal is an integer: twice the number of a node, plus 1 when it is negated. Node 0 is the
constant true; a variable stands for a basic event; an operator is "and", "or" or "atleast" over
literals of nodes with smaller numbers. Constants, repeated arguments, arguments beside their own
negation and operators of a single argument vanish while the graph grows.

Negation costs nothing in the graph: a negated operator is the dual one over negated arguments. Each
node is written in one polarity only. When a polarity has no negated basic event in all that is
below, and is needed, it is that one, so that a coherent formula is written without any "not". When
neither is free of them, a "not" stays on a reference.
"""

from .report import quote

TRUE = 0
FALSE = 1

_DUALS = {"and": "or", "or": "and", "atleast": "atleast"}
_MOST_NODES_PER_OPERATOR = 1_000_000


class TooLarge(Exception):
    """An operator over repeated arguments would take too many others."""


class Graph:
    """The nodes. operators[n] is None for a variable, else (operator, min, arguments)."""

    def __init__(self):
        self.operators = [None]
        self.symbols = [None]
        self._clean = [0]

    def variable(self, symbol):
        """A new literal for a basic event."""
        return self._add(None, symbol, 1)

    def conjunction(self, arguments):
        """The literal of an "and"."""
        kept = dict.fromkeys(arguments)
        if FALSE in kept or any(each ^ 1 in kept for each in kept):
            return FALSE
        kept.pop(TRUE, None)
        return self._operator("and", len(kept), kept, TRUE)

    def disjunction(self, arguments):
        """The literal of an "or"."""
        kept = dict.fromkeys(arguments)
        if TRUE in kept or any(each ^ 1 in kept for each in kept):
            return TRUE
        kept.pop(FALSE, None)
        return self._operator("or", 1, kept, FALSE)

    def at_least(self, least, arguments):
        """The literal of "at least so many of the arguments"."""
        counts = {}
        for each in arguments:
            if each == TRUE or counts.get(each ^ 1):
                # One of an argument and its negation is always true.
                least -= 1
                if each != TRUE:
                    counts[each ^ 1] -= 1
            elif each != FALSE:
                counts[each] = counts.get(each, 0) + 1
        return self._threshold(least, {each: n for each, n in counts.items() if n})

    def exclusive(self, one, other):
        """The literal of "one or other, not both"."""
        sign = (one ^ other) & 1
        one, other = one & ~1, other & ~1
        if one == other:
            return FALSE ^ sign
        if TRUE in (one, other):
            return (one or other) ^ 1 ^ sign
        return sign ^ self.disjunction((self.conjunction((one, other ^ 1)),
                                        self.conjunction((one ^ 1, other))))

    def is_clean(self, literal):
        """Whether no basic event is negated in the literal and all below."""
        return bool(self._clean[literal >> 1] >> (literal & 1) & 1)

    def definition(self, literal):
        """The operator, minimum and arguments that define a literal of an operator."""
        operator, least, arguments = self.operators[literal >> 1]
        if not literal & 1:
            return operator, least, arguments
        return (_DUALS[operator], len(arguments) - least + 1,
                [each ^ 1 for each in arguments])

    def _add(self, operator, symbol, clean):
        self.operators.append(operator)
        self.symbols.append(symbol)
        self._clean.append(clean)
        return 2 * (len(self.operators) - 1)

    def _operator(self, operator, least, arguments, empty):
        if not arguments:
            return empty
        if len(arguments) == 1:
            return next(iter(arguments))
        clean = 3
        for each in arguments:
            below = self._clean[each >> 1]
            clean &= (below >> 1 | (below & 1) << 1) if each & 1 else below
        return self._add((operator, least, tuple(arguments)), None, clean)

    def _plain_threshold(self, least, arguments):
        if least <= 0:
            return TRUE
        if least > len(arguments):
            return FALSE
        if least == 1:
            return self._operator("or", 1, arguments, FALSE)
        if least == len(arguments):
            return self._operator("and", least, arguments, TRUE)
        return self._operator("atleast", least, arguments, FALSE)

    def _threshold(self, least, weights):
        """At least so much of the weights: repeated arguments are split off one by one, each being
        true with so much less left to reach, or not needed."""
        single = [each for each, weight in weights.items() if weight == 1]
        repeated = [(each, weight) for each, weight in weights.items() if weight > 1]
        if not single and len({weight for _, weight in repeated}) == 1:
            weight = repeated[0][1]
            return self._plain_threshold(-(-least // weight), list(weights))
        # wanted[i]: the amounts that the arguments from the i-th repeated one on have to reach.
        wanted = [{least}]
        for _, weight in repeated:
            wanted.append(wanted[-1] | {amount - weight for amount in wanted[-1] if amount > 0})
            if sum(map(len, wanted)) > _MOST_NODES_PER_OPERATOR:
                raise TooLarge()
        reach = {amount: self._plain_threshold(amount, single) for amount in wanted[-1]}
        for (each, weight), amounts in zip(reversed(repeated), reversed(wanted[:-1])):
            reach = {amount: TRUE if amount <= 0 else self.disjunction(
                (self.conjunction((each, reach[amount - weight])), reach[amount]))
                for amount in sorted(amounts)}
        return reach[least]


def _exclusive_of_all(graph, _token, arguments):
    result = FALSE
    for each in arguments:
        result = graph.exclusive(result, each)
    return result


_OPERATIONS = {
    "and": lambda graph, token, arguments: graph.conjunction(arguments),
    "or": lambda graph, token, arguments: graph.disjunction(arguments),
    "nand": lambda graph, token, arguments: graph.conjunction(arguments) ^ 1,
    "nor": lambda graph, token, arguments: graph.disjunction(arguments) ^ 1,
    "not": lambda graph, token, arguments: arguments[0] ^ 1,
    "xor": _exclusive_of_all,
    "iff": lambda graph, token, arguments: graph.exclusive(*arguments) ^ 1,
    "imply": lambda graph, token, arguments: graph.disjunction((arguments[0] ^ 1, arguments[1])),
    "atleast": lambda graph, token, arguments: graph.at_least(token[3], arguments),
    "atmost": lambda graph, token, arguments: graph.at_least(token[3] + 1, arguments) ^ 1,
    "cardinality": lambda graph, token, arguments: graph.conjunction(
        (graph.at_least(token[3], arguments), graph.at_least(token[4] + 1, arguments) ^ 1)),
}


class Formulas:
    """The gates of a model in a graph.

    A gate may have several values: one for each setting of house events, by event trees, that it
    depends on. A setting is a frozen set of pairs (house event, Boolean).
    """

    def __init__(self, model, settable):
        self.graph = Graph()
        self._model = model
        self._report = model.report
        self._settable = settable
        self._variables = {}
        self._values = {}
        self._houses = {}
        self._resolved = {}
        # For each operator node: the gate, and the setting, in whose formula it is.
        self.owners = {}

    def all_values(self):
        """Pairs ((definition, setting), literal) of all that was worked out."""
        return self._values.items()

    def resolve(self, definition):
        """The definitions that a gate refers to, in the order of the references; marks them."""
        found = self._resolved.get(definition)
        if found is None:
            found = self.resolve_tokens(definition.tokens, definition.scope)
            self._resolved[definition] = found
        return found

    def resolve_tokens(self, tokens, scope):
        """The same for the tokens of a formula in a scope."""
        found = []
        for token in tokens:
            if len(token) == 3 and type(token[1]) is str:
                definition = self._model.find_event(token, scope)
                if definition:
                    definition.is_used = True
                found.append(definition)
        return found

    def value(self, definition, setting=frozenset()):
        """The literal of an event under a setting. Gates below it are worked out first, on a stack
        of their own; a ring of gates stops the conversion."""
        key = self._key(definition, setting)
        if key not in self._values:
            self._work_out(key)
        return self._values[key]

    def evaluate(self, tokens, references, setting, owner):
        """The literal of a formula whose references all have values."""
        first = len(self.graph.operators)
        stack = []
        events = iter(references)
        for token in tokens:
            name, value = token[0], token[1]
            if name == "constant":
                stack.append(TRUE if value else FALSE)
            elif type(value) is str:
                stack.append(self.value(next(events), setting))
            else:
                arguments = stack[-value:]
                del stack[-value:]
                stack.append(self._apply(token, arguments))
        for node in range(first, len(self.graph.operators)):
            if self.graph.operators[node]:
                self.owners[node] = owner
        return stack[0]

    def _apply(self, token, arguments):
        try:
            return _OPERATIONS[token[0]](self.graph, token, arguments)
        except TooLarge:
            self._report.stop(token[2], token[0], "repeats too many arguments")

    def _key(self, definition, setting):
        if not setting:
            return definition, setting
        if definition not in self._houses:
            self.value(definition)
        houses = self._houses[definition]
        if len(houses) == 0:
            return definition, frozenset()
        return definition, frozenset(pair for pair in setting if pair[0] in houses)

    def _work_out(self, key):
        stack = [(key, None)]
        on_path = {key[0]: None}
        while stack:
            (definition, setting), references = stack[-1]
            if references is None:
                references = iter(self._below(definition))
                stack[-1] = ((definition, setting), references)
            for each in references:
                below = self._key(each, setting)
                if below not in self._values:
                    if each in on_path:
                        self._refuse_ring(on_path, each)
                    on_path[each] = None
                    stack.append((below, None))
                    break
            else:
                stack.pop()
                del on_path[definition]
                self._values[definition, setting] = self._compute(definition, setting)

    def _below(self, definition):
        return self.resolve(definition) if definition.kind == "gate" else ()

    def _compute(self, definition, setting):
        if definition.kind == "basic-event":
            self._houses[definition] = frozenset()
            return self.graph.variable(definition)
        if definition.kind == "house-event":
            value = dict(setting).get(definition, definition.value)
            self._houses[definition] = frozenset(
                (definition,) if definition in self._settable else ())
            return TRUE if value else FALSE
        references = self.resolve(definition)
        if not setting:
            self._houses[definition] = frozenset().union(
                *{self._houses[each] for each in references}) if self._settable else frozenset()
        return self.evaluate(definition.tokens, references, setting, (definition, setting))

    def _refuse_ring(self, on_path, again):
        gates = list(on_path)
        ring = gates[gates.index(again):]
        names = " -> ".join(quote(each.name) for each in ring[:10])
        names += " -> ..." if len(ring) > 10 else f" -> {quote(again.name)}"
        self._report.stop(again.place, "define-gate", f"is defined by itself: {names}")
