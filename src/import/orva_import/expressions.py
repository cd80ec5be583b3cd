"""Expressions, as orva evaluates them.

An expression becomes a tree of tuples (element, attribute, value, arguments). What orva draws only
as a definition (a deviate), what is needed twice, and what nests too deep becomes a generated
parameter, so that the trees that remain are shallow.
"""

import math
import statistics

from .report import quote

DEVIATES = {"uniform-deviate", "normal-deviate", "lognormal-deviate", "beta-deviate",
            "gamma-deviate", "histogram"}
_DEEPEST = 100
# The engine's level and its score: 90 % of a normal law lie within so many deviations.
_LEVEL = 0.9
_SCORE = 1.6449


class Expression:
    """A node of an expression; depth is that of the tree below it."""

    __slots__ = ("element", "value", "arguments", "depth")

    def __init__(self, element, arguments=(), value=None):
        self.element = element
        self.value = value
        self.arguments = arguments
        self.depth = 1 + max((each.depth for each in arguments), default=0)

    def number(self):
        """The value of a literal number, or None."""
        return float(self.value) if self.element == "float" else None


def real(value):
    """A literal number."""
    return Expression("float", (), value if isinstance(value, str) else repr(float(value)))


def _call(element, *arguments):
    return Expression(element, arguments)


