"""Reads vector/functions.def: the functions, and the exported names and signatures they stand for."""

import pathlib
import re
from dataclasses import dataclass

ROOT = pathlib.Path(__file__).resolve().parent.parent
TABLE = ROOT / "vector" / "functions.def"

ELEMENT = {"s": "float", "d": "double", "c": "KamComplex8", "z": "KamComplex16"}
REAL = {"s": "float", "d": "double", "c": "float", "z": "double"}

# Parameters between n and mode: (what, name). T and R are an element and its matching real number;
# "in" and "out" are arrays, "scalar" is one value.
SHAPES = {
    "1i_1o": [("in T", "a"), ("out T", "y")],
    "2i_1o": [("in T", "a"), ("in T", "b"), ("out T", "y")],
    "1i_2o": [("in T", "a"), ("out T", "y"), ("out T", "z")],
    "1i_scalar_1o": [("in T", "a"), ("scalar T", "b"), ("out T", "y")],
    "complex_to_real": [("in T", "a"), ("out R", "y")],
    "real_to_complex": [("in R", "a"), ("out T", "y")],
    "linear_fraction": [("in T", "a"), ("in T", "b"), ("scalar T", "scalea"),
                        ("scalar T", "shifta"), ("scalar T", "scaleb"), ("scalar T", "shiftb"),
                        ("out T", "y")],
}


@dataclass
class Function:
    """One row of the table."""

    name: str
    lower: str
    shape: str
    types: str

    def exports(self):
        """(exported name, parameter list) of the four forms for each type."""
        for t in self.types:
            for lower in (False, True):
                for prefix, with_mode in (("v", False), ("vm", True)):
                    name = prefix + t + (self.lower if lower else self.name)
                    yield name, parameters(self.shape, t, lower, with_mode)


def parameters(shape, t, by_pointer, with_mode):
    """Parameter list of one export; `by_pointer` passes everything but arrays by pointer."""

    def value(ctype, name):
        return f"const {ctype}* {name}" if by_pointer else f"{ctype} {name}"

    result = [value("int32_t", "n")]
    for what, name in SHAPES[shape]:
        kind, letter = what.split()
        ctype = (ELEMENT if letter == "T" else REAL)[t]
        if kind == "scalar":
            result.append(value(ctype, name))
        else:
            result.append(f"{'const ' if kind == 'in' else ''}{ctype}* {name}")
    if with_mode:
        result.append(value("uint32_t", "mode"))
    return result


def read_groups(path=TABLE):
    """[(comment lines, [Function...])]: rows with no blank line between share the comment above."""
    groups, comment, rows = [], [], []

    def close():
        if rows:
            if not comment:
                raise ValueError(f"{path}: {rows[0].name} has no comment")
            groups.append((list(comment), list(rows)))
        comment.clear()
        rows.clear()

    for number, line in enumerate(path.read_text().splitlines(), 1):
        line = line.strip()
        row = re.fullmatch(r"ORBA_KAM_FUNCTION\((\w+), (\w+), (\w+), ([sdcz]+)\)", line)
        if not line:
            close()
        elif line.startswith("//"):
            if rows:
                close()
            comment.append(line[2:].removeprefix(" "))
        elif row and row[3] in SHAPES and row[2] == row[1].lower():
            rows.append(Function(*row.groups()))
        else:
            raise ValueError(f"{path}:{number}: not a row of the table: {line}")
    close()
    return groups


def exported_functions(path=TABLE):
    """Names of all vector exports."""
    return [name for _, rows in read_groups(path) for row in rows for name, _ in row.exports()]
