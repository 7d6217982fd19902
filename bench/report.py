#!/usr/bin/env python3
"""Turns a run of orba_bench into docs/performance.md and its charts.

    bench/report.py DOCS_DIRECTORY PASS.json...
"""

import pathlib
import sys
from dataclasses import dataclass

from benchmark_run import ACCURACIES, Run

MAIN_LENGTH = 1000
LENGTHS = (8, 100, 1000, 100000)
CALL_LENGTHS = (1, 4, 8, 100, 1000, 100000)
SPECIAL_PERCENTS = (1, 10)
CHART_CLASSES = (3, 5)
TYPES = {"s": "Single precision", "d": "Double precision",
         "c": "Complex, single precision", "z": "Complex, double precision"}
CLASSES = {0: "x86-64 baseline, 128 bits", 1: "x86-64 baseline, 128 bits",
           2: "SSE4.2, 128 bits", 3: "AVX2 with FMA, 256 bits", 5: "AVX-512, 512 bits"}


def below(bound):
    return lambda name, peer: peer.max_ulp < bound


def compiled_loop(name, peer):
    return name.startswith("loop_")


@dataclass
class Goal:
    """`factor`: how many times as fast as the fastest of the admitted peers a kernel must be."""

    functions: str
    accuracies: tuple
    against: str
    admits: object
    factor: float
    strictly: bool = False

    def met(self, ratio):
        ratio = round(ratio, 2)
        return ratio > self.factor if self.strictly else ratio >= self.factor


ELEMENTARY = ("Exp Expm1 Ln Log10 Log1p Sin Cos SinCos Tan "
              "Asin Acos Atan Atan2 Sinh Cosh Tanh Asinh Acosh Atanh Pow Powx Cbrt")
GOALS = (
    Goal("Add Sub Mul Sqr Abs", ACCURACIES, "compiled loop", compiled_loop, round(1 / 1.1, 2)),
    Goal("InvSqrt", ("LA",), "compiled loop", compiled_loop, 2.0),
    Goal("Inv Div", ("LA",), "compiled loop", compiled_loop, 1.0),
    Goal("Inv Div", ("EP",), "compiled loop", compiled_loop, 1.0, strictly=True),
    Goal(ELEMENTARY, ("LA",), "peer below 1 ULP", below(1), 1.5),
    Goal(ELEMENTARY, ("HA",), "peer below 1 ULP", below(1), 1.15),
    Goal(ELEMENTARY, ("EP",), "peer below 4 ULP", below(4), 1.5),
    Goal("Hypot", ("LA",), "peer below 1 ULP", below(1), 1.5),
    Goal("Hypot", ("HA",), "peer below 1 ULP", below(1), 1.15),
    Goal("Hypot", ("EP",), "peer below 4 ULP", below(4), 1.15),
)
CALL_GOAL = ("vdAdd", 8, 15.0)  # function, n, nanoseconds


def fastest(run, function, kernel_class, admits):
    """Name and measurement of the fastest admitted peer at the main length, or None."""
    admitted = [(name, peer) for name, peer in run.peers.get((function, kernel_class), {}).items()
                if MAIN_LENGTH in peer.ticks and admits(name, peer)]
    return min(admitted, key=lambda item: item[1].ticks[MAIN_LENGTH], default=None)


def fastest_comparable(run, function, kernel_class, accuracies):
    """The fastest peer as accurate as the mode promises: below 1 ULP, or below 4 for EP, for complex
    functions (whose peers are plain formulas) and where no peer is better."""
    strict = function[1] in "sd" and accuracies != "EP"
    return ((strict and fastest(run, function, kernel_class, below(1))) or
            fastest(run, function, kernel_class, below(4)))


def speed(kernel, peer):
    return peer.ticks[MAIN_LENGTH] / kernel.ticks[MAIN_LENGTH]


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    lines += ["| " + " | ".join(row) + " |" for row in rows]
    return lines + [""]


def number(value):
    return "" if value is None else f"{value:.2f}"


def goal_rows(run):
    for goal in GOALS:
        for function in run.functions():
            if function[2:] not in goal.functions.split() or function[1] not in "sd":
                continue
            for kernel_class in CHART_CLASSES:
                best = fastest(run, function, kernel_class, goal.admits)
                for shared, kernel in run.kernels.get((function, kernel_class), {}).items():
                    accuracies = [name for name in shared.split("_") if name in goal.accuracies]
                    if not accuracies or best is None:
                        continue
                    ratio = speed(kernel, best[1])
                    sign = "above" if goal.strictly else "at least"
                    yield [function, str(kernel_class), " ".join(accuracies),
                           f"{goal.against} ({best[0]})", f"{sign} {goal.factor:.2f}",
                           number(ratio), "yes" if goal.met(ratio) else "**no**"]


def call_goal(run):
    function, n, limit = CALL_GOAL
    calls = run.calls.get(function, {})
    worst = max((run.nanoseconds(call, n) for call in calls.values() if n in call.ticks),
                default=None)
    if worst is None:
        return []
    verdict = "met" if worst <= limit else "**missed**"
    return [f"An exported call `{function}` of n = {n} takes {worst:.1f} ns in all (slowest of the "
            f"accuracies); the goal of at most {limit:g} ns is {verdict}.", ""]


