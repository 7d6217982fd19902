#!/usr/bin/env python3
"""Checks the built objects and the shared library, with binutils.

    check_objects.py symbols|undefined|instructions|constructors LIST...
    check_objects.py exports LIBRARY

Each line of a LIST is "GROUP OBJECT"; a group is "base" (runs on any processor) or a kernel class,
"c0" to "c5". Prints each violation and fails when there is one.

symbols       Kernels define no weak symbol and the classes share no name: of a weak symbol the
              linker keeps one copy, which could carry instructions of a newer class into code that
              any processor runs.
undefined     Kernels refer to nothing but their own class, the few functions and tables of headers
              that are open to them and the C memory functions; above all no code of the standard
              library.
instructions  No instruction beyond those of the object's class.
constructors  Nothing runs at load but the platform layer's attach function.
exports       The library exports exactly the promised names, refers to none of them itself (a program
              that defines such a name would take its calls), and needs only the runtime libraries.
"""

import collections
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
sys.path.insert(0, str(ROOT / "tools"))
import function_table


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def read_lists(paths):
    """{group: [object...]}"""
    groups = collections.defaultdict(list)
    for path in paths:
        for line in pathlib.Path(path).read_text().splitlines():
            group, _, item = line.partition(" ")
            if item:
                groups[group].append(item)
    if not groups:
        sys.exit("no objects to check")
    return groups


def short(item):
    return item.partition("CMakeFiles/")[2] or item


# ---- symbols ----

WEAK = set("WVu")
UNDEFINED = set("Uwv")


def symbols(item):
    """[(mangled name, type letter)] of the global symbols of an object."""
    rows = (line.split() for line in run("nm", "-P", "--extern-only", item).splitlines())
    return [(row[0], row[1]) for row in rows if len(row) >= 2]


def demangle(names):
    names = list(names)
    text = subprocess.run(["c++filt"], input="\n".join(names), check=True, capture_output=True,
                          text=True).stdout
    return dict(zip(names, text.splitlines()))


def of_class(mangled, group):
    """True for a name in the namespace orba::cN, and for a kernel, which has a C name."""
    return f"N4orba2{group}" in mangled or mangled.startswith(f"orba_{group}_")


def check_symbols(groups):
    owner = {}
    for group, items in groups.items():
        if group == "base":
            continue
        for item in items:
            for name, kind in symbols(item):
                if kind in UNDEFINED:
                    continue
                if kind in WEAK:
                    yield f"{short(item)}: weak symbol {name}"
                if owner.setdefault(name, group) != group:
                    yield f"{short(item)}: {name} is defined in class {owner[name]} too"


MEMORY_FUNCTIONS = {"memcpy", "memmove", "memset", "memcmp"}
TOOL_CHAIN = {"__stack_chk_fail", "_GLOBAL_OFFSET_TABLE_"}


def kernel_hooks():
    """What the headers kernel_hooks.h declare, one on each floor that has something to offer, and the
    shared tables."""
    names = set()
    headers = [header for floor in ("services", "vector", "statistics", "dense")
               for header in (ROOT / floor).rglob("kernel_hooks.h")]
    for header in headers + [ROOT / "vector/tables/tables.h"]:
        text = header.read_text()
        namespace = re.search(r"^namespace (\S+) {", text, re.M)[1]
        declared = re.findall(r"^[\w:<>*&() ]+?[ *&](\w+)(?:\(|\[| __attribute__)", text, re.M)
        names |= {f"{namespace}::{name}" for name in declared}
    return names


def check_undefined(groups):
    hooks = kernel_hooks()
    for group, items in groups.items():
        if group == "base":
            continue
        for item in items:
            names = demangle(name for name, kind in symbols(item) if kind in UNDEFINED)
            for mangled, name in names.items():
                if not (of_class(mangled, group) or mangled in MEMORY_FUNCTIONS | TOOL_CHAIN or
                        name.partition("(")[0] in hooks):
                    yield f"{short(item)}: refers to {name}"


# ---- instructions ----

# Instructions beyond the x86-64 baseline by the feature that brings them. tzcnt is left out: older
# processors run it as bsf, which is what the compiler means by it. The encodings VEX and EVEX are
# told by their first byte, so lists are needed only for what hides behind them.
FEATURES = {
    "sse3": "addsubp[ds] haddp[ds] hsubp[ds] lddqu movddup movs[hl]dup fisttp\\w* monitor mwait",
    "ssse3": "pabs[bwd] palignr phadd(sw|[wd]) phsub(sw|[wd]) pmaddubsw pmulhrsw pshufb psign[bwd]",
    "sse4_1": "blendv?p[ds] dpp[ds] extractps insertps movntdqa mpsadbw packusdw pblendvb pblendw "
              "pcmpeqq pextr[bdq] phminposuw pinsr[bdq] pmax(sb|sd|ud|uw) pmin(sb|sd|ud|uw) "
              "pmov[sz]x\\w+ pmuldq pmulld ptest round[ps][ds]",
    "sse4_2": "crc32\\w? pcmp[ei]str[im] pcmpgtq",
    "popcnt": "popcnt\\w?",
    "lzcnt": "lzcnt\\w?",
    "bmi": "andn bextr bls(i|msk|r)",
    "bmi2": "bzhi mulx pdep pext rorx sarx shlx shrx",
    "pclmul": "v?pclmul\\w*",
    "aes": "v?aes\\w+",
    "sha": "sha(1|256)\\w+",
    "gfni": "v?gf2p8\\w+",
    "movbe": "movbe\\w?",
    "adx": "adcx\\w? adox\\w?",
    "random": "rdrand rdseed",
    "f16c": "vcvtph2ps vcvtps2ph",
    "fma": "vfn?m(add|sub|addsub|subadd)(132|213|231)[ps][ds]",
    "fma4": "vfn?m(add|sub|addsub|subadd)[ps][ds]",
    "mask": "k(mov|andn?|x?n?or|not|ortest|test|shift[lr]|unpck|add)[bwdq]+",
    "avx512cd": "vpconflict[dq] vplzcnt[dq] vpbroadcastm\\w+",
    "avx512er": "vexp2p[ds] vrcp28[ps][ds] vrsqrt28[ps][ds]",
    "avx512ifma": "vpmadd52[lh]uq",
    "avx512vbmi": "vperm[it]2b vpermb vpmultishiftqb",
    "avx512vbmi2": "vpcompress[bw] vpexpand[bw] vpsh[lr]dv?[wdq]",
    "avx512vnni": "vpdp\\w+",
    "avx512bitalg": "vpopcnt[bwdq] vpshufbitqmb",
    "avx512bf16": "vcvtne\\w+ vdpbf16ps",
    "avx512fp16": "v\\w+[ps]hx?",
}
FEATURE_OF = re.compile(
    "|".join(f"(?P<{feature}>(?:{'|'.join(names.split())})(?![\\w]))"
             for feature, names in FEATURES.items()))

