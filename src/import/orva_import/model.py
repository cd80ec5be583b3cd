"""The model as read: definitions, and the names under which they are found.

A public definition is known everywhere by its name; a private one inside its container by its name
and elsewhere by its path, the names of its containers and its own joined by dots. Every definition
is written under one name, the name of a public one and the path of a private one.
"""

import os

from .document import Source, check_attributes, local_name, resolve_include
from .formulas import (expression_token, formula_token, read_boolean, read_label, read_name,
                       read_postfix)
from .report import quote

EVENT_KINDS = {"define-gate": "gate", "define-basic-event": "basic-event",
               "define-house-event": "house-event"}
CCF_MODELS = ("beta-factor", "MGL", "alpha-factor", "phi-factor")
_MOST_INCLUDES = 100


class Scope:
    """Where a definition stands: the path of its container and the role that it inherits."""

    def __init__(self, path="", role="public", tree=""):
        self.path = path
        self.role = role
        self.tree = tree

    def inner(self, name, role):
        """The scope of a container in this one."""
        name = name or "?"
        path = f"{self.path}.{name}" if self.path else name
        return Scope(path, role or self.role, self.tree or name)

    def full(self, name):
        """The path of a name defined here."""
        return f"{self.path}.{name}" if self.path else name


class Definition:
    """A gate, basic event, house event or parameter. tokens is its formula or expression."""

    __slots__ = ("kind", "name", "place", "scope", "label", "tokens", "value", "unit", "is_used",
                 "is_kept")

    def __init__(self, kind, name, place, scope):
        self.kind = kind
        self.name = name
        self.place = place
        self.scope = scope
        self.label = None
        self.tokens = None
        self.value = None
        self.unit = None
        self.is_used = False
        self.is_kept = False


class Names:
    """The definitions of one kind of names: events, or parameters."""

    def __init__(self, report):
        self._report = report
        self._public = {}
        self._paths = {}
        self._with_private = set()
        self.written = {}

    def add(self, definition, element, role):
        """Makes a definition known; a second one of the same name is reported."""
        scope = definition.scope
        path = scope.full(definition.name)
        if (role or scope.role) == "private" and scope.path:
            definition.name = path
            prefix = scope.path
            while prefix and prefix not in self._with_private:
                self._with_private.add(prefix)
                prefix = prefix.rpartition(".")[0]
        else:
            self._public[definition.name] = definition
        former = self.written.setdefault(definition.name, definition)
        if former is not definition:
            self._report.fault(definition.place, element,
                               f"{quote(definition.name)} is already defined at "
                               f"{self._report.describe(former.place)}")
        self._paths[path] = definition

    def find(self, name, scope):
        """The definition that a name stands for in a scope: that of the innermost container which
        has one, or the public one, or the one of this path; else None."""
        prefix = scope.path
        while prefix:
            if prefix in self._with_private:
                found = self._paths.get(f"{prefix}.{name}")
                if found:
                    return found
            prefix = prefix.rpartition(".")[0]
        return self._public.get(name) or self._paths.get(name)

    def fresh(self, base):
        """A name that nothing has yet: the base, or the base with a number."""
        name = base
        count = 1
        while name in self.written:
            count += 1
            name = f"{base}-{count}"
        self.written[name] = None
        return name


class Group:
    """A common-cause failure group."""

    def __init__(self, name, place, model, label):
        self.name = name
        self.place = place
        self.model = model
        self.label = label
        self.members = []
        self.distribution = None
        self.factors = []


class Model:
    """All that was read."""

    def __init__(self, report):
        self.report = report
        self.events = Names(report)
        self.parameters = Names(report)
        self.definitions = []
        self.groups = []
        self.event_trees = []
        self.initiating_events = []
        self.rules = {}

    def find_event(self, token, scope):
        """The definition that a reference means; None, with a report, without one."""
        kind, name, place = token
        found = self.events.find(name, scope)
        if found is None:
            self.report.fault(place, kind, f"{quote(name)} is not defined")
        elif kind not in ("event", found.kind):
            self.report.fault(place, kind, f"{quote(name)} is a {found.kind}")
        else:
            return found
        return None


