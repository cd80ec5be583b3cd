"""The model in the engine's dialect: names and labels stand as they are, without entities."""

import io
import os
import tempfile
from itertools import groupby

from .report import quote


class Writer:
    """Writes one file. Nothing is left behind, and no file is touched, unless all is written. What
    goes to a pipe or a device waits in memory until then."""

    def __init__(self, path):
        # What a link points to is replaced, not the link.
        self._path = os.path.realpath(path)
        self._device = path if os.path.exists(path) and not os.path.isfile(path) else None
        self._temporary = None
        self._file = None

    def __enter__(self):
        if self._device:
            self._file = io.StringIO()
        else:
            folder, name = os.path.split(self._path)
            handle, self._temporary = tempfile.mkstemp(prefix=f".{name[:50]}.", dir=folder)
            self._file = os.fdopen(handle, "w", encoding="utf-8")
        self._file.write('<?xml version="1.0"?>\n<open-psa>\n')
        return self

    def __exit__(self, kind, _value, _trace):
        if not self._device:
            self._close(kind)
        elif kind is None:
            with open(self._device, "w", encoding="utf-8") as device:
                device.write(self._file.getvalue() + "</open-psa>\n")

    def _close(self, kind):
        try:
            with self._file:
                if kind is None:
                    self._file.write("</open-psa>\n")
            if kind is None:
                mask = os.umask(0)
                os.umask(mask)
                os.chmod(self._temporary, 0o666 & ~mask)
                os.replace(self._temporary, self._path)
        finally:
            if os.path.exists(self._temporary):
                os.unlink(self._temporary)

    def write_gates(self, gates):
        """Gates, those of one fault tree together."""
        for tree, group in groupby(gates, key=lambda gate: gate.tree):
            indent = "  "
            if tree:
                self._file.write(f'  <define-fault-tree name="{tree}">\n')
                indent = "    "
            for gate in group:
                self._write_gate(gate, indent)
            if tree:
                self._file.write("  </define-fault-tree>\n")

    def _write_gate(self, gate, indent):
        lines = [f'{indent}<define-gate name="{gate.name}">']
        lines += _label(gate.label, indent)
        least = f' min="{gate.least}"' if gate.operator == "atleast" else ""
        lines.append(f"{indent}  <{gate.operator}{least}>")
        for is_negated, reference in gate.arguments:
            kind = getattr(reference, "kind", "gate")
            text = f'<{kind} name="{reference.name}"/>'
            lines.append(f"{indent}    <not>{text}</not>" if is_negated else f"{indent}    {text}")
        lines.append(f"{indent}  </{gate.operator}>\n{indent}</define-gate>\n")
        self._file.write("\n".join(lines))

    def write_symbol(self, kind, name, expression, label=None, unit=None):
        """A basic event or a parameter."""
        unit = f' unit="{unit}"' if unit else ""
        lines = [f'  <define-{kind} name="{name}"{unit}>', *_label(label, "  ")]
        lines.append(f"    {element(expression)}\n  </define-{kind}>\n")
        self._file.write("\n".join(lines))

    def write_group(self, group):
        """A common-cause failure group: factors are pairs (level, expression)."""
        lines = [f'  <define-CCF-group name="{group.name}" model="{group.model}">',
                 *_label(group.label, "  "), "    <members>"]
        lines += [f'      <basic-event name="{each.name}"/>' for each in group.members]
        lines.append("    </members>")
        lines.append(f"    <distribution>{element(group.distribution)}</distribution>")
        lines.append("    <factors>")
        lines += [f'      <factor level="{level}">{element(factor)}</factor>'
                  for level, factor in group.factors]
        lines.append("    </factors>\n  </define-CCF-group>\n")
        self._file.write("\n".join(lines))


def element(expression):
    """An expression as text; expressions are shallow."""
    name, value = expression.element, expression.value
    if name == "parameter":
        return f'<parameter name="{value}"/>'
    if value is not None:
        return f'<{name} value="{value}"/>'
    if not expression.arguments:
        return f"<{name}/>"
    return f"<{name}>{''.join(element(each) for each in expression.arguments)}</{name}>"


def _label(text, indent):
    # A "<" would end the text.
    return [f"{indent}  <label>{text.replace('<', '&lt;')}</label>"] if text else []


def describe(error):
    """Why a file can't be written."""
    return f"can't be written: {quote(error.strerror or str(error))}"
