"""Reads vector/functions.def: the functions, and the exported names and signatures they stand for."""

import pathlib
import re
from dataclasses import dataclass

ROOT = pathlib.Path(__file__).resolve().parent.parent
TABLE = ROOT / "vector" / "functions.def"

ELEMENT = {"s": "float", "d": "double", "c": "KamComplex8", "z": "KamComplex16"}
REAL = {"s": "float", "d": "double", "c": "float", "z": "double"}

INDEX = dict.fromkeys("sdcz", "int32_t")
CTYPE = {"Element": ELEMENT, "Real": REAL, "Index": INDEX}


def read_shapes(path=ROOT / "vector" / "words" / "shapes.h"):
    """{shape: [(kind, type, name)]}: the parameters between n and mode."""
    text = path.read_text().replace("\\\n", " ")
    shapes = re.findall(r"^#define ORBA_SHAPE_(\w+)\(P, t\) (.*)$", text, re.M)
    return {shape: re.findall(r"P\(t, (in|out|scalar), (\w+), (\w+)\)", row) for shape, row in shapes}


SHAPES = read_shapes()
KERNELS = {"per_accuracy", "per_class", "single"}
CALLS = {"threaded", "warning", "lean"}


@dataclass
class Function:
    """One row of the table."""

    name: str
    lower: str
    shape: str
    types: str
    kernels: str
    call: str

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
    for kind, what, name in SHAPES[shape]:
        ctype = CTYPE[what][t]
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
        row = re.fullmatch(r"ORBA_KAM_FUNCTION\((\w+), (\w+), (\w+), ([sdcz]+), (\w+), (\w+)\)", line)
        if not line:
            close()
        elif line.startswith("//"):
            if rows:
                close()
            comment.append(line[2:].removeprefix(" "))
        elif (row and row[3] in SHAPES and row[2] == row[1].lower() and row[5] in KERNELS and
              row[6] in CALLS):
            rows.append(Function(*row.groups()))
        else:
            raise ValueError(f"{path}:{number}: not a row of the table: {line}")
    close()
    return groups


def exported_functions(path=TABLE):
    """Names of all vector exports."""
    return [name for _, rows in read_groups(path) for row in rows for name, _ in row.exports()]
