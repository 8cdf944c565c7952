#!/usr/bin/env bash
# ZORBaseUx64: cross-build for Windows x64 on Debian, run under Wine.
#   ./build.sh demo      build, then run the formula workbench (its example sheet
#                        without arguments; other zorcalc arguments pass through)
#   ./build.sh test      build everything and run every test under Wine
#   ./build.sh build     configure and build only
#   ./build.sh bench     build and run the benchmarks
#   ./build.sh fuzz [SECONDS] [FAMILY] [SEED]
#                        build, then run the hostile-input loops for SECONDS in
#                        all (60 by default), of every family or of one; with a
#                        SEED, replay that one iteration
#   ./build.sh install   install the DLL, import library and headers to $PREFIX
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"
BUILD_DIR="${BUILD_DIR:-$ROOT/build}"
PREFIX="${PREFIX:-$ROOT/dist}"
export WINEPREFIX="${WINEPREFIX:-$HOME/.cache/zorbase-wine}"
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=}"

PACKAGES=(cmake ninja-build g++-mingw-w64-x86-64-win32 binutils-mingw-w64-x86-64
          wine wine64 doctest-dev)

need_packages() {
    local missing=()
    for p in "$@"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing+=("$p")
    done
    if ((${#missing[@]})); then
        echo "installing: ${missing[*]}"
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
        echo "creating the Wine prefix in $WINEPREFIX"
        mkdir -p "$WINEPREFIX"
        wineboot -i >/dev/null 2>&1 || true
        wineserver -w || true
    fi
}

configure_and_build() {
    need_packages "${PACKAGES[@]}"
    if [ ! -f "$BUILD_DIR/build.ninja" ]; then
        cmake -S "$ROOT" -B "$BUILD_DIR" -G Ninja \
              -DCMAKE_TOOLCHAIN_FILE="$ROOT/cmake/mingw-ucrt-toolchain.cmake" \
              -DCMAKE_BUILD_TYPE=Release >/dev/null
    fi
    cmake --build "$BUILD_DIR" -- -j"$(nproc)"
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
        need_packages "${PACKAGES[@]}"
        # The build's progress would bury the demo; show it only on failure.
        if ! log="$(configure_and_build 2>&1)"; then
            echo "$log"
            exit 1
        fi
        wine_prefix
        wine "$BUILD_DIR/bin/zorcalc.exe" "$@" ;;
    bench)
        configure_and_build
        wine_prefix
        "$ROOT/bench/run.sh" "$BUILD_DIR" "$@" ;;
    fuzz)
        configure_and_build
        wine_prefix
        "$ROOT/tests/fuzz.sh" "$BUILD_DIR" "$@" ;;
    install)
        configure_and_build
        cmake --install "$BUILD_DIR" --prefix "$PREFIX" ;;
    *)
        echo "usage: $0 {demo|test|build|bench|fuzz|install}" >&2
        exit 2 ;;
esac
