"""Medians, best bursts and ratios of the formula benchmark's raw lines.

Raw lines: "load" lines with /proc/loadavg before and after the rounds;
per library and formula: library, formula, ns per evaluation, us per compile,
ns per evaluation in the best burst, and for the engine also bytes per
compiled formula and allocations per evaluation; "compile" lines of the
engine's compile-time table.
"""
import statistics
import sys
from collections import defaultdict

samples = defaultdict(list)
extras, loads, order, compile_rows = {}, [], [], []
for line in open(sys.argv[1]):
    fields = line.rstrip("\n").split("\t")
    if fields[0] == "load":
        loads.append(f"{fields[1]}: {fields[2]}")
        continue
    if fields[0] == "compile":
        compile_rows.append(fields[1:])
        continue
    if len(fields) < 5:
        continue
    lib, formula = fields[0], fields[1]
    if formula not in order:
        order.append(formula)
    samples[(lib, formula)].append(tuple(float(f) for f in fields[2:5]))
    if len(fields) >= 7:
        extras[formula] = (fields[5], fields[6])

MEAN, COMPILE, BEST = 0, 1, 2
PEERS = [("muparser", "mup"), ("exprtk", "exprtk"), ("floor", "floor"), ("floor-wine", "fl.wine")]


def value(lib, formula, column):
    values = [s[column] for s in samples.get((lib, formula), [])]
    if not values:
        return None
    return min(values) if column == BEST else statistics.median(values)


def fmt(v, digits=1):
    return "-" if v is None else f"{v:.{digits}f}"


def ratio(a, b):
    return "-" if a is None or b is None or b == 0 else f"{a / b:.2f}"


rounds = max((len(v) for v in samples.values()), default=0)
print(f"\n{rounds} interleaved rounds; load {'; '.join(loads)}")
for title, column in (("median ns per evaluation over the rounds", MEAN),
                      ("best burst, ns per evaluation", BEST)):
    print(f"\n{title}; ratios = engine / peer")
    print(f"{'formula':<9} {'engine':>7}" + "".join(f" {n:>8}" for _, n in PEERS) +
          f" {'muparserx':>9}" + "".join(f" {'/' + n:>8}" for _, n in PEERS))
    for formula in order:
        z = value("zorbase", formula, column)
        peers = [value(lib, formula, column) for lib, _ in PEERS]
        print(f"{formula:<9} {fmt(z):>7}" + "".join(f" {fmt(p):>8}" for p in peers) +
              f" {fmt(value('muparserx', formula, column)):>9}" +
              "".join(f" {ratio(z, p):>8}" for p in peers))

print("\ncompile us (median), bytes per compiled formula, allocations per evaluation")
print(f"{'formula':<9} {'engine':>7} {'muparser':>8} {'exprtk':>8} {'bytes':>6} {'alloc/ev':>8}")
for formula in order:
    bytes_, allocs = extras.get(formula, ("-", "-"))
    print(f"{formula:<9} {fmt(value('zorbase', formula, COMPILE), 2):>7}"
          f" {fmt(value('muparser', formula, COMPILE), 2):>8}"
          f" {fmt(value('exprtk', formula, COMPILE), 2):>8} {bytes_:>6} {allocs:>8}")

if compile_rows:
    print("\nengine compile time against formula length (characters: us per compile, ns per character)")
    for row in (r for r in compile_rows if r[0] == "length"):
        print(f"  {row[1]:>7}: {float(row[2]):10.1f} us {1000 * float(row[2]) / float(row[1]):8.1f} ns/char")
    print("against symbols defined (count: us per definition, us per compile of a 100-name sum)")
    for row in (r for r in compile_rows if r[0] == "symbols"):
        print(f"  {row[1]:>7}: {float(row[2]):10.3f} us {float(row[3]):8.1f} us")