SSE4_2 = {"sse3", "ssse3", "sse4_1", "sse4_2", "popcnt"}
AVX2 = SSE4_2 | {"vex", "fma", "bmi", "lzcnt", "pclmul"}
ALLOWED = {"base": set(), "c0": set(), "c1": set(), "c2": SSE4_2, "c3": AVX2,
           "c5": AVX2 | {"evex", "mask", "f16c"}}

IGNORED_PREFIXES = {"26", "2e", "36", "3e", "64", "65", "67"}
LINE = re.compile(r"^ *[0-9a-f]+:\t((?:[0-9a-f]{2} )+) *\t(?:(?:rep|repz|repnz|lock|data16|notrack|"
                  r"bnd|[c-g]s|rex\S*) +)*(\S+)")


def features_used(code, mnemonic):
    first = next((byte for byte in code.split() if byte not in IGNORED_PREFIXES), "")
    if first in ("c4", "c5"):
        yield "vex"
    elif first == "62":
        yield "evex"
    match = FEATURE_OF.fullmatch(mnemonic)
    if match:
        yield match.lastgroup


def check_instructions(groups):
    decoded = 0
    for group, items in groups.items():
        for item in items:
            worst = {}
            for line in run("objdump", "-d", "-w", item).splitlines():
                match = LINE.match(line)
                if not match:
                    continue
                decoded += 1
                for feature in features_used(*match.groups()):
                    if feature not in ALLOWED[group]:
                        worst.setdefault(feature, line.split("\t", 2)[2])
            for feature, example in worst.items():
                yield f"{short(item)}: {feature} instruction in {group}: {example}"
    print(f"{decoded} instructions")
    if decoded == 0:
        yield "the disassembly could not be read"


# ---- load time ----

SECTIONS_RUN_AT_LOAD = r"\.(?:preinit_array|init_array|fini_array|ctors|dtors)\b"


def check_constructors(groups):
    for items in groups.values():
        for item in items:
            if "/services/platform/" in item:
                continue
            sections = run("readelf", "-SW", item)
            for section in sorted(set(re.findall(SECTIONS_RUN_AT_LOAD, sections))):
                yield f"{short(item)}: has a section {section}"


RUNTIME = re.compile(
    r"(libc|libm|libgcc_s|libstdc\+\+|libgomp|libomp|ld-linux-x86-64)\.so(\.\d+)*")


def check_exports(library):
    promised = set(function_table.exported_functions())
    for header in ("orba_kam.h", "orba_rau.h", "orba_rau_ss.h"):
        text = (ROOT / "include" / header).read_text()
        promised |= set(re.findall(r"^\w[\w* ]*\b((?:kam|rau|v[dsi]?rng|v[dsi]Rng)\w+)\(", text, re.M))
    rows = (line.split() for line in run("nm", "-D", "-P", "--defined-only", library).splitlines())
    exported = {row[0].partition("@")[0] for row in rows if row[1] != "A"}  # A: the version itself
    for name in sorted(promised - exported):
        yield f"{name} is promised and not exported"
    for name in sorted(exported - promised):
        yield f"{name} is exported and not promised"
    relocations = (line.split() for line in run("readelf", "-rW", library).splitlines())
    referred = {row[4].partition("@")[0] for row in relocations if len(row) > 4}
    for name in sorted(referred & promised):
        yield f"{name} is referred to from inside"
    print(f"{len(exported)} exports")

    dynamic = run("readelf", "-dW", library)
    for needed in re.findall(r"\(NEEDED\).*\[(.*)\]", dynamic):
        if not RUNTIME.fullmatch(needed):
            yield f"needs {needed}"
    if "[liborba.so.1]" not in "".join(re.findall(r"\(SONAME\).*", dynamic)):
        yield "SONAME is not liborba.so.1"


CHECKS = {"symbols": check_symbols, "undefined": check_undefined,
          "instructions": check_instructions, "constructors": check_constructors}


def main():
    if len(sys.argv) < 3 or sys.argv[1] not in CHECKS | {"exports": None}:
        sys.exit(__doc__)
    if sys.argv[1] == "exports":
        found = list(check_exports(sys.argv[2]))
    else:
        found = list(CHECKS[sys.argv[1]](read_lists(sys.argv[2:])))
    for violation in found:
        print(violation)
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
