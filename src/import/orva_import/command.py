"""The command line, and the road of a model from reading to writing."""

import argparse
import gc
import os
import sys

from .boolean import Formulas
from .eventtrees import EventTrees
from .expressions import Expressions
from .model import Definition, Model, Reader, Scope
from .report import Report, Stop, quote
from .selection import Selection
from .writer import Writer, describe

# The lowest level for which each model of common-cause failures has a factor.
_LOWEST_LEVELS = {"MGL": 2, "alpha-factor": 1, "phi-factor": 1}


def main(arguments):
    """Converts; returns the exit status, 0 or, with a report, 1; 130 when Ctrl-C ends it."""
    parser = argparse.ArgumentParser(
        prog="orva-import", description="Writes Open-PSA models of any origin as orva reads them.")
    parser.add_argument("models", nargs="+", metavar="MODEL", help="the files of one model")
    parser.add_argument("-o", dest="output", required=True, metavar="FLAT.xml",
                        help="the file to write")
    try:
        options = parser.parse_args(arguments)
    except SystemExit as ending:
        return 1 if ending.code else 0
    # What is read stays until the end: looking for garbage in it takes a third of the time.
    gc.disable()
    report = Report()
    try:
        convert(options.models, options.output, report)
    except Stop:
        pass
    except MemoryError:
        report.faults = [(None, None, "memory exhausted")]
    except KeyboardInterrupt:
        print("orva-import: interrupted", file=sys.stderr)
        return 130
    report.show()
    return 1 if report.faults else 0


def convert(paths, output, report):
    """Reads the files and writes the model, or raises Stop with faults in the report."""
    model = Model(report)
    reader = Reader(model)
    for path in paths:
        reader.read(path)
    _stop_on_faults(report)
    trees = EventTrees(model)
    formulas = Formulas(model, trees.settable())
    _resolve_groups(model)
    for each in model.definitions:
        if each.kind == "gate":
            formulas.resolve(each)
    trees.resolve(formulas)
    _stop_on_faults(report)
    for each in model.definitions:
        if each.kind != "parameter":
            formulas.value(each)
    trees.walk()
    _stop_on_faults(report)
    model.definitions += trees.probabilities
    expressions = Expressions(model)
    converted = _convert_expressions(model, expressions)
    _stop_on_faults(report)
    selection = Selection(model, formulas, _name_sequences(model, formulas, trees))
    _write(model, selection, expressions, converted, output)


def _stop_on_faults(report):
    if report.faults:
        raise Stop()


def _resolve_groups(model):
    """Members become definitions: a group defines those that nothing else does."""
    owners = {}
    for group in model.groups:
        members = []
        for kind, name, place in group.members:
            member = model.events.find(name, group.scope)
            if member is None and name and kind in ("basic-event", "event"):
                member = Definition("basic-event", name, place, group.scope)
                model.events.add(member, kind, None)
                model.definitions.append(member)
            elif member is None or member.kind != "basic-event":
                model.report.fault(place, kind, f"{quote(name)} can't be a member of a group")
                continue
            if owners.setdefault(member, group) is not group or member in members:
                model.report.fault(place, kind, f"{quote(name)} already belongs to a group")
            members.append(member)
        group.members = members
        _check_levels(group, model.report)


def _check_levels(group, report):
    count = len(group.members)
    levels = {}
    for index, (text, tokens, place) in enumerate(group.factors):
        lowest = _LOWEST_LEVELS.get(group.model, count)
        # The one factor of a beta-factor group is that of all members, whatever its level.
        level = count if group.model == "beta-factor" else (
            lowest + index if text is None else int(text) if text.isdigit() else -1)
        if level in levels or not lowest <= level <= count:
            report.fault(place, "factor", f"level {quote(str(text))} makes no sense")
        levels[level] = tokens
    missing = [level for level in range(_LOWEST_LEVELS.get(group.model, count), count + 1)
               if level not in levels]
    if missing:
        report.fault(group.place, "define-CCF-group", f"has no factor of level {missing[0]}")
    group.factors = sorted(levels.items())


