"""A run of orba_bench, read from the JSON files of its passes."""

import json
import math
import re
from dataclasses import dataclass, field

ACCURACIES = ("LA", "HA", "EP")
KERNEL = re.compile(r"(v[sdcz]\w+)/class:(\d)/acc:([A-Z_]+)/n:(\d+)$")
SPECIAL = re.compile(r"/special:(\d+)(?=/n:)")
PEER = re.compile(r"(v[sdcz]\w+)/peer:(\w+)/class:(\d)/n:(\d+)$")
CALL = re.compile(r"(v[sdcz]\w+)/call/acc:([A-Z]+)/n:(\d+)$")


@dataclass
class Measurement:
    """One kernel, peer or exported call. Of repeated measurements the fastest counts."""

    ticks: dict = field(default_factory=dict)  # n -> time-stamp-counter ticks per element
    special: dict = field(default_factory=dict)  # the same with special lanes: percent -> ticks
    max_ulp: float = math.nan

    def add(self, n, percent, entry):
        table, key = (self.ticks, n) if percent is None else (self.special, percent)
        table[key] = min(table.get(key, math.inf), entry["tsc_per_element"])
        self.max_ulp = entry.get("max_ulp", self.max_ulp)


class Run:
    def __init__(self, paths):
        self.kernels = {}  # (function, class) -> {accuracies that share a kernel: Measurement}
        self.peers = {}  # (function, class) -> {peer: Measurement}
        self.calls = {}  # function -> {accuracy: Measurement}
        for path in paths:
            with open(path, encoding="utf-8") as file:
                data = json.load(file)
            self.context = data["context"]
            for entry in data["benchmarks"]:
                if entry["run_type"] == "iteration":
                    self._add(entry)

    def _add(self, entry):
        name = entry["run_name"]
        if entry.get("error_occurred"):
            raise ValueError(f"{name}: {entry['error_message']}")
        special = SPECIAL.search(name)
        name = SPECIAL.sub("", name)
        if match := KERNEL.match(name):
            function, kernel_class, shared, n = match.groups()
            table, key = self.kernels.setdefault((function, int(kernel_class)), {}), shared
        elif match := PEER.match(name):
            function, key, kernel_class, n = match.groups()
            table = self.peers.setdefault((function, int(kernel_class)), {})
        elif match := CALL.match(name):
            function, key, n = match.groups()
            table = self.calls.setdefault(function, {})
        else:
            raise ValueError(f"unknown benchmark {name}")
        table.setdefault(key, Measurement()).add(int(n), int(special[1]) if special else None, entry)

    def nanoseconds(self, measurement, n):
        """Time of one call."""
        return measurement.ticks[n] * n / float(self.context["tsc_hz"]) * 1e9

    def functions(self):
        """Names in the order in which they were measured."""
        return list(dict.fromkeys(function for function, _ in self.kernels))

    def kernel(self, function, kernel_class, accuracy):
        """The kernel that serves an accuracy, or None."""
        for shared, measurement in self.kernels.get((function, kernel_class), {}).items():
            if accuracy in shared.split("_"):
                return measurement
        return None