class Expressions:
    """Writes the expressions of a model; collects the parameters that it generates."""

    def __init__(self, model):
        self._model = model
        self._report = model.report
        self.generated = []
        self._owner = ""
        self._count = 0
        self._time_unit = None
        # Generated parameters by name.
        self._made = {}

    def convert(self, tokens, scope, owner, is_definition=True):
        """The expression of a postfix sequence, or None after a report. owner is the name from
        which those of generated parameters are made; only a definition may itself be a deviate."""
        self._owner = owner
        self._count = 0
        stack = []
        for token in tokens:
            if token[0] in ("float", "bool"):
                text = token[1] if token[0] == "float" else str(token[1]).lower()
                stack.append(Expression(token[0], (), text))
            elif token[0] == "parameter":
                stack.append(self._reference(token, scope))
            else:
                count = token[1]
                arguments = [self._argument(each, token) for each in stack[len(stack) - count:]]
                del stack[len(stack) - count:]
                stack.append(self._operation(token, arguments))
        result = stack[0] if len(stack) == 1 else None
        if result is not None and not is_definition and result.element in DEVIATES:
            result = self._share(result)
        if result is not None and result.element in ("case", "bin"):
            self._report.fault(tokens[-1][2], result.element, "is no expression of its own")
        return result

    def _reference(self, token, scope):
        _, name, place, unit = token
        found = self._model.parameters.find(name, scope)
        if found is None:
            self._report.fault(place, "parameter", f"{quote(name)} is not defined")
            return real(0)
        if unit and found.unit and unit != found.unit:
            self._report.fault(place, "parameter",
                               f"{quote(name)} is in {found.unit} and used in {unit}")
        found.is_used = True
        return Expression("parameter", (), found.name)

    def _argument(self, argument, token):
        """An argument as it may stand below the operation of a token."""
        if argument.element in ("case", "bin"):
            if {"case": "switch", "bin": "histogram"}[argument.element] != token[0]:
                self._report.fault(token[2], token[0], f"has a <{argument.element}> in it")
            return argument
        if argument.element in DEVIATES or argument.depth >= _DEEPEST:
            return self._share(argument)
        return argument

    def _share(self, expression):
        """The expression, or a reference to a generated parameter that stands for it."""
        if not expression.arguments:
            return expression
        self._count += 1
        name = self._model.parameters.fresh(f"{self._owner}.{self._count}")
        self.generated.append((name, expression))
        self._made[name] = expression
        return Expression("parameter", (), name)

    def _operation(self, token, arguments):
        rewrite = _REWRITES.get(token[0])
        if rewrite:
            return rewrite(self, token, arguments)
        return Expression(token[0], tuple(arguments))

    def _fold(self, token, arguments):
        return arguments[0] if len(arguments) == 1 else Expression(token[0], tuple(arguments))

    def _fold_left(self, token, arguments):
        result = arguments[0]
        for each in arguments[1:]:
            if result.depth >= _DEEPEST:
                result = self._share(result)
            result = _call(token[0], result, each)
        return result

    def _maximum(self, token, arguments):
        """The engine's "max" is never below a tiny positive number."""
        if len(arguments) == 1 or any((each.number() or 0) > 1e-300 for each in arguments):
            return self._fold(token, arguments)
        return _call("neg", Expression("min", tuple(_call("neg", each) for each in arguments)))

    def _mission_time(self, token, _arguments):
        unit = token[3]
        if unit and self._time_unit and unit != self._time_unit:
            self._report.fault(token[2], token[0], f"is in {unit} here, in {self._time_unit} before")
        self._time_unit = self._time_unit or unit
        return _call("mission-time")

    def _by_sign(self, argument, positive, negative):
        """The engine's rounding and square root have no value unless the argument is positive."""
        x = self._share(argument)
        return _call("ite", _call("gt", x, real(0)), positive(x),
                     _call("ite", _call("lt", x, real(0)), negative(x), real(0)))

    def _round(self, token, arguments):
        other = {"floor": "ceil", "ceil": "floor"}[token[0]]
        number = arguments[0].number()
        if number is not None:
            return real(getattr(math, token[0])(number))
        return self._by_sign(arguments[0], lambda x: _call(token[0], x),
                             lambda x: _call("neg", _call(other, _call("neg", x))))

    def _square_root(self, token, arguments):
        if (arguments[0].number() or 0) > 0:
            return _call("sqrt", arguments[0])
        x = self._share(arguments[0])
        return _call("ite", _call("df", x, real(0)), _call("sqrt", x), real(0))

    def _modulo(self, token, arguments):
        """The remainder of the truncated quotient, which has the sign of the first argument."""
        x, y = (self._share(each) for each in arguments)
        if x.number() is not None and y.number():
            return real(math.fmod(x.number(), y.number()))
        whole = self._by_sign(_call("div", x, y), lambda q: _call("floor", q),
                              lambda q: _call("neg", _call("floor", _call("neg", q))))
        return _call("sub", x, _call("mul", y, whole))

    def _switch(self, token, arguments):
        """Nested "ite": the engine reads the default of a "switch" in its own way."""
        *cases, default = arguments
        if default.element == "case" or any(each.element != "case" for each in cases):
            self._report.fault(token[2], "switch", "needs cases and then one default")
            return real(0)
        result = default
        for each in reversed(cases):
            if result.depth >= _DEEPEST:
                result = self._share(result)
            result = Expression("ite", (*each.arguments, result))
        return result

    def _weibull(self, token, arguments):
        if len(arguments) == 3:
            return Expression("Weibull", tuple(arguments))
        scale, shape, start, time = arguments
        return _call("Weibull", scale, shape, _call("sub", time, start))

    def _lognormal(self, token, arguments):
        if len(arguments) == 3:
            mean, factor, level = arguments
            return _call("lognormal-deviate", mean, self._at_level(token, factor, level),
                         real(_LEVEL))
        mu, sigma = (self._share(each) for each in arguments)
        mean = _call("exp", _call("add", mu, _call("mul", real(0.5), sigma, sigma)))
        factor = _call("exp", _call("mul", real(_SCORE), sigma))
        if mu.number() is not None and sigma.number() is not None:
            m, s = mu.number(), sigma.number()
            try:
                mean, factor = real(math.exp(m + s * s / 2)), real(math.exp(_SCORE * s))
            except OverflowError:
                self._report.fault(token[2], token[0], "is larger than any number")
        return _call("lognormal-deviate", mean, factor, real(_LEVEL))

    def _at_level(self, token, factor, level):
        """The error factor for the engine's level 0.9. The exchange format's level is that of the
        upper quantile, 0.95 for the same error factor; the engine knows a few levels only."""
        number = level.number()
        if number is None or not 0.5 < number < 1:
            self._report.fault(token[2], token[0], "needs a level that is a number above 0.5")
        elif number != 0.95:
            exponent = _SCORE / statistics.NormalDist().inv_cdf(number)
            if factor.number() is not None and factor.number() > 0:
                return real(factor.number() ** exponent)
            return _call("pow", factor, real(exponent))
        return factor

    def _histogram(self, token, arguments):
        if arguments[0].element == "bin" or any(each.element != "bin" for each in arguments[1:]):
            self._report.fault(token[2], token[0], "needs a lower bound and then bins")
        return Expression("histogram", tuple(arguments))

    def _bound_time(self, token, arguments):
        """A parameter is evaluated at the mission time, not at the bound one."""
        waiting = [arguments[2]]
        while waiting:
            each = waiting.pop()
            waiting.extend(each.arguments)
            if each.element == "parameter" and each.value in self._made:
                self._report.fault(token[2], token[0], "has an argument that needs a parameter")
        return Expression("bound-time", tuple(arguments))

    def _test(self, token, _arguments):
        self._report.fault(token[2], token[0], "makes sense only where event trees decide")
        return real(0)


_REWRITES = {
    **dict.fromkeys(("and", "or", "add", "mul", "min", "mean"), Expressions._fold),
    **dict.fromkeys(("sub", "div"), Expressions._fold_left),
    **dict.fromkeys(("mission-time", "system-mission-time"), Expressions._mission_time),
    **dict.fromkeys(("floor", "ceil"), Expressions._round),
    **dict.fromkeys(("test-initiating-event", "test-functional-event"), Expressions._test),
    "max": Expressions._maximum,
    "sqrt": Expressions._square_root,
    "mod": Expressions._modulo,
    "switch": Expressions._switch,
    "Weibull": Expressions._weibull,
    "lognormal-deviate": Expressions._lognormal,
    "histogram": Expressions._histogram,
    "bound-time": Expressions._bound_time,
}
