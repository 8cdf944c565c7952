"""Medians of the trace benchmark's raw lines over the rounds.

Each raw line: program, measure, value, unit.
"""
import statistics
import sys
from collections import defaultdict

values = defaultdict(list)
units = {}
for line in open(sys.argv[1]):
    fields = line.rstrip("\n").split("\t")
    if len(fields) != 4:
        continue
    values[fields[1]].append(float(fields[2]))
    units[fields[1]] = fields[3]

print()
print("trace, median over the rounds")
for measure, samples in values.items():
    print(f"{measure:<24} {statistics.median(samples):>10.1f} {units[measure]}")
