#!/usr/bin/env bash
# Runs the hostile-input loops, the "fuzz:" test cases of the test programs
# (see tests/support/fuzz.h): SECONDS in all, split evenly between the loops
# of every family or of FAMILY alone, each from a fresh base seed. With a SEED
# it runs only that iteration in each loop of FAMILY, which is how a failure
# printed by a loop is replayed.
#   tests/fuzz.sh BUILD_DIR [SECONDS] [FAMILY] [SEED]
set -euo pipefail

build="$1"
seconds="${2:-60}"
family="${3:-}"
seed="${4:-}"
cd "$build/bin"

if [ -n "$family" ]; then
    programs=("test_$family.exe")
else
    programs=(test_*.exe)
fi

declare -A loops
total=0
for program in "${programs[@]}"; do
    n="$(wine "$program" --list-test-cases -tc='fuzz:*' 2>/dev/null | tr -d '\r' |
         sed -n 's/.*passing the current filters: \([0-9]*\).*/\1/p')"
    loops[$program]="${n:-0}"
    total=$((total + ${n:-0}))
done
if [ "$total" -eq 0 ]; then
    echo "no fuzz loops in ${programs[*]}" >&2
    exit 2
fi
per=$((seconds / total))
[ "$per" -ge 1 ] || per=1

status=0
for program in "${programs[@]}"; do
    [ "${loops[$program]}" -gt 0 ] || continue
    echo "== $program: ${loops[$program]} loops"
    if [ -n "$seed" ]; then
        ZOR_FUZZ_SEED="$seed" wine "$program" -tc='fuzz:*' | tr -d '\r' | grep -v '^\[doctest\] \(doctest version\|run with\)' || status=1
    else
        ZOR_FUZZ_SECONDS="$per" wine "$program" -tc='fuzz:*' | tr -d '\r' | grep -v '^\[doctest\] \(doctest version\|run with\)' || status=1
    fi
done
exit "$status"