def kernel_rows(run, functions):
    for function in functions:
        for (name, kernel_class), kernels in run.kernels.items():
            if name != function:
                continue
            peers = run.peers.get((function, kernel_class), {})
            for shared, kernel in kernels.items():
                best = fastest_comparable(run, function, kernel_class, shared)
                versus = ", ".join(f"{peer} {speed(kernel, measured):.2f}"
                                   for peer, measured in peers.items()
                                   if MAIN_LENGTH in measured.ticks and MAIN_LENGTH in kernel.ticks)
                yield [function, str(kernel_class), shared.replace("_", " "),
                       f"{kernel.max_ulp:.3g}", *(number(kernel.ticks.get(n)) for n in LENGTHS),
                       best[0] if best else "none",
                       f"**{speed(kernel, best[1]):.2f}**" if best else "", versus]


def peer_names(run, functions):
    return sorted({peer for (function, _), peers in run.peers.items() if function in functions
                   for peer in peers})


def peer_rows(run, functions):
    names = peer_names(run, functions)
    for function in functions:
        for (name, kernel_class), peers in run.peers.items():
            if name == function:
                yield [function, str(kernel_class)] + [
                    f"{peers[peer].ticks[MAIN_LENGTH]:.2f} ({peers[peer].max_ulp:.2g})"
                    if peer in peers and MAIN_LENGTH in peers[peer].ticks else "" for peer in names]


def call_rows(run, functions):
    for function in functions:
        for accuracy, call in run.calls.get(function, {}).items():
            yield [function, accuracy, *(f"{run.nanoseconds(call, n):.1f}" if n in call.ticks else ""
                                         for n in CALL_LENGTHS)]


def special_rows(run, functions):
    """Ticks per element with special lanes, beside the fastest comparable peer on the same data."""
    for function in functions:
        for kernel_class in CHART_CLASSES:
            for shared, kernel in run.kernels.get((function, kernel_class), {}).items():
                if not kernel.special:
                    continue
                best = fastest_comparable(run, function, kernel_class, shared)
                peer = best[1].special if best else {}
                yield [function, str(kernel_class), shared.replace("_", " "),
                       number(kernel.ticks.get(MAIN_LENGTH)),
                       *(number(kernel.special.get(percent)) for percent in SPECIAL_PERCENTS),
                       best[0] if best else "none",
                       *(number(peer.get(percent)) for percent in SPECIAL_PERCENTS)]


class Chart:
    """Horizontal bars: how many times as fast as the fastest comparable peer, per function,
    accuracy and class."""

    COLOURS = {"LA": "#2b6cb0", "HA": "#dd8a2f", "EP": "#3f9c6c"}
    BAR, GAP, LABEL, PANEL, TOP = 9, 10, 110, 330, 64

    def __init__(self, run, letter, functions):
        self.panels = {}
        for kernel_class in CHART_CLASSES:
            rows = []
            for function in functions:
                ratios = {}
                for accuracy in ACCURACIES:
                    kernel = run.kernel(function, kernel_class, accuracy)
                    best = fastest_comparable(run, function, kernel_class, accuracy)
                    if kernel and best and MAIN_LENGTH in kernel.ticks:
                        ratios[accuracy] = speed(kernel, best[1])
                rows.append((function, ratios))
            if any(ratios for _, ratios in rows):
                self.panels[kernel_class] = rows
        self.title = f"{TYPES[letter]}: times as fast as the fastest peer, n = {MAIN_LENGTH}"

    def svg(self):
        rows = max(len(panel) for panel in self.panels.values())
        step = len(ACCURACIES) * self.BAR + self.GAP
        width = self.LABEL + len(self.panels) * (self.PANEL + 50)
        height = self.TOP + rows * step + 30
        out = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
               'font-family="sans-serif" font-size="11">',
               f'<rect width="{width}" height="{height}" fill="white"/>',
               f'<text x="10" y="20" font-size="14">{self.title}</text>']
        for i, (accuracy, colour) in enumerate(self.COLOURS.items()):
            out.append(f'<rect x="{10 + 50 * i}" y="32" width="10" height="10" fill="{colour}"/>'
                       f'<text x="{24 + 50 * i}" y="41">{accuracy}</text>')
        for i, (kernel_class, panel) in enumerate(self.panels.items()):
            out += self._panel(self.LABEL + i * (self.PANEL + 50), kernel_class, panel, step, i == 0)
        return "\n".join(out + ["</svg>", ""])

    def _panel(self, left, kernel_class, rows, step, with_names):
        largest = max([ratio for _, ratios in rows for ratio in ratios.values()] + [1.0])
        unit = (self.PANEL - 40) / largest
        bottom = self.TOP + len(rows) * step
        out = [f'<text x="{left}" y="{self.TOP - 8}" font-weight="bold">class {kernel_class} '
               f'({CLASSES[kernel_class]})</text>']
        for row, (function, ratios) in enumerate(rows):
            top = self.TOP + row * step
            if with_names:
                out.append(f'<text x="{left - 8}" y="{top + 1.5 * self.BAR + 4:.1f}" '
                           f'text-anchor="end">{function}</text>')
            for i, accuracy in enumerate(ACCURACIES):
                if accuracy not in ratios:
                    continue
                length = ratios[accuracy] * unit
                y = top + i * self.BAR
                out.append(f'<rect x="{left}" y="{y}" width="{length:.1f}" height="{self.BAR - 1}" '
                           f'fill="{self.COLOURS[accuracy]}"/>'
                           f'<text x="{left + length + 3:.1f}" y="{y + self.BAR - 1}" '
                           f'font-size="9">{ratios[accuracy]:.2f}</text>')
        out.append(f'<line x1="{left + unit:.1f}" x2="{left + unit:.1f}" y1="{self.TOP - 4}" '
                   f'y2="{bottom}" stroke="#555" stroke-dasharray="3,3"/>')
        out.append(f'<text x="{left + unit:.1f}" y="{bottom + 14}" text-anchor="middle">'
                   "fastest peer</text>")
        return out


