#!/usr/bin/env python3
"""Runs the bootstrap example and compares its figures with a computation of its own, from the
generator's recurrence in exact integers on.

    check_bootstrap.py PROGRAM PRICES.csv
"""

import csv
import math
import re
import subprocess
import sys

SCENARIOS, HORIZON, SEED = 200000, 10, 20231105
program, prices = sys.argv[1:]


def mrg32k3a(seed):
    """L'Ecuyer's combined multiple recursive generator, as integers below m1."""
    m1, m2 = 2**32 - 209, 2**32 - 22853
    x, y = [seed % m1, 1, 1], [1, 1, 1]
    while True:
        x = [x[1], x[2], (1403580 * x[1] - 810728 * x[0]) % m1]
        y = [y[1], y[2], (527612 * y[2] - 1370589 * y[0]) % m2]
        yield (x[2] - y[2]) % m1


with open(prices, newline="") as file:
    _, *rows = csv.reader(file)
values = [[float(v) for v in row[1:]] for row in rows]
returns = [math.log(math.fsum(b / a for a, b in zip(today, tomorrow)) / len(today))
           for today, tomorrow in zip(values, values[1:])]
draws = mrg32k3a(SEED)
scale = len(returns) / (2**32 - 209)
losses = sorted(-math.expm1(sum(returns[int(next(draws) * scale)] for _ in range(HORIZON)))
                for _ in range(SCENARIOS))
expected = [100 * losses[int(0.95 * SCENARIOS)], 100 * losses[int(0.99 * SCENARIOS)],
            100 * losses[-1]]

result = subprocess.run([program, prices], capture_output=True, text=True, timeout=120)
assert result.returncode == 0 and not result.stderr, result.stderr
lines = re.findall(r"^  (\d+) +([\d.]+) % +([\d.]+) % +([\d.]+) % +[\d.]+   (.*)$", result.stdout,
                   re.M)
assert len(lines) == 3, result.stdout
for threads, *figures, same in lines:
    assert same == "same bits", result.stdout
    assert all(abs(float(f) - e) <= 0.0001 for f, e in zip(figures, expected)), (figures, expected)
