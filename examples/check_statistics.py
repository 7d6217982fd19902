#!/usr/bin/env python3
"""Runs the statistics example, compares its figures with a computation of its own and reads its
pictures back.

    check_statistics.py PROGRAM PRICES.csv
"""

import csv
import math
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

DAYS_PER_YEAR = 260
ORDERS = (0.01, 0.05, 0.25, 0.5, 0.75, 0.95, 0.99)
RANGE, BARS = 0.04, 60  # of a histogram
program, prices = sys.argv[1:]


def row_of(text, label):
    match = re.search(rf"^  {re.escape(label)} +((?:[-+\d.e]+ *)+)$", text, re.M)
    assert match, f"no row {label!r} in:\n{text}"
    return [float(value) for value in match[1].split()]


def central(returns, order):
    mean = statistics.fmean(returns)
    return statistics.fmean((r - mean)**order for r in returns)


def quantile(returns, order):
    place = order * (len(returns) - 1)
    around = sorted(returns)[math.floor(place):math.floor(place) + 2]
    return around[0] + (place % 1) * (around[-1] - around[0])


def median_deviation(returns):
    median = statistics.median(returns)
    return statistics.median(abs(r - median) for r in returns)


def mean_deviation(returns):
    mean = statistics.fmean(returns)
    return statistics.fmean(abs(r - mean) for r in returns)


with open(prices, newline="") as file:
    header, *rows = csv.reader(file)
names = header[1:]
columns = [[float(row[i]) for row in rows] for i in range(1, len(header))]
returns = [[math.log(b / a) for a, b in zip(column, column[1:])] for column in columns]
sd = [statistics.stdev(r) for r in returns]

directory = tempfile.TemporaryDirectory()
result = subprocess.run([program, prices, directory.name], capture_output=True, text=True,
                        timeout=120)
assert result.returncode == 0 and not result.stderr, result.stderr
expected = {
    "mean, % a year": [100 * DAYS_PER_YEAR * statistics.fmean(r) for r in returns],
    "volatility, % a year": [100 * math.sqrt(DAYS_PER_YEAR) * s for s in sd],
    "skewness": [central(r, 3) / s**3 for r, s in zip(returns, sd)],
    "excess kurtosis": [central(r, 4) / s**4 - 3 for r, s in zip(returns, sd)],
    "worst day, %": [100 * min(r) for r in returns],
    "best day, %": [100 * max(r) for r in returns],
    "median absolute deviation, %": [100 * median_deviation(r) for r in returns],
    "mean absolute deviation, %": [100 * mean_deviation(r) for r in returns],
}
for order in ORDERS:
    expected[f"quantile {order:.2f}, %"] = [100 * quantile(r, order) for r in returns]
correlation = [[statistics.correlation(a, b) for b in returns] for a in returns]
for i, name in enumerate(names):
    expected[name] = [1e4 * sd[i]**2 if i == j else r for j, r in enumerate(correlation[i])]
for label, figures in expected.items():
    printed = row_of(result.stdout, label)
    assert len(printed) == len(figures), (label, printed)
    assert all(abs(p - f) < 0.000051 for p, f in zip(printed, figures)), (label, printed, figures)

in_blocks = result.stdout.partition("The same in blocks")[2]
for label, limit in {"mean": 1e-13, "variance": 1e-13, "skewness": 1e-12, "excess kurtosis": 1e-12,
                     "correlation": 1e-13, "worst and best day": 0}.items():
    assert row_of(in_blocks, label)[0] <= limit, result.stdout


def picture(name):
    root = xml.etree.ElementTree.parse(pathlib.Path(directory.name) / f"{name}.svg").getroot()
    space = "{http://www.w3.org/2000/svg}"
    rectangles = [r for r in root.iter(space + "rect") if r.get("height") != "100%"]
    return rectangles, [t.text for t in root.iter(space + "text")], list(root.iter(space + "line"))


cells, texts, _ = picture("correlation")
flat = [r for row in correlation for r in row]
assert [float(c.get("fill-opacity")) for c in cells] == [round(abs(r), 3) for r in flat]
assert [t for t in texts if t[-1].isdigit()] == [f"{r:.3f}" for r in flat]
assert sorted(t for t in texts if t in names) == sorted(2 * names)

bars, texts, lines = picture("histograms")
assert len(bars) == len(names) * BARS and len(lines) == 2 * len(names)
assert [t for t in texts if t in names] == names
for i, r in enumerate(returns):
    count = [0] * BARS
    for value in r:
        count[min(max(int((value + RANGE) / (2 * RANGE) * BARS), 0), BARS - 1)] += 1
    drawn = [int(bar[0].text.split()[0]) for bar in bars[i * BARS:(i + 1) * BARS]]
    assert drawn == count, (names[i], drawn, count)
    heights = [float(bar.get("height")) for bar in bars[i * BARS:(i + 1) * BARS]]
    assert all(abs(h - 150 * c / max(count)) < 0.0051 for h, c in zip(heights, count)), heights
