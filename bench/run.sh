#!/usr/bin/env bash
# Runs the benchmarks: the engine and the floor built by the same compiler
# (Windows programs under Wine), muParser, muParserX, exprtk and the floor as
# native programs, and the trace benchmark, each in turn for several rounds
# so that drift of the machine touches all alike, then prints medians, best
# bursts, ratios, the machine's load and the engine's compile-time table.
set -euo pipefail

BUILD_DIR="$1"
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
ROUNDS="${BENCH_ROUNDS:-5}"
# Peers that are not packaged are found here (exprtk/exprtk.hpp), never copied.
PEERS_DIR="${PEERS_DIR:-$ROOT/../shared/peers}"

missing=()
for p in g++ libmuparser-dev libmuparserx-dev python3; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
    sudo=""; [ "$(id -u)" -eq 0 ] || sudo="sudo"
    $sudo apt-get update -qq
    DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi

PEER="$BUILD_DIR/peer_bench"
g++ -O2 -std=c++17 "$ROOT/bench/peers/peer_bench.cpp" -o "$PEER" -lmuparser -lmuparserx

# exprtk takes about a minute and a gigabyte to compile: once per build tree,
# again only when its header or the program changed.
EXPRTK="$BUILD_DIR/exprtk_bench"
EXPRTK_HEADER="$PEERS_DIR/exprtk/exprtk.hpp"
if [ -f "$EXPRTK_HEADER" ]; then
    if [ ! -x "$EXPRTK" ] || [ "$EXPRTK_HEADER" -nt "$EXPRTK" ] ||
       [ "$ROOT/bench/peers/exprtk_bench.cpp" -nt "$EXPRTK" ] || [ "$ROOT/bench/suite.h" -nt "$EXPRTK" ]; then
        echo "compiling exprtk (about a minute)" >&2
        g++ -O2 -std=c++17 -I"$PEERS_DIR/exprtk" "$ROOT/bench/peers/exprtk_bench.cpp" -o "$EXPRTK"
    fi
else
    echo "note: no $EXPRTK_HEADER (set PEERS_DIR): exprtk is left out" >&2
    EXPRTK=""
fi

RAW="$BUILD_DIR/bench-raw.tsv"
TRACE_RAW="$BUILD_DIR/bench-trace-raw.tsv"
FILE_RAW="$BUILD_DIR/bench-file-raw.tsv"
printf 'load\tbefore\t%s\n' "$(cat /proc/loadavg)" > "$RAW"
: > "$TRACE_RAW"
: > "$FILE_RAW"
for ((r = 1; r <= ROUNDS; r++)); do
    echo "round $r of $ROUNDS" >&2
    wine "$BUILD_DIR/bin/bench_expr.exe" >> "$RAW"
    wine "$BUILD_DIR/bin/bench_trace.exe" >> "$TRACE_RAW"
    for lib in muparser muparserx floor; do
        "$PEER" "$lib" >> "$RAW"
    done
    [ -z "$EXPRTK" ] || "$EXPRTK" >> "$RAW"
    # Its two files of about 100 and 200 MB are made in the build tree on
    # the first run and kept for the next.
    (cd "$BUILD_DIR" && wine bin/bench_file.exe) >> "$FILE_RAW"
done
printf 'load\tafter\t%s\n' "$(cat /proc/loadavg)" >> "$RAW"
wine "$BUILD_DIR/bin/bench_expr.exe" compile >> "$RAW"
python3 "$ROOT/bench/summarize.py" "$RAW"
python3 "$ROOT/bench/medians.py" "$TRACE_RAW"
python3 "$ROOT/bench/medians.py" "$FILE_RAW"
