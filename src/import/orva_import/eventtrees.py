"""Sequences of event trees as literals of the graph.

An event tree is walked along each of its paths. On the way a path collects formulas and expressions,
sets house events and remembers the states of functional events; where it ends in a sequence, the
"and" of what was collected is one way into the sequence, and the sequence is the "or" of its ways.
"""

from .document import local_name
from .formulas import expression_token, formula_token, read_boolean, read_name, read_postfix
from .model import Definition, Scope
from .report import quote

_MOST_STEPS = 2_000_000
_COMPARISONS = {
    "eq": lambda a, b: a == b, "df": lambda a, b: a != b, "lt": lambda a, b: a < b,
    "gt": lambda a, b: a > b, "leq": lambda a, b: a <= b, "geq": lambda a, b: a >= b,
}
_ANNOTATIONS = ("label", "attributes")
_BRANCHINGS = ("fork", "sequence", "branch", "event-tree")


class _State:
    """A path so far. agenda is a linked list (element, rest) of what is still to be done."""

    __slots__ = ("tree", "agenda", "houses", "functional", "collected", "expressions", "sequence",
                 "jumps")

    def copy(self):
        """The same path, to be continued in another way."""
        other = _State()
        for name in _State.__slots__:
            setattr(other, name, getattr(self, name))
        return other


class _Tree:
    """The parts of an event tree by name."""

    def __init__(self, element, places):
        self.element = element
        self.name = element.get("name") or ""
        self.places = places
        self.initial = None
        self.parts = {"define-functional-event": {}, "define-sequence": {}, "define-branch": {}}


