#!/usr/bin/env python3
"""Runs the example and compares its figures with a plain computation; feeds it broken files.

    check_volatility.py PROGRAM PRICES.csv
"""

import csv
import math
import re
import statistics
import subprocess
import sys
import tempfile

DAYS_PER_YEAR, WINDOW = 260, 60
program, prices = sys.argv[1:]


def run(path):
    return subprocess.run([program, path], capture_output=True, text=True, timeout=120)


def row_of(text, label):
    match = re.search(rf"^  {re.escape(label)} +((?:[-\d.]+ *)+)$", text, re.M)
    assert match, f"no row {label!r} in:\n{text}"
    return [float(value) for value in match[1].split()]


def volatility(returns):
    return 100 * statistics.stdev(returns) * DAYS_PER_YEAR**0.5


with open(prices, newline="") as file:
    header, *rows = csv.reader(file)
columns = [[float(row[i]) for row in rows] for i in range(1, len(header))]
returns = [[math.log(b / a) for a, b in zip(column, column[1:])] for column in columns]
rolling = [[volatility(r[i:i + WINDOW]) for i in range(len(r) - WINDOW + 1)] for r in returns]

result = run(prices)
assert result.returncode == 0 and not result.stderr, result.stderr
for label, expected in {
        "mean log return, % a year": [100 * DAYS_PER_YEAR * statistics.fmean(r) for r in returns],
        "volatility, % a year": [volatility(r) for r in returns],
        "lowest": [min(r) for r in rolling],
        "highest": [max(r) for r in rolling],
}.items():
    printed = row_of(result.stdout, label)
    assert len(printed) == len(expected), (label, printed)
    assert all(abs(p - e) < 0.00501 for p, e in zip(printed, expected)), (label, printed, expected)
last = [r[-1] for r in rolling]
printed = row_of(result.stdout, f"at {float(rows[-1][0]):.2f}")
assert all(abs(p - e) < 0.00501 for p, e in zip(printed, last)), (printed, last)
after = columns[0][4]  # the price that is divided by the zero one
assert re.search(rf"callback: vdDiv, element 3, code 2 \(singularity\): argument {after:g}, "
                 "result inf, replaced by 1", result.stdout)
assert re.search(r"callback: vdLn, element 2, code 2 \(singularity\): argument 0, result -inf, "
                 "replaced by 0", result.stdout)
assert re.search(r"^  as many threads as pay off +[\d.]+ ms, [\d.]+ times as fast$", result.stdout,
                 re.M)
assert "status after the call: 2" in result.stdout
assert "same bits as this run" in result.stdout

lines = [",".join(row) for row in [header, *rows]]
for number, bad, message in [
        (1, "time", "the header names no index"),
        (5, "1991.507692,1621.04", "5: a row needs 5 fields"),
        (7, lines[6].replace(lines[6].split(",")[2], "12x"), '7: "12x" is not a number'),
        (9, lines[8].replace(lines[8].split(",")[1], "0"), "9: the price of DAX is not positive"),
        (11, lines[9], "11: the time does not increase"),
]:
    with tempfile.NamedTemporaryFile("w", suffix=".csv") as file:
        file.write("\n".join(lines[:number - 1] + [bad] + lines[number:]) + "\n")
        file.flush()
        result = run(file.name)
        assert result.returncode == 1 and message in result.stderr, (message, result.stderr)
result = run("no/such/file.csv")
assert result.returncode == 1 and "no/such/file.csv" in result.stderr
