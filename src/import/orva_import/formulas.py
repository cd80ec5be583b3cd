"""Formulas and expressions as postfix sequences.

A token is a tuple (name, value, place): for a reference the name referred to, for a constant its
value, for an operator the number of its arguments, which stand before it, and then its limits.
"""

import math
import re

from lxml import etree

from .document import local_name
from .report import is_writable, quote

REFERENCES = {"event", "gate", "basic-event", "house-event"}

# The fewest and the most arguments.
OPERATORS = {
    "and": (1, math.inf), "or": (1, math.inf), "nand": (1, math.inf), "nor": (1, math.inf),
    "xor": (1, math.inf), "not": (1, 1), "iff": (2, 2), "imply": (2, 2),
    "atleast": (1, math.inf), "atmost": (1, math.inf), "cardinality": (1, math.inf),
}

# The attributes that limit the number of true arguments, and the least value that makes sense.
LIMITS = {"atleast": (("min", 1),), "atmost": (("max", 0),),
          "cardinality": (("min", 0), ("max", 0))}

EXPRESSIONS = {
    **dict.fromkeys(("and", "or", "add", "mul", "min", "max", "mean"), (1, math.inf)),
    **dict.fromkeys(("sub", "div"), (2, math.inf)),
    **dict.fromkeys(("neg", "not", "abs", "acos", "asin", "atan", "cos", "cosh", "exp", "log",
                     "log10", "sin", "sinh", "tan", "tanh", "sqrt", "ceil", "floor"), (1, 1)),
    **dict.fromkeys(("eq", "df", "lt", "gt", "leq", "geq", "mod", "pow", "case", "bin", "Dirac",
                     "exponential", "uniform-deviate", "normal-deviate", "beta-deviate",
                     "gamma-deviate"), (2, 2)),
    **dict.fromkeys(("ite", "MTT", "dormant", "periodic"), (3, 3)),
    "pi": (0, 0), "switch": (1, math.inf), "GLM": (4, 4), "bound-time": (4, 4),
    "Weibull": (3, 4), "standby": (6, 6), "periodic-test": (4, 11), "lognormal-deviate": (2, 3),
    "histogram": (2, math.inf), "mission-time": (0, 0), "system-mission-time": (0, 0),
    "test-initiating-event": (0, 0), "test-functional-event": (0, 0),
}

_INTEGER = re.compile(r"[+-]?[0-9]+")
_REAL = re.compile(r"[+-]?([0-9]+\.?[0-9]*|\.[0-9]+)([eE][+-]?[0-9]+)?")
_BOOLEANS = {"true": True, "1": True, "false": False, "0": False}


def read_boolean(element, place, report):
    """The attribute "value" as a Boolean."""
    value = _BOOLEANS.get((element.get("value") or "").strip().lower())
    if value is None:
        report.fault(place, local_name(element), "has no value that is true or false")
    return bool(value)


def read_name(element, place, report):
    """The attribute "name", or, with a report, an empty one."""
    name = element.get("name") or ""
    if not name:
        report.fault(place, local_name(element), "has no name")
    elif not is_writable(name):
        report.fault(place, local_name(element),
                     f"{quote(name)} has a quote or a backslash in its name")
    return name


def _read_limit(element, place, report, rule, count):
    attribute, least = rule
    text = (element.get(attribute) or "").strip()
    if not _INTEGER.fullmatch(text) or len(text) > 9:
        report.fault(place, local_name(element), f"has no attribute {attribute} that is an integer")
    elif not least <= int(text) <= count:
        report.fault(place, local_name(element),
                     f"{attribute} {text} makes no sense with {count} arguments")
    else:
        return int(text)
    return 1


def formula_token(element, tag, place, report):
    """The token of one element of a formula, or None with a report."""
    if tag in REFERENCES:
        if len(element):
            report.fault(place, tag, "has arguments")
        return (tag, read_name(element, place, report), place)
    if tag in OPERATORS:
        count = len(element)
        fewest, most = OPERATORS[tag]
        if not fewest <= count <= most:
            report.fault(place, tag, f"has {count} arguments")
        limits = [_read_limit(element, place, report, rule, count) for rule in LIMITS.get(tag, ())]
        return (tag, count, place, *limits)
    if tag in ("constant", "bool"):
        return ("constant", read_boolean(element, place, report), place)
    report.fault(place, quote(tag), "is no formula that can be carried over")
    return None


def expression_token(element, tag, place, report):
    """The token of one element of an expression, or None with a report."""
    if tag == "parameter":
        return (tag, read_name(element, place, report), place, element.get("unit"))
    if tag == "bool":
        return (tag, read_boolean(element, place, report), place)
    if tag in ("int", "float"):
        text = (element.get("value") or "").strip()
        if not (_INTEGER if tag == "int" else _REAL).fullmatch(text) or (
                not math.isfinite(float(text))):
            report.fault(place, tag, f"has no value that is a finite number: {quote(text)}")
            text = "0"
        return ("float", text, place)
    if tag in EXPRESSIONS:
        count = len(element)
        fewest, most = EXPRESSIONS[tag]
        if not fewest <= count <= most or (tag == "periodic-test" and count not in (4, 5, 11)):
            report.fault(place, tag, f"has {count} arguments")
        if tag.startswith("test-"):
            return (tag, count, place, element.get("name"), element.get("state"))
        return (tag, count, place, element.get("unit"))
    report.fault(place, quote(tag), "is no expression that can be carried over")
    return None


def _is_annotation(element, tag, owner):
    """Whether the element belongs to a label or to attributes of the owner."""
    if tag in ("label", "attributes"):
        return element.getparent() is owner
    return tag == "attribute" and local_name(element.getparent()) == "attributes"


def read_postfix(owner, number, token, report):
    """The tokens of what stands below the owner, without its labels and attributes, and how many
    formulas or expressions they are. number(element) gives the place of each element, in the order
    in which they end."""
    tokens = []
    depth = 0
    for _, element in etree.iterwalk(owner, events=("end",)):
        place = number(element)
        if element is owner:
            break
        tag = local_name(element)
        if _is_annotation(element, tag, owner):
            continue
        text = element.text
        if text and not text.isspace():
            report.fault(place, quote(tag), "has text in it")
        made = token(element, tag, place, report)
        if made:
            tokens.append(made)
            depth += 1 - len(element)
    return tokens, depth


def read_label(owner):
    """The text of the owner's label in one line, or None."""
    label = owner.find("{*}label")
    text = " ".join("".join(label.itertext()).split()) if label is not None else ""
    return text or None
