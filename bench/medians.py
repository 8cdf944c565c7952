"""Medians of a benchmark's raw lines over the rounds (trace, file).

Each raw line: program, measure, value, unit.
"""
import statistics
import sys
from collections import defaultdict

values = defaultdict(list)
units = {}
program = "?"
for line in open(sys.argv[1]):
    fields = line.rstrip("\n").split("\t")
    if len(fields) != 4:
        continue
    program = fields[0]
    values[fields[1]].append(float(fields[2]))
    units[fields[1]] = fields[3]

print()
print(f"{program}, median over the rounds")
for measure, samples in values.items():
    print(f"{measure:<32} {statistics.median(samples):>10.{2 if units[measure] == 'x' else 1}f} {units[measure]}")