def _convert_expressions(model, expressions):
    """The expression of every basic event and parameter that has one."""
    converted = {}
    for each in model.definitions:
        if each.kind in ("basic-event", "parameter") and each.tokens:
            converted[each] = expressions.convert(each.tokens, each.scope, each.name)
    for group in model.groups:
        group.distribution = expressions.convert(group.distribution, group.scope, group.name, False)
        group.factors = [(level, expressions.convert(tokens, group.scope, group.name, False))
                         for level, tokens in group.factors]
    return converted


def _name_sequences(model, formulas, trees):
    """Pairs (name, literal) of the sequences."""
    named = []
    for (initiating, _, sequence), ways in trees.sequences.items():
        name = model.events.fresh(f"{initiating}.{sequence}")
        first = len(formulas.graph.operators)
        literal = formulas.graph.disjunction(
            [formulas.graph.conjunction(way) for way in ways])
        for node in range(first, len(formulas.graph.operators)):
            formulas.owners[node] = (name, frozenset())
        named.append((name, literal))
    return named


def _needed_parameters(model, roots, bodies):
    """The names of the parameters that the expressions of roots use, and those that nothing used;
    each parameter is checked not to use itself."""
    places = {each.name: each.place for each in model.definitions if each.kind == "parameter"}
    done = {}
    for root in roots:
        stack = [iter(_uses(root))]
        path = [None]
        while stack:
            name = next(stack[-1], None)
            if name is None:
                stack.pop()
                done[path.pop()] = True
            elif name not in done:
                done[name] = False
                path.append(name)
                stack.append(iter(_uses(bodies[name])))
            elif not done[name]:
                name = next(each for each in reversed(path) if each in places)
                model.report.stop(places[name], "define-parameter",
                                  f"{quote(name)} is defined by itself")
    return done


def _uses(expression):
    """The names of the parameters in an expression."""
    found = []
    waiting = [expression]
    while waiting:
        each = waiting.pop()
        if each.element == "parameter":
            found.append(each.value)
        waiting.extend(each.arguments)
    return found


def _write(model, selection, expressions, converted, output):
    bodies = {each.name: converted[each] for each in converted if each.kind == "parameter"}
    bodies.update(expressions.generated)
    # Every parameter is looked at for rings, also those that are not written.
    _needed_parameters(model, bodies.values(), bodies)
    for event in selection.events:
        if event not in converted and event.tokens:
            converted[event] = expressions.convert(event.tokens, Scope(), event.name)
    groups = [each for each in model.groups if each.members[0].is_kept]
    grouped = {member for group in groups for member in group.members}
    roots = [converted[each] for each in selection.events if each in converted]
    roots += [each for group in groups
              for each in (group.distribution, *(factor for _, factor in group.factors))]
    free = [each for each in model.definitions if each.kind == "parameter" and not each.is_used]
    roots += [converted[each] for each in free]
    needed = _needed_parameters(model, roots, bodies)
    needed.update((each.name, True) for each in free)
    if os.path.isfile(output) and any(
            os.path.isfile(path) and os.path.samefile(output, path) for path in model.report.files()):
        model.report.stop(output, None, "is a file of the model: it would be lost")
    try:
        with Writer(output) as writer:
            writer.write_gates(selection.gates)
            _write_data(model, selection, expressions, converted, needed, grouped, writer)
            for group in groups:
                writer.write_group(group)
    except OSError as error:
        model.report.stop(output, None, describe(error))


def _write_data(model, selection, expressions, converted, needed, grouped, writer):
    for each in selection.events:
        if each in converted:
            writer.write_symbol("basic-event", each.name, converted[each], each.label)
        elif each not in grouped:
            model.report.note(each.place, "define-basic-event",
                              f"{quote(each.name)} has no probability: orva takes 0")
    for each in model.definitions:
        if each.kind == "parameter" and each.name in needed:
            writer.write_symbol("parameter", each.name, converted[each], each.label, each.unit)
    for name, expression in expressions.generated:
        if name in needed:
            writer.write_symbol("parameter", name, expression)