class EventTrees:
    """The event trees of a model. sequences: for each initiating event, tree and name the literals
    of the ways into the sequence; probabilities: the basic events made of expressions."""

    def __init__(self, model):
        self._model = model
        self._report = model.report
        self._formulas = None
        self._trees = {}
        self._entered = set()
        self._places = {}
        self._tokens = {}
        self._collected = {}
        self._steps = 0
        self._initiating = None
        self.sequences = {}
        self.probabilities = []
        for element, places in model.event_trees:
            self._read_tree(element, places)
        for _, places in list(model.rules.values()) + model.initiating_events:
            self._places.update(places)

    def settable(self):
        """The house events that an instruction sets."""
        found = set()
        for element, place in self._places.items():
            if local_name(element) == "set-house-event":
                definition = self._model.find_event(
                    ("house-event", element.get("name") or "", place), Scope())
                if definition:
                    found.add(definition)
        return found

    def resolve(self, formulas):
        """Marks what the trees refer to as used."""
        self._formulas = formulas
        for element in self._places:
            if local_name(element) == "collect-formula":
                self._tokens_of(element)

    def walk(self):
        """Walks every tree from its initiating events, or else from itself."""
        starts = []
        for element, places in self._model.initiating_events:
            name = element.get("event-tree")
            if name is None:
                self._report.note(places[element], "define-initiating-event",
                                  f"{quote(element.get('name') or '')} starts no event tree")
            elif self._find(self._trees, name, element):
                self._entered.add(name)
                starts.append((element.get("name"), self._trees[name], element))
        for tree in self._trees.values():
            if tree.name not in self._entered:
                starts.append((tree.name, tree, None))
        for name, tree, element in starts:
            self._walk_from(name, tree, element)

    def _read_tree(self, element, places):
        self._places.update(places)
        tree = _Tree(element, places)
        if tree.name in self._trees:
            self._report.fault(places[element], "define-event-tree",
                               f"{quote(tree.name)} is already defined")
        self._trees[tree.name] = tree
        for child in element:
            tag = local_name(child)
            if tag in tree.parts:
                tree.parts[tag][read_name(child, places[child], self._report)] = child
            elif tag == "initial-state":
                tree.initial = child
            elif tag not in _ANNOTATIONS:
                self._report.fault(places[child], quote(tag), "is not taken here")
        if tree.initial is None:
            self._report.fault(places[element], "define-event-tree", "has no initial state")
        self._entered.update(link.get("name") for link in element.iter("{*}event-tree"))

    def _find(self, table, name, element):
        found = table.get(name)
        if found is None:
            self._fault(element, f"{quote(name or '')} is not defined")
        return found

    def _fault(self, element, text):
        self._report.fault(self._places[element], quote(local_name(element)), text)

    def _walk_from(self, name, tree, element):
        self._initiating = name
        state = _State()
        state.tree, state.agenda, state.sequence, state.jumps = tree, None, None, 0
        state.houses, state.functional = frozenset(), {}
        state.collected, state.expressions = None, ()
        if tree.initial is None:
            return
        state.agenda = _prepend(tree.initial, None)
        if element is not None:
            state.agenda = _prepend(element, state.agenda)
        states = [state]
        while states:
            state = states.pop()
            while state.agenda:
                self._count_step(state)
                each, state.agenda = state.agenda
                branches = self._do(state, each)
                if branches is not None:
                    states.extend(reversed(branches))
                    break
            else:
                self._end(state)

    def _count_step(self, state):
        self._steps += 1
        if self._steps > _MOST_STEPS:
            self._report.stop(state.tree.places[state.tree.element], "define-event-tree",
                              f"takes more than {_MOST_STEPS} steps, or a rule that uses itself")

    def _end(self, state):
        if state.sequence is None:
            self._fault(state.tree.element, "has a path that ends in no sequence")
            return
        literals = []
        chain = state.collected
        while chain:
            literals.append(chain[0])
            chain = chain[1]
        key = (self._initiating, state.tree.name, state.sequence)
        self.sequences.setdefault(key, []).append(tuple(reversed(literals)))

    def _do(self, state, element):
        """Does one instruction; returns the states in which a fork continues, or None."""
        tag = local_name(element)
        action = _INSTRUCTIONS.get(tag)
        if action:
            return action(self, state, element)
        if tag not in _ANNOTATIONS:
            self._fault(element, "can't be carried over")
        return None

    def _fork(self, state, element):
        name = element.get("functional-event")
        self._find(state.tree.parts["define-functional-event"], name, element)
        branches = []
        for path in element:
            if local_name(path) == "path":
                branch = state.copy()
                branch.functional = {**state.functional, name: path.get("state")}
                branch.agenda = _prepend(path, None)
                branches.append(branch)
            elif local_name(path) not in _ANNOTATIONS:
                self._fault(path, "is not taken here")
        return branches

    def _enter_sequence(self, state, element):
        found = self._find(state.tree.parts["define-sequence"], element.get("name"), element)
        if found is not None:
            state.sequence = element.get("name")
            state.agenda = _prepend(found, None)

    def _enter_branch(self, state, element):
        found = self._find(state.tree.parts["define-branch"], element.get("name"), element)
        if found is not None:
            self._jump(state, element)
            state.agenda = _prepend(found, None)

    def _enter_tree(self, state, element):
        found = self._find(self._trees, element.get("name"), element)
        if found is not None and found.initial is not None:
            self._jump(state, element)
            state.tree, state.sequence = found, None
            state.agenda = _prepend(found.initial, None)

    def _jump(self, state, element):
        """Along a path, no branch or tree is entered twice."""
        state.jumps += 1
        if state.jumps > len(self._trees) + sum(
                len(tree.parts["define-branch"]) for tree in self._trees.values()):
            self._report.stop(self._places[element], local_name(element),
                              f"{quote(element.get('name'))} leads back to itself")

    def _enter_block(self, state, element):
        state.agenda = _prepend(element, state.agenda)

    def _enter_rule(self, state, element):
        found = self._find(self._model.rules, element.get("name"), element)
        if found:
            state.agenda = _prepend(found[0], state.agenda)

    def _collect_formula(self, state, element):
        """Paths that collect the same formula under the same settings share its gates."""
        key = element, state.houses
        if key not in self._collected:
            tokens, references = self._tokens_of(element)
            for each in references:
                self._formulas.value(each, state.houses)
            self._collected[key] = self._formulas.evaluate(tokens, references, state.houses,
                                                           (state.tree.name, state.houses))
        state.collected = (self._collected[key], state.collected)

    def _tokens_of(self, element):
        found = self._tokens.get(element)
        if found is None:
            tokens, count = read_postfix(element, self._places.get, formula_token, self._report)
            if count != 1:
                self._fault(element, f"has {count} formulas")
                tokens = []
            found = tokens, self._formulas.resolve_tokens(tokens, Scope())
            self._tokens[element] = found
        return found

    def _collect_expression(self, state, element):
        """An expression becomes a basic event; collected again on a path, another one."""
        times = state.expressions.count(element)
        state.expressions += (element,)
        literal = self._collected.get((element, times))
        if literal is None:
            definition = self._probability(element)
            literal = self._formulas.value(definition)
            self._collected[element, times] = literal
        state.collected = (literal, state.collected)

    def _probability(self, element):
        tokens, count = read_postfix(element, self._places.get, expression_token, self._report)
        if count != 1:
            self._fault(element, f"has {count} expressions")
        elif tokens[0][0] == "float" and not 0 <= float(tokens[0][1]) <= 1:
            self._fault(element, f"{tokens[0][1]} is no probability")
        tree = next(each for each in element.iterancestors() if each.get("name"))
        name = self._model.events.fresh(f"{tree.get('name')}.{len(self.probabilities) + 1}")
        definition = Definition("basic-event", name, self._places[element], Scope())
        definition.tokens = tokens
        definition.is_used = True
        self.probabilities.append(definition)
        return definition

    def _set_house_event(self, state, element):
        if element.get("direction", "forward") != "forward":
            self._fault(element, "acts backward, which can't be carried over")
        definition = self._model.find_event(
            ("house-event", element.get("name") or "", self._places[element]), Scope())
        values = [each for each in element if local_name(each) in ("constant", "bool")]
        if len(values) != 1:
            self._fault(element, "needs one constant")
        elif definition:
            value = read_boolean(values[0], self._places[values[0]], self._report)
            others = {pair for pair in state.houses if pair[0] is not definition}
            if value != definition.value:
                others.add((definition, value))
            state.houses = frozenset(others)

    def _if(self, state, element):
        if not 2 <= len(element) <= 3:
            self._fault(element, "needs a condition and one or two instructions")
        elif self._decide(state, element[0]):
            state.agenda = (element[1], state.agenda)
        elif len(element) == 3:
            state.agenda = (element[2], state.agenda)

    def _decide(self, state, condition):
        tokens = self._condition(condition)
        stack = []
        for token in tokens:
            name, count = token[0], token[1]
            if name in ("float", "bool"):
                stack.append(float(count) if name == "float" else count)
                continue
            arguments = [] if name == "parameter" else stack[len(stack) - count:]
            del stack[len(stack) - len(arguments):]
            stack.append(self._decide_operation(state, condition, token, arguments))
        return bool(stack and stack[0])

    def _condition(self, condition):
        found = self._tokens.get(condition)
        if found is None:
            faults = len(self._report.faults)
            found, _ = read_postfix(condition, self._places.get, expression_token, self._report)
            found.append(expression_token(condition, local_name(condition),
                                          self._places[condition], self._report))
            # What is not in order is not decided.
            self._tokens[condition] = found = found if len(self._report.faults) == faults else []
        return found

    def _decide_operation(self, state, condition, token, arguments):
        name = token[0]
        if name == "test-functional-event":
            return state.functional.get(token[3]) == token[4]
        if name == "test-initiating-event":
            return self._initiating == token[3]
        if name == "and":
            return all(arguments)
        if name == "or":
            return any(arguments)
        if name == "not":
            return not arguments[0]
        if name in _COMPARISONS:
            return _COMPARISONS[name](*arguments)
        self._fault(condition, "can't be decided before the model is quantified")
        return False


def _prepend(container, agenda):
    """The children of an element, and then what is on the agenda."""
    for child in reversed(container):
        if local_name(child) not in _ANNOTATIONS:
            agenda = (child, agenda)
    return agenda


_INSTRUCTIONS = {
    "fork": EventTrees._fork,
    "sequence": EventTrees._enter_sequence,
    "branch": EventTrees._enter_branch,
    "event-tree": EventTrees._enter_tree,
    "block": EventTrees._enter_block,
    "rule": EventTrees._enter_rule,
    "if": EventTrees._if,
    "collect-formula": EventTrees._collect_formula,
    "collect-expression": EventTrees._collect_expression,
    "set-house-event": EventTrees._set_house_event,
}