class Reader:
    """Reads files into a model."""

    def __init__(self, model):
        self._model = model
        self._report = model.report
        self._sources = []
        self._group_names = set()

    def read(self, path):
        """Reads a file and what it includes."""
        self._push(path, Scope())
        while self._sources:
            source, events = self._sources[-1]
            event, item = next(events, (None, None))
            if event is None:
                self._sources.pop()
            elif event == "definition":
                self._define(source, item)

    def _push(self, path, scope):
        source = Source(path, self._report, scope)
        self._sources.append((source, source.events()))

    def _define(self, source, element):
        tag = local_name(element)
        if tag in EVENT_KINDS or tag == "define-parameter":
            self._define_symbol(source, element, tag)
        else:
            places = source.count(element)
            action = _ACTIONS.get(tag)
            if action:
                action(self, source, element, places)

    def _define_symbol(self, source, element, tag):
        scope = source.scope()
        kind = EVENT_KINDS.get(tag, "parameter")
        token = _house_token if kind == "house-event" else (
            formula_token if kind == "gate" else expression_token)
        faults = len(self._report.faults)
        tokens, count = read_postfix(element, lambda _: source.number(), token, self._report)
        definition = Definition(kind, "", source.place, scope)
        definition.name = read_name(element, source.place, self._report)
        definition.label = read_label(element) if len(element) > 1 else None
        definition.unit = element.get("unit")
        check_attributes(element, source.place, self._report)
        definition.tokens = tokens
        fewest = 0 if kind in ("basic-event", "house-event") else 1
        if not fewest <= count <= 1 and len(self._report.faults) == faults:
            self._report.fault(source.place, tag, f"has {count} definitions")
        if kind == "house-event":
            definition.value = bool(tokens and tokens[0][1])
        names = self._model.parameters if kind == "parameter" else self._model.events
        names.add(definition, tag, element.get("role"))
        self._model.definitions.append(definition)

    def _include(self, source, element, places):
        path = resolve_include(source, element)
        place = places[element]
        if path is None:
            self._report.fault(place, "include", "has no attribute file")
        elif any(_is_same_file(each.path, path) for each, _ in self._sources):
            self._report.stop(place, "include", f"{quote(path)} includes itself")
        elif len(self._sources) >= _MOST_INCLUDES:
            self._report.stop(place, "include", f"more than {_MOST_INCLUDES} files in each other")
        else:
            self._push(path, source.scope())

    def _define_group(self, source, element, places):
        place = places[element]
        name = read_name(element, place, self._report)
        group = Group(name, place, element.get("model"), read_label(element))
        group.scope = source.scope()
        if group.model not in CCF_MODELS:
            self._report.fault(place, "define-CCF-group", "has no model that is known")
        if name in self._group_names:
            self._report.fault(place, "define-CCF-group", f"{quote(name)} is already defined")
        self._group_names.add(name)
        for child in element:
            self._read_group_part(group, child, places)
        if len(group.members) < 2 or group.distribution is None:
            self._report.fault(place, "define-CCF-group", "needs two members and a distribution")
        self._model.groups.append(group)

    def _read_group_part(self, group, child, places):
        tag = local_name(child)
        if tag == "members":
            for member in child:
                group.members.append((local_name(member), member.get("name") or "", places[member]))
        elif tag == "distribution":
            group.distribution = self._read_expression(child, places)
        elif tag == "factors":
            for factor in child:
                self._read_group_part(group, factor, places)
        elif tag == "factor":
            tokens = self._read_expression(child, places)
            group.factors.append((child.get("level"), tokens, places[child]))
        elif tag not in ("label", "attributes"):
            self._report.fault(places[child], quote(tag), "is not taken here")

    def _read_expression(self, element, places):
        tokens, count = read_postfix(element, places.get, expression_token, self._report)
        if count != 1:
            self._report.fault(places[element], local_name(element), f"has {count} expressions")
        return tokens

    def _define_event_tree(self, _source, element, places):
        read_name(element, places[element], self._report)
        self._model.event_trees.append((element, places))

    def _define_initiating_event(self, _source, element, places):
        read_name(element, places[element], self._report)
        self._model.initiating_events.append((element, places))

    def _define_rule(self, _source, element, places):
        self._model.rules[read_name(element, places[element], self._report)] = (
            element, places)


def _house_token(element, tag, place, report):
    if tag in ("constant", "bool"):
        return ("constant", read_boolean(element, place, report), place)
    report.fault(place, quote(tag), "is not taken here")
    return None


_ACTIONS = {
    "include": Reader._include,
    "define-CCF-group": Reader._define_group,
    "define-event-tree": Reader._define_event_tree,
    "define-initiating-event": Reader._define_initiating_event,
    "define-rule": Reader._define_rule,
}


def _is_same_file(one, other):
    return os.path.realpath(one) == os.path.realpath(other)