INTRODUCTION = """\
# Performance

Generated by `scripts/update_performance`; do not edit. The benchmark program `orba_bench` measures
every kernel, per processor class and accuracy, in one run with its peers:

- `loop_gcc`, `loop_clang`: what the compiler makes of the plain loop (`y[i] = a[i] / b[i]`, or the
  C library's function) at `-O3` with the instruction set of the class; `loop_gcc_256` prefers
  vectors of 256 bits where 512 exist.
- `libmvec`: the vector functions of glibc; `sleef_u10` and the like: SLEEF with the error bound in
  tenths of an ULP; `xsimd`: its batch functions. All are called over the array at the vector width
  of the class.

Times are ticks of the time-stamp counter per element (a fixed frequency, not that of the core);
of repeated batches of calls the fastest counts. Speeds are ratios within this run: 1.50 means that the
kernel is 1.5 times as fast as the peer at n = 1000. The fastest peer is taken among those of
comparable accuracy: LA and HA against peers whose measured error is below 1 ULP; EP, complex
functions and functions without such a peer against those below 4 ULP. Errors are the largest over
the sample of the benchmark, whose arguments lie where timing is done (`bench/cases.def`), not over
the whole domain; those of complex results are measured on the modulus.

Functions whose kernels hand some lanes to a scalar routine are measured also with 1 % and 10 % of such
lanes at random places (for logarithms and roots denormal arguments, for Exp arguments of denormal
results, infinities for the others), on the same data as the fastest comparable peer.
"""


def main(docs, *passes):
    run = Run(passes)
    docs = pathlib.Path(docs)
    charts = docs / "performance"
    charts.mkdir(parents=True, exist_ok=True)
    context = run.context
    lines = [INTRODUCTION]
    lines += table(["this run", ""], [
        ["processor", f"{context.get('cpu', 'unknown')}, {context['num_cpus']} cores"],
        ["time-stamp counter", f"{float(context['tsc_hz']) / 1e9:.3f} GHz"],
        ["kernel class of calls", context["kernel_class"]],
        ["compilers", context["compiler"]],
        ["peers", context["libraries"]],
        ["sample of the errors", f"{context['error_sample']} arguments"]])
    lines += table(["class", "instructions and vectors"],
                   [[str(number_), text] for number_, text in CLASSES.items()])

    lines += ["## Goals", ""] + call_goal(run)
    lines += table(["function", "class", "accuracy", "against the fastest", "goal", "measured",
                    "met"], list(goal_rows(run)))

    for letter, title in TYPES.items():
        functions = [name for name in run.functions() if name[1] == letter]
        if not functions:
            continue
        lines += [f"## {title}", ""]
        chart = Chart(run, letter, functions)
        if chart.panels:
            (charts / f"speed_{letter}.svg").write_text(chart.svg(), encoding="utf-8")
            lines += [f"![{chart.title}](performance/speed_{letter}.svg)", ""]
        lines += ["### Kernels", ""]
        lines += table(["function", "class", "accuracy", "max ULP",
                        *(f"n = {n}" for n in LENGTHS), "fastest comparable peer",
                        "times as fast", "times as fast as each peer"],
                       list(kernel_rows(run, functions)))
        lines += [f"### Peers at n = {MAIN_LENGTH}, with their largest error in ULP", ""]
        lines += table(["function", "class", *peer_names(run, functions)],
                       list(peer_rows(run, functions)))
        lines += ["### Exported calls, nanoseconds per call", ""]
        lines += table(["function", "accuracy", *(f"n = {n}" for n in CALL_LENGTHS)],
                       list(call_rows(run, functions)))
        if special := list(special_rows(run, functions)):
            lines += [f"### Special lanes, ticks per element at n = {MAIN_LENGTH}", ""]
            lines += table(["function", "class", "accuracy", "none",
                            *(f"{percent} %" for percent in SPECIAL_PERCENTS),
                            "fastest comparable peer",
                            *(f"peer, {percent} %" for percent in SPECIAL_PERCENTS)], special)
    (docs / "performance.md").write_text("\n".join(lines).rstrip() + "\n", encoding="utf-8")


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
