#!/usr/bin/env python3
"""Checks what the sources include: only what lies below their floor.

Prints each violation and fails when there is one.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent

# Each floor and those that it may include, besides itself and the public headers. A file belongs to
# the floor of the longest matching folder.
FLOORS = {
    "services": "",
    "vector": "",  # the function table: macros only
    "vector/words": "services",
    "vector/tables": "",
    "vector/kernels": "vector/tables vector/words services",
    "vector/frame": "vector vector/words services",
    "dense": "vector/kernels services",
    "statistics/frame": "services",
    "statistics/streams": "statistics/frame vector/kernels services",
    "statistics/distributions":
        "statistics/streams statistics/frame vector/frame vector/words vector/kernels services",
    "statistics/summary":
        "statistics/distributions statistics/streams statistics/frame dense vector/frame "
        "vector/words vector/kernels services",
}

# Of the system and the standard library: kernels include C headers that define no function, and
# only the platform layer those of the operating system.
KERNEL_HEADERS = {"stddef.h", "stdint.h", "immintrin.h"}
SYSTEM_HEADERS = re.compile(r"(sys|linux|asm|bits)/.*|(pthread|unistd|fcntl|dlfcn|sched|time|locale|"
                            r"langinfo|nl_types|signal|poll|elf|link|cxxabi)\.h|thread|mutex|chrono|"
                            r"filesystem|fstream")


def floor_of(path):
    return next((str(parent) for parent in pathlib.Path(path).parents if str(parent) in FLOORS), None)


def check(source):
    path = str(source.relative_to(ROOT))
    floor = floor_of(path)
    for kind, header in re.findall(r'^#include ([<"])([^">]+)', source.read_text(), re.M):
        if kind == '"':
            if not (header.startswith("include/") or
                    floor_of(header) in {floor, *FLOORS[floor].split()}):
                yield f"{path}: includes {header}"
        elif "kernels" in source.parent.relative_to(ROOT).parts:
            if header not in KERNEL_HEADERS:
                yield f"{path}: includes <{header}>"
        elif SYSTEM_HEADERS.fullmatch(header) and not path.startswith("services/platform/"):
            yield f"{path}: includes <{header}>"


def main():
    tops = sorted({floor.partition("/")[0] for floor in FLOORS})
    sources = [path for top in tops for path in (ROOT / top).rglob("*")
               if path.suffix in (".h", ".cpp", ".def")]
    found = [violation for source in sources for violation in check(source)]
    print(f"{len(sources)} sources", *found, sep="\n")
    sys.exit(1 if found or not sources else 0)


if __name__ == "__main__":
    main()
