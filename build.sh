#!/usr/bin/env bash
# ZORBaseUx64: cross-build for Windows x64 on Debian, run under Wine.
#   ./build.sh demo      build the DLL and zorcalc, then run the formula workbench
#                        (its example sheet without arguments; other zorcalc
#                        arguments pass through)
#   ./build.sh test      build everything and run every test under Wine
#   ./build.sh build     configure and build only
#   ./build.sh run PROGRAM ARGS...
#                        run a built program (zorcalc, zormsg, a test) under
#                        Wine with the project's prefix and without Wine's noise
#   ./build.sh bench     build and run the benchmarks
#   ./build.sh fuzz [SECONDS] [FAMILY] [SEED]
#                        build, then run the hostile-input loops for SECONDS in
#                        all (60 by default), of every family or of one; with a
#                        SEED, replay that one iteration
#   ./build.sh install   install the package (DLL, import library, headers, CMake
#                        and pkg-config files, tools) to $PREFIX
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
BUILD_DIR="${BUILD_DIR:-$ROOT/build}"
PREFIX="${PREFIX:-$ROOT/dist}"
BUILD_TYPE="${BUILD_TYPE:-Release}"
export WINEPREFIX="${WINEPREFIX:-$HOME/.cache/zorbase-wine}"
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=}"

PACKAGES=(cmake ninja-build g++-mingw-w64-x86-64-win32 binutils-mingw-w64-x86-64
          wine wine64 doctest-dev pkgconf)

need_packages() {
    local missing=()
    for p in "$@"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing+=("$p")
    done
    if ((${#missing[@]})); then
        echo "installing: ${missing[*]}" >&2
        local sudo=""
        [ "$(id -u)" -eq 0 ] || sudo="sudo"
        $sudo apt-get update -qq
        DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
    fi
}

# Wine builds its prefix on first start; do it once, before tests start in
# parallel and race to create it.
wine_prefix() {
    if [ ! -f "$WINEPREFIX/system.reg" ]; then
        echo "creating the Wine prefix in $WINEPREFIX" >&2
        mkdir -p "$WINEPREFIX"
        wineboot -i >/dev/null 2>&1 || true
        wineserver -w || true
    fi
}

configure() {
    need_packages "${PACKAGES[@]}"
    if [ ! -f "$BUILD_DIR/build.ninja" ]; then
        cmake -S "$ROOT" -B "$BUILD_DIR" -G Ninja \
              -DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/mingw-ucrt-toolchain.cmake" \
              -DCMAKE_BUILD_TYPE="$BUILD_TYPE" >/dev/null
    fi
}

configure_and_build() {
    configure
    cmake --build "$BUILD_DIR" -- -j"$(nproc)"
}

# Builds the given targets only. On a terminal Ninja keeps its progress on one
# line; elsewhere its output is kept back and shown only if the build fails.
build_quietly() {
    configure
    if [ -t 1 ]; then
        cmake --build "$BUILD_DIR" --target "$@" -- -j"$(nproc)"
        return
    fi
    local log
    if ! log="$(cmake --build "$BUILD_DIR" --target "$@" -- -j"$(nproc)" 2>&1)"; then
        echo "$log" >&2
        exit 1
    fi
}

# Builds a program of the build tree, named as zorcalc or zorcalc.exe.
build_program() {
    configure
    if ! grep -q "^build bin/$1\.exe:" "$BUILD_DIR/build.ninja"; then
        echo "$0 run: no program \"$1\" in this build (try zorcalc or zormsg)" >&2
        exit 2
    fi
    build_quietly "$1"
}

usage() {
    echo "usage: $0 {demo|test|build|run PROGRAM ARGS...|bench|fuzz [SECONDS] [FAMILY] [SEED]|install}" >&2
    exit 2
}

cmd="${1:-build}"
shift || true
case "$cmd" in
    build)
        configure_and_build ;;
    test)
        configure_and_build
        wine_prefix
        ctest --test-dir "$BUILD_DIR" --output-on-failure -j"$(nproc)" "$@" ;;
    demo)
        echo "building the library and zorcalc (a minute or two the first time)" >&2
        build_quietly ZORBaseUx64 zorcalc
        wine_prefix
        exec wine "$BUILD_DIR/bin/zorcalc.exe" "$@" ;;
    run)
        [ $# -ge 1 ] || usage
        program="${1%.exe}"
        shift
        build_program "$program"
        wine_prefix
        exec wine "$BUILD_DIR/bin/$program.exe" "$@" ;;
    bench)
        configure_and_build
        wine_prefix
        "$ROOT/bench/run.sh" "$BUILD_DIR" "$@" ;;
    fuzz)
        configure_and_build
        wine_prefix
        "$ROOT/tests/fuzz.sh" "$BUILD_DIR" "$@" ;;
    install)
        if ! mkdir -p "$PREFIX" 2>/dev/null || [ ! -w "$PREFIX" ]; then
            echo "$0 install: cannot write to $PREFIX (choose another with PREFIX=...)" >&2
            exit 1
        fi
        configure_and_build
        cmake --install "$BUILD_DIR" --prefix "$PREFIX" ;;
    *)
        usage ;;
esac
