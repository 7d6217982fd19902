#!/usr/bin/env python3
"""Makes include/orba_kam_functions.h, the plain prototypes, from vector/functions.def.

    tools/make_header.py            writes the header
    tools/make_header.py --check    fails when the header is not what would be written
"""

import pathlib
import sys

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import function_table

HEADER = function_table.ROOT / "include" / "orba_kam_functions.h"
WIDTH = 100

INTRODUCTION = """\
/* The vector functions; part of orba_kam.h, which includes this file.
 * Made by tools/make_header.py from vector/functions.def: change it there.
 *
 * Each function comes in four forms per element type (s float, d double, c and z their complex):
 *   vdAdd   runs under the mode of the calling thread (accuracy, error handling, denormals);
 *   vmdAdd  runs under `mode` merged into the thread's mode, and merges the old word back: a field
 *           that was zero there keeps the value that `mode` gave it;
 *   vdadd, vmdadd  the same with everything but the arrays passed by pointer.
 * A negative n sets KAM_STATUS_BADSIZE, a null array KAM_STATUS_BADMEM (Pack and Unpack do not look);
 * both are reported on the standard output and leave all arrays as they are. With n = 0 nothing
 * happens. What a function makes of an element out of its domain is said with the function. */
"""


def comment(lines):
    assert not any("*/" in line for line in lines)
    text = "/* " + "\n * ".join(lines)
    closing_fits = len(text.rpartition("\n")[2]) + len(" */") <= WIDTH
    return text + (" */\n" if closing_fits else "\n */\n")


def prototype(name, parameters):
    text = f"void {name}("
    indent = len(text)
    column = indent
    for i, parameter in enumerate(parameters):
        piece = parameter + (", " if i + 1 < len(parameters) else ");")
        if column + len(piece.rstrip()) > WIDTH:
            text = text.rstrip() + "\n" + " " * indent
            column = indent
        text += piece
        column += len(piece)
    return text + "\n"


def header():
    text = INTRODUCTION
    for lines, rows in function_table.read_groups():
        text += "\n" + comment(lines)
        for row in rows:
            for name, parameters in row.exports():
                text += prototype(name, parameters)
    return text


def main():
    wanted = header()
    if sys.argv[1:] == ["--check"]:
        if HEADER.read_text() != wanted:
            sys.exit(f"{HEADER.relative_to(function_table.ROOT)} does not match "
                     "vector/functions.def: run tools/make_header.py")
    elif sys.argv[1:]:
        sys.exit(__doc__)
    else:
        HEADER.write_text(wanted)


if __name__ == "__main__":
    main()
