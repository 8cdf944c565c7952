"""Medians and ratios of the formula benchmark's raw lines.

Each raw line: library, formula, ns per evaluation, us per compile, and for
the engine also bytes per compiled formula and allocations per evaluation.
"""
import statistics
import sys
from collections import defaultdict

samples = defaultdict(list)
extras = {}
order = []
for line in open(sys.argv[1]):
    fields = line.rstrip("\n").split("\t")
    if len(fields) < 4:
        continue
    lib, formula = fields[0], fields[1]
    if formula not in order:
        order.append(formula)
    samples[(lib, formula)].append((float(fields[2]), float(fields[3])))
    if len(fields) >= 6:
        extras[formula] = (fields[4], fields[5])

def median(lib, formula, column):
    values = [s[column] for s in samples.get((lib, formula), [])]
    return statistics.median(values) if values else None

def fmt(value, digits=1):
    return "-" if value is None else f"{value:.{digits}f}"

def ratio(a, b):
    return "-" if a is None or b is None or b == 0 else f"{a / b:.2f}"

print()
print("median ns per evaluation (compile in us), ratios = engine / peer")
print(f"{'formula':<9} {'engine':>8} {'muparser':>9} {'muparserx':>10} {'floor':>7}"
      f" {'/mup':>6} {'/mupx':>6} {'/floor':>7} {'compile':>8} {'mup.cmp':>8}"
      f" {'bytes':>6} {'alloc/ev':>8}")
for formula in order:
    z = median("zorbase", formula, 0)
    m = median("muparser", formula, 0)
    x = median("muparserx", formula, 0)
    f = median("floor", formula, 0)
    bytes_, allocs = extras.get(formula, ("-", "-"))
    print(f"{formula:<9} {fmt(z):>8} {fmt(m):>9} {fmt(x):>10} {fmt(f):>7}"
          f" {ratio(z, m):>6} {ratio(z, x):>6} {ratio(z, f):>7}"
          f" {fmt(median('zorbase', formula, 1), 2):>8} {fmt(median('muparser', formula, 1), 2):>8}"
          f" {bytes_:>6} {allocs:>8}")
