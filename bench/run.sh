#!/usr/bin/env bash
# Runs the formula benchmark: the engine (a Windows program under Wine) and
# the peers and the hand-written floor (native programs), each in turn for
# several rounds so that drift of the machine touches all alike, then prints
# medians and ratios.
set -euo pipefail

BUILD_DIR="$1"
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
ROUNDS="${BENCH_ROUNDS:-5}"

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

RAW="$BUILD_DIR/bench-raw.tsv"
TRACE_RAW="$BUILD_DIR/bench-trace-raw.tsv"
FILE_RAW="$BUILD_DIR/bench-file-raw.tsv"
: > "$RAW"
: > "$TRACE_RAW"
: > "$FILE_RAW"
for ((r = 1; r <= ROUNDS; r++)); do
    echo "round $r of $ROUNDS" >&2
    wine "$BUILD_DIR/bin/bench_expr.exe" >> "$RAW"
    wine "$BUILD_DIR/bin/bench_trace.exe" >> "$TRACE_RAW"
    for lib in muparser muparserx floor; do
        "$PEER" "$lib" >> "$RAW"
    done
    # Its two files of about 100 and 200 MB are made in the build tree on
    # the first run and kept for the next.
    (cd "$BUILD_DIR" && wine bin/bench_file.exe) >> "$FILE_RAW"
done
python3 "$ROOT/bench/summarize.py" "$RAW"
python3 "$ROOT/bench/medians.py" "$TRACE_RAW"
python3 "$ROOT/bench/medians.py" "$FILE_RAW"
